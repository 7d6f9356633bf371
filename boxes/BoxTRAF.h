#pragma once

#include <memory>
#include <vector>

#include "boxes/BoxBase.h"
#include "boxes/BoxTFHD.h"
#include "boxes/BoxTRUN.h"

/// Track fragment box "traf".
class MP4JUDGE_API BoxTRAF : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };

  std::unique_ptr<BoxTFHD> header;
  std::vector<std::unique_ptr<BoxTRUN>> runs;
};
