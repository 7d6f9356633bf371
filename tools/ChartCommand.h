#pragma once

#include "tools/LookOptions.h"

namespace tool {

/// Draws where things lie in a file, as one file that needs nothing else. The exit status: 0, or 2
/// when the file could not be read or the chart could not be written.
int RunChart(const ChartOptions& options);

}  // namespace tool
