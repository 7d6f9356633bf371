#pragma once

#include <string>
#include <vector>

namespace tool {

/// An option as --help has it.
struct OptionWords {
  std::vector<std::string> names;    ///< "-r", "--recursive"; the last one is the long one
  std::string value;                 ///< what its value is called; empty when it takes none
  std::string text;                  ///< one or more sentences
  std::vector<std::string> choices;  ///< what the value may be, when that is a list
};

/// What --help prints ("help", "samples help"), the man page ("man"), or the completion script of a
/// shell ("bash", "zsh", "fish").
std::string PrintFor(const std::string& what, const std::vector<OptionWords>& options);

}  // namespace tool
