#pragma once

#include <string>

#include "door/HostTrial.h"

namespace mp4 {

/// Why the host reads no movie from a file whose first bytes these are; empty when it is not that.
std::string WhyHostDoesNotBegin(CachedSource* source);

/// Why it reads none although it begins; empty when no cause was found. Every cause was tried, or
/// is something that the host wants of every movie and that is not there. May throw bad_alloc.
std::string WhyHostFails(HostTrial* trial);

/// "an edit list in 64-bit form (moov/trak[1]/edts, byte 1,234, and 2 more)", for what FindCulprit
/// found.
std::string DescribeCulprit(HostTrial* trial, const std::vector<BoxId>& boxes);

}  // namespace mp4
