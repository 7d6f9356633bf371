#pragma once

#include <cstdint>

#include "boxes/BoxBase.h"

/// Movie extends header box "mehd".
class MP4JUDGE_API BoxMEHD : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };

  std::uint8_t version = 0;
  std::uint32_t flags = 0;
  std::uint64_t fragment_duration = 0;
};
