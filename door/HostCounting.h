#pragma once

#include <string>

#include "inspect/Report.h"

namespace mp4 {

/// Why the host counts nothing of what the report calls protected: "track 1: the format "enca" is
/// not "drms"; ...". The host counts "drms" as the format of the first sample entry of a sound or
/// video track, and nothing else. Empty when there is something that it should have counted. May
/// throw bad_alloc.
std::string WhyHostCountsNothing(const Report& report);

}  // namespace mp4
