#pragma once

#include "boxes/BoxBase.h"

/// Item list box "ilst".
class MP4JUDGE_API BoxIlst : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  bool Read_0xa9xxx(mmStreamReader* reader, long long length, wchar_t* field, int bytes) {
    return reader != nullptr && length >= 0 && field != nullptr && bytes > 0;
  }
};
