#pragma once

#include <string>
#include <vector>

#include "tools/JudgeOptions.h"
#include "tools/SamplesCommand.h"

namespace tool {

/// Takes the arguments of a judgement, behind the program's name, apart. True when there is
/// something to judge; otherwise `status` is the exit status: help was asked for, or an option was
/// wrong, and what there is to say has been said.
bool ParseJudgeArguments(const std::vector<std::string>& arguments, JudgeOptions* options,
                         int* status);

/// The same for "mp4judge samples".
bool ParseSamplesArguments(const std::vector<std::string>& arguments, SamplesOptions* options,
                           int* status);

}  // namespace tool
