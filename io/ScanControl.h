#pragma once

#include <algorithm>
#include <cstdint>

#include "io/Limits.h"

namespace mp4 {

/// What one opening of a file may cost, and whether it loads what cannot change the judgement.
/// A reader carries it while a file is being opened, so that every box sees the same account;
/// readers used outside an opening carry none and are unbounded. A charge that is refused makes
/// the box that asked for it fail.
class ScanControl {
 public:
  /// `sourceSize` is the size of the source in bytes, taken once when the opening starts.
  explicit ScanControl(std::int64_t sourceSize, ScanControl* outer = nullptr)
      : sourceSize(sourceSize),
        headers(sourceSize / limits::kBytesPerHeader + limits::kSpareHeaders),
        bytes(Share(limits::kBytesReadPerSourceByte) + limits::kSpareBytesRead),
        memory(Share(limits::kMemoryPerSourceByte) + limits::kSpareMemory),
        merge(Share(limits::kMergePerSourceByte) + limits::kSpareMerge),
        inflated(Share(limits::kInflatedPerSourceByte) + limits::kInflatedTotal),
        outer(outer) {
    if (outer != nullptr) tablesUnread = outer->tablesUnread;
  }

  bool TakeHeader() { return Take(&headers, 1); }
  bool TakeBytes(std::int64_t n) { return Take(&bytes, n); }
  bool TakeMemory(std::int64_t n) { return Take(&memory, n); }
  bool TakeMerge(std::int64_t n) { return Take(&merge, n); }
  /// Inflated bytes are counted for the whole opening, however deep the movie is nested.
  bool TakeInflated(std::int64_t n) {
    return outer != nullptr ? outer->TakeInflated(n) : Take(&inflated, n);
  }

  /// Size of the source when the opening began.
  const std::int64_t sourceSize;
  /// Sample tables and run entries are passed over as if read, for a caller that only judges.
  bool tablesUnread = false;

 private:
  /// A sparse file may claim nearly 2^63 bytes; the product stays far below.
  std::int64_t Share(std::int64_t perSourceByte) const {
    return std::min(sourceSize, limits::kLargestCountedSource) * perSourceByte;
  }

  static bool Take(std::int64_t* left, std::int64_t n) {
    if (n > *left) {
      *left = 0;
      return false;
    }
    *left -= n;
    return true;
  }

  std::int64_t headers;
  std::int64_t bytes;
  std::int64_t memory;
  std::int64_t merge;
  std::int64_t inflated;
  ScanControl* outer;
};

}  // namespace mp4
