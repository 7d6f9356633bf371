#pragma once

#include <memory>
#include <vector>

#include "boxes/BoxBase.h"
#include "boxes/BoxMEHD.h"
#include "boxes/BoxTREX.h"

/// Movie extends box "mvex".
class MP4JUDGE_API BoxMVEX : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };

  std::vector<std::unique_ptr<BoxMEHD>> headers;
  std::vector<std::unique_ptr<BoxTREX>> trackExtends;
};
