#pragma once

#include "mp4judge/mp4judge.h"

namespace mp4 {

class ByteSource;

/// The host's judgement of whatever a source holds. A read that the source refused shows as zeros
/// to the host's parsers, so it may hide a protected track: then nothing is called clear. May throw
/// bad_alloc.
mp4judge_host_answer HostAnswer(ByteSource* source);

}  // namespace mp4
