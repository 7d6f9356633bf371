#pragma once

#include <cstdint>
#include <memory>

#include "boxes/BoxBase.h"
#include "boxes/Mp4Context.h"
#include "io/mmBuffer.h"

/// Sync sample box "stss".
class MP4JUDGE_API BoxSTSS : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  int GetEntryCount() { return 0; }
  unsigned int GetSampleIndex(int) { return ~0U; }
  unsigned int GetSampleIndexBeforeThis(int) { return ~0U; }
  unsigned int AppendRAP(unsigned int) { return 0; }
};
