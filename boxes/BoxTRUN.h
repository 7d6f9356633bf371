#pragma once

#include <cstdint>

#include "boxes/BoxBase.h"
#include "io/LazyArray.h"

/// One sample of a track run.
struct TrunEntry {
  std::uint32_t duration;
  std::uint32_t size;
  std::uint32_t flags;
  std::uint32_t composition_offset;
};

/// Track run box "trun".
class MP4JUDGE_API BoxTRUN : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };

  std::uint8_t version = 0;
  std::uint32_t tr_flags = 0;
  std::uint32_t sample_count = 0;
  std::uint32_t data_offset = 0;
  std::uint32_t first_sample_flags = 0;
  mp4::LazyArray<TrunEntry> entries;
};
