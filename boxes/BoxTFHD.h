#pragma once

#include <cstdint>

#include "boxes/BoxBase.h"

/// Track fragment header box "tfhd".
class MP4JUDGE_API BoxTFHD : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };

  std::uint8_t version = 0;
  std::uint32_t tf_flags = 0;
  std::uint32_t track_ID = 0;
  std::uint64_t base_data_offset = 0;
  std::uint32_t sample_description_index = 0;
  std::uint32_t default_sample_duration = 0;
  std::uint32_t default_sample_size = 0;
  std::uint32_t default_sample_flags = 0;
  bool duration_is_empty = false;
};
