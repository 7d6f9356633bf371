#pragma once

#include <cstdint>

#include "boxes/BoxBase.h"

/// Track extends box "trex".
class MP4JUDGE_API BoxTREX : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };

  std::uint32_t track_ID = 0;
  std::uint32_t default_sample_description_index = 0;
  std::uint32_t default_sample_duration = 0;
  std::uint32_t default_sample_size = 0;
  std::uint32_t default_sample_flags = 0;
};
