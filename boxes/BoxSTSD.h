#pragma once

#include <cstdint>
#include <memory>

#include "boxes/BoxAVCC.h"
#include "boxes/BoxBase.h"
#include "boxes/BoxESDS.h"
#include "boxes/BoxWAVE.h"

/// Sample description box "stsd".
class MP4JUDGE_API BoxSTSD : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  void Clear() {}

  std::uint32_t handlerType = 0;
};
