#pragma once

#include <cstdint>
#include <memory>

#include "boxes/BoxBase.h"

/// Handler box "hdlr".
class MP4JUDGE_API BoxHDLR : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  unsigned int GetHandlerType() { return handlerType; }
  bool IsVideo() { return false; }

  std::uint32_t handlerType = 0;
  std::unique_ptr<char[]> name;
};
