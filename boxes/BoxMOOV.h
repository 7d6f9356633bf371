#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "boxes/BoxBase.h"
#include "boxes/BoxMVEX.h"
#include "boxes/BoxMVHD.h"
#include "boxes/BoxTRAK.h"
#include "boxes/BoxUDTA.h"
#include "boxes/Mp4Context.h"

/// Movie box "moov".
class MP4JUDGE_API BoxMOOV : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  void Clear() {}

  bool ReadyToDemux() { return false; }
  bool GetNextSampleInfo(SAMPLE*) { return false; }
  bool GetNextSampleInfo(SAMPLE*, int) { return false; }
  long long Seek(long long, int, int) { return -1; }

  std::unique_ptr<BoxMVEX> movieExtendsBox;
  std::map<std::int32_t, std::unique_ptr<BoxTRAK>> tracks;
  std::unique_ptr<BoxMVHD> movieHeaderBox;
  std::unique_ptr<BoxUDTA> userDataBox;
  std::int32_t finished = 0;
  std::vector<std::int32_t> readyTracks;
};
