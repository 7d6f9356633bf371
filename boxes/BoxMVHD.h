#pragma once

#include <cstdint>

#include "boxes/BoxBase.h"

/// Movie header box "mvhd".
class MP4JUDGE_API BoxMVHD : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };

  std::uint64_t creationTime = 0;
  std::uint64_t modificationTime = 0;
  std::uint32_t timescale = 0;
  std::uint64_t duration = 0;
};
