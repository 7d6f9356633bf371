#pragma once

#include "tools/OptionWords.h"

namespace tool {

/// What --help prints of a command; of judging, with a list of the commands.
std::string HelpText(const CommandWords& command, const std::vector<CommandWords>& all);

/// The commands with what each is for, on lines of their own.
std::string ListOfCommands(const std::vector<CommandWords>& all);

}  // namespace tool
