#pragma once

#include <cstdint>
#include <memory>

#include "boxes/BoxBase.h"
#include "boxes/BoxSTCO.h"
#include "boxes/BoxSTSC.h"
#include "boxes/BoxSTSD.h"
#include "boxes/BoxSTSS.h"
#include "boxes/BoxSTSZ.h"
#include "boxes/BoxSTTS.h"

/// Sample table box "stbl".
class MP4JUDGE_API BoxSTBL : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  void Clear() {}
  int ReadyToDemux(SAMPLE*) { return 0; }
  bool Next() { return false; }
  int GetSampleInfo(SAMPLE*) { return 1; }
  long long Seek(long long) { return 0; }

  std::unique_ptr<BoxSTSD> sampleDescriptionBox;
  std::unique_ptr<BoxSTTS> timeToSampleBox;
  std::unique_ptr<BoxSTSC> sampleToChunkBox;
  std::unique_ptr<BoxSTSZ> sampleSizeBox;
  std::unique_ptr<BoxSTCO> chunkOffsetBox;
  std::unique_ptr<BoxSTSS> syncSampleBox;

  std::int32_t sampleCount = 0;
  std::int32_t curSample = 0;
  std::int32_t curChunk = 0;
  std::int32_t curDuration = 0;
  std::uint32_t curSize = 0;
  std::int64_t curTime = 0;
  std::int64_t curOffset = 0;
};
