#pragma once

#include <cstdint>
#include <memory>

#include "boxes/BoxBase.h"
#include "boxes/Mp4Context.h"
#include "io/mmBuffer.h"

/// Sample size box "stsz".
class MP4JUDGE_API BoxSTSZ : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  unsigned int GetSampleSize(int) { return 0; }
  void AppendSize(unsigned int) {}
  /// As `count` calls of AppendSize, in one step where the result allows.
  void AppendSizes(unsigned int /*size*/, unsigned int /*count*/) {}
  /// Sum of GetSampleSize(j) for first <= j < last.
  unsigned long long SumSizes(int first, int last) {
    unsigned long long sum = 0;
    for (int j = first; j < last; ++j) sum += GetSampleSize(j);
    return sum;
  }
  unsigned int GetSampleCount() const { return 0; }
  /// True while AppendSizes of `size` needs no memory (the constant form holds).
  bool StaysConstant(unsigned int /*size*/) const { return false; }
};
