#pragma once

#include "boxes/BoxBase.h"

/// AVC configuration box "avcC".
class MP4JUDGE_API BoxAVCC : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
};
