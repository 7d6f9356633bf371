#pragma once

#include "tools/LookOptions.h"

namespace tool {

/// Prints the boxes of a file, one a line, with their fields below, or as JSON. The exit status: 0,
/// or 2 when the file could not be read as a whole or the output could not be written.
int RunTree(const TreeOptions& options);

}  // namespace tool
