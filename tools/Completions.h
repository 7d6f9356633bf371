#pragma once

#include "tools/OptionWords.h"

namespace tool {

/// What completes commands, options, their values and file names in a shell.
std::string BashCompletions(const std::vector<CommandWords>& all);
std::string ZshCompletions(const std::vector<CommandWords>& all);
std::string FishCompletions(const std::vector<CommandWords>& all);

}  // namespace tool
