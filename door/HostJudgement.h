#pragma once

#include <memory>

#include "mp4judge/mp4judge.h"

class mmStreamReader;

namespace mp4 {

class ByteSource;

/// The host's judgement of whatever a source holds. A read that the source refused shows as zeros
/// to the host's parsers, so it may hide a protected track: then nothing is called clear. May throw
/// bad_alloc.
mp4judge_host_answer HostAnswer(ByteSource* source);
/// The host's judgement of what any reader reads.
mp4judge_host_answer HostAnswer(std::unique_ptr<mmStreamReader> reader);

}  // namespace mp4
