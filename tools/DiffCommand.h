#pragma once

#include "tools/LookOptions.h"

namespace tool {

/// Prints what differs between two files in structure, fields and protection. The exit status: 0
/// when nothing does, 1 when something does, 2 when a file could not be read.
int RunDiff(const DiffOptions& options);

}  // namespace tool
