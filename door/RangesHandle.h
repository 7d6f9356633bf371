#pragma once

#include "io/RangeSource.h"
#include "mp4judge/mp4judge.h"

struct mp4judge_ranges {
  explicit mp4judge_ranges(uint64_t size) : source(size) {}

  mp4::RangeSource source;
};
