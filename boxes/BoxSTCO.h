#pragma once

#include <cstdint>
#include <memory>

#include "boxes/BoxBase.h"
#include "boxes/Mp4Context.h"
#include "io/mmBuffer.h"

/// Chunk offset box "stco" or "co64".
class MP4JUDGE_API BoxSTCO : public BoxBase {
 public:
  explicit BoxSTCO(unsigned int type) : type(type) {}
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  unsigned long long GetChunkOffset(int) { return ~0ULL; }
  void AppendChunk(unsigned long long) {}
  void OptimizeAudio() {}

  std::uint32_t type;
};
