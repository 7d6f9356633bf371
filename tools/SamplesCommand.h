#pragma once

#include "tools/LookOptions.h"

namespace tool {

/// Prints where every sample lies and when it plays, track after track; returns the exit status: 0,
/// or 2 when the file cannot be opened or read, holds no tracks, or something is wrong with the
/// boxes that place its samples. What is wrong goes to standard error.
int RunSamples(const SamplesOptions& options);

}  // namespace tool
