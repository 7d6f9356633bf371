#pragma once

#include "boxes/BoxBase.h"

/// File type box "ftyp": reduces the brands to the context's file mode.
class MP4JUDGE_API BoxFTYP : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
};
