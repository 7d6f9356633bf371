#pragma once

#include <cstddef>
#include <cstdint>

namespace mp4 {

/// Passes over whole tables of big-endian 32-bit numbers. Each takes time linear in `count`.

struct RowTotals {
  std::uint64_t sum = 0;
  std::uint32_t largest = 0;
};

/// Time-to-sample rows of a count and a signed duration.
struct TimeTotals {
  std::uint32_t samples = 0;   ///< sum of the counts, modulo 2^32
  std::uint64_t duration = 0;  ///< sum of signed count x duration, modulo 2^64
};

struct RowPasses {
  /// Sum and largest of `count` unsigned numbers.
  RowTotals (*total)(const unsigned char* rows, std::size_t count);
  /// Stores `count` numbers at `out` in the host's order; `out` holds records of 32-bit fields.
  void (*copy)(const unsigned char* rows, std::size_t count, void* out);
  /// Totals of `count` time-to-sample rows.
  TimeTotals (*times)(const unsigned char* rows, std::size_t count);
};

/// The passes in a form that every processor runs.
const RowPasses& PlainRows();
/// The passes as wide as this processor can; where there is no wider form, the plain one.
const RowPasses& WidestRows();

}  // namespace mp4
