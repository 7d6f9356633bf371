#pragma once

#include <memory>

#include "boxes/BoxBase.h"
#include "boxes/BoxMeta.h"

/// User data box "udta".
class MP4JUDGE_API BoxUDTA : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  bool Read_0xa9xxx(mmStreamReader* reader, long long length, wchar_t* field, int bytes) {
    return reader != nullptr && length >= 0 && field != nullptr && bytes > 0;
  }

  std::unique_ptr<BoxMeta> metaBox;
};
