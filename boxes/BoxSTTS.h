#pragma once

#include <cstdint>
#include <memory>

#include "boxes/BoxBase.h"
#include "boxes/Mp4Context.h"
#include "io/mmBuffer.h"

/// Time-to-sample box "stts".
class MP4JUDGE_API BoxSTTS : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  void CalcAvInfo() {}
  void OptimizeAudio() {}
  signed char GetSampleDuration(int) { return 0; }
  int GetTotalSamples() { return 0; }
  long long GetSampleIndexBefore(long long) { return 0; }
  long long GetPTS(int) { return 0; }
  void AppendTime(unsigned int) {}
  /// As `count` calls of AppendTime, in one step where the result allows.
  void AppendTimes(unsigned int /*duration*/, unsigned int /*count*/) {}
};
