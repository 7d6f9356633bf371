#pragma once

#include "tools/JudgeOptions.h"

namespace tool {

/// Judges what the options name, tells each verdict in the order of the names, and returns the exit
/// status.
int RunJudge(const JudgeOptions& options);

}  // namespace tool
