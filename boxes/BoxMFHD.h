#pragma once

#include <cstdint>

#include "boxes/BoxBase.h"

/// Movie fragment header box "mfhd".
class MP4JUDGE_API BoxMFHD : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };

  std::uint32_t sequence_number = 0;
};
