#pragma once

#include <cstddef>
#include <cstdint>

#include "io/Export.h"

namespace mp4 {

/// Passes over whole tables of big-endian 32-bit numbers, as wide as the processor can. Each takes
/// time linear in `count`.

struct RowTotals {
  std::uint64_t sum = 0;
  std::uint32_t largest = 0;
};

/// Sum and largest of `count` unsigned numbers.
MP4JUDGE_API RowTotals TotalBe32(const unsigned char* rows, std::size_t count);

/// Stores `count` numbers at `out` in the host's order; `out` holds records of 32-bit fields.
MP4JUDGE_API void CopyBe32(const unsigned char* rows, std::size_t count, void* out);

/// Time-to-sample rows of a count and a signed duration.
struct TimeTotals {
  std::uint32_t samples = 0;   ///< sum of the counts, modulo 2^32
  std::uint64_t duration = 0;  ///< sum of signed count x duration, modulo 2^64
};

MP4JUDGE_API TimeTotals TotalTimes(const unsigned char* rows, std::size_t count);

}  // namespace mp4
