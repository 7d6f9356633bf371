#pragma once

#include <memory>

#include "boxes/BoxBase.h"
#include "boxes/BoxIlst.h"

/// Meta box "meta".
class MP4JUDGE_API BoxMeta : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };

  std::unique_ptr<BoxIlst> itemListBox;
};
