#pragma once

#include "tools/OptionWords.h"

namespace tool {

/// The manual page of judging and of every command, for man.
std::string ManPage(const std::vector<CommandWords>& all);

}  // namespace tool
