#pragma once

#include <cstdint>

#include "boxes/BoxBase.h"

/// Track header box "tkhd".
class MP4JUDGE_API BoxTKHD : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  int GetTrackID() { return static_cast<int>(trackId); }
  void Clear() {}

  std::uint64_t creationTime = 0;
  std::uint64_t modificationTime = 0;
  std::uint64_t duration = 0;
  std::uint32_t flags = 0;
  std::uint32_t trackId = 0;
  std::uint32_t volume = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};
