#pragma once

#include <cstdint>
#include <limits>

namespace mp4 {

/// a + b; a sum that 64 bits do not hold stays at that end of their range. Times of real files are
/// far below.
inline std::int64_t HeldSum(std::int64_t a, std::int64_t b) {
  std::int64_t sum = 0;
  if (!__builtin_add_overflow(a, b, &sum)) return sum;
  return b > 0 ? std::numeric_limits<std::int64_t>::max()
               : std::numeric_limits<std::int64_t>::min();
}

}  // namespace mp4
