#pragma once

#include "boxes/BoxBase.h"

/// QuickTime sound decompression atom "wave".
class MP4JUDGE_API BoxWAVE : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
};
