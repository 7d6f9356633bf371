#pragma once

#include "boxes/BoxBase.h"

/// MPEG-4 elementary stream descriptor box "esds".
class MP4JUDGE_API BoxESDS : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
};
