#pragma once

#include <string>
#include <vector>

#include "tools/Words.h"

namespace tool {

/// An option as --help has it.
struct OptionWords {
  std::vector<std::string> names;    ///< "-r", "--recursive"; the last one is the long one
  std::string value;                 ///< what its value is called; empty when it takes none
  std::string text;                  ///< one or more sentences
  std::vector<std::string> choices;  ///< what the value may be, when that is a list
};

/// A command with the options that the parser knows of it.
struct CommandWords {
  words::Command command;
  std::vector<OptionWords> options;
};

/// All names of an option.
std::string NamesOf(const OptionWords& option, const char* between);
/// All choices of an option, with spaces between.
std::string ChoicesOf(const OptionWords& option);
/// The text with `with` for each `what`.
std::string Replaced(const std::string& text, char what, const std::string& with);

}  // namespace tool
