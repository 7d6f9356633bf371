#pragma once

#include <string>

#include "inspect/Report.h"
#include "io/CachedSource.h"
#include "mp4judge/mp4judge.h"

namespace mp4 {

/// Why the host's answer is not the verdict, or why the host reads no movie from the source; empty
/// when the two agree. Every cause that it names was tried on these very bytes. May throw
/// bad_alloc.
std::string WhyHostDiffers(CachedSource* source, const Report& report, mp4judge_host_answer host);

}  // namespace mp4
