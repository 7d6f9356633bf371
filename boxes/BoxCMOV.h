#pragma once

#include <memory>

#include "boxes/BoxBase.h"
#include "io/mmBufReader.h"

/// Compressed movie box "cmov" (QuickTime).
class MP4JUDGE_API BoxCMOV : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  /// The inflated movie, or null.
  mmBufReader* GetMOOVDataStream() { return movieStream.get(); }

  std::unique_ptr<mmBufReader> movieStream;
};
