#pragma once

#include "tools/LookOptions.h"

namespace tool {

/// Prints what a file is: movie, tracks, codecs, metadata and protection; or as JSON. The exit
/// status: 0, or 2 when the file could not be read or the output could not be written.
int RunInfo(const InfoOptions& options);

}  // namespace tool
