#pragma once

#include <cstdint>
#include <memory>

#include "boxes/BoxBase.h"
#include "boxes/Mp4Context.h"
#include "io/mmBuffer.h"

/// Sample-to-chunk box "stsc".
class MP4JUDGE_API BoxSTSC : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  int ReadyToDemux() { return 1; }
  unsigned int NextSample() { return 0; }
  unsigned int GetCurSampleIndex() { return 0; }
  unsigned int GetCurChunkIndex() { return 0; }
  unsigned int GetFirstSampleInCurChunk() { return 0; }
  void Seek(int) {}
  void AppendSampleToChunk(unsigned int /*sample_description_index*/,
                           unsigned int /*samples_per_chunk*/) {}
};
