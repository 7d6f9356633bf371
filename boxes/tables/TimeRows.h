#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

#include "boxes/tables/PrefixIndex.h"
#include "io/mmBuffer.h"
#include "io/mmStreamReader.h"

namespace mp4 {

/// Samples and media time before a row of the time-to-sample table: counts wrap in 32 bits, times
/// in 64. The `most` fields are the largest values so far.
struct TimeState {
  static constexpr std::size_t kRowBytes = 8;
  TimeState After(const unsigned char* row) const;

  std::int32_t count = 0;
  std::int32_t mostCount = std::numeric_limits<std::int32_t>::min();
  std::int64_t time = 0;
  std::int64_t mostTime = std::numeric_limits<std::int64_t>::min();
};

/// The runs of a time-to-sample table, {sample count, sample delta} each, kept as the file's bytes.
/// Samples are 0-based, times are media timescale units; counts and deltas are signed. Questions
/// asked in rising order cost amortised constant time, others O(log n).
class TimeRows {
 public:
  static constexpr std::size_t kRowBytes = TimeState::kRowBytes;

  /// Replaces the rows by those of a table's body, at most `declared` of them. False, and empty,
  /// when memory or the opening's account refuses.
  bool Read(mmStreamReader* reader, long long body, std::uint32_t declared);

  /// Negative when the file declares a negative count.
  std::int32_t Count() const { return count; }
  /// The rows as file bytes, null before the first.
  const mmBuffer* Bytes() const { return entries.get(); }

  /// Duration of sample `i`, 0 past the end.
  std::int32_t DurationOf(int i);
  /// Decode time of sample `i`, the duration of all past the end.
  std::int64_t TimeOf(int i);
  /// The sample in force at `time`, the number of samples past the end.
  std::int64_t SampleAt(std::int64_t time);

  /// Adds samples of one duration behind the last, which share its row where that has the same.
  /// False when memory was refused and some are missing.
  bool Append(std::uint32_t duration, std::uint32_t samples);
  /// Upper bound of the rows that Append would add; 1 or 0 unless the table is odd.
  std::int64_t MostRowsFor(std::uint32_t duration, std::uint32_t samples) const;

 private:
  static std::int64_t OffsetOf(std::int64_t row) { return row * std::int64_t{kRowBytes}; }
  std::int64_t OffsetOfLast() const { return OffsetOf(std::int64_t{count} - 1); }
  std::int32_t DurationIn(int row) const;
  bool ExtendsLast(std::uint32_t duration) const;
  bool AppendRow(std::uint32_t duration);
  template <class Reached>
  PrefixIndex<TimeState>::Place Find(Reached reached);

  std::int32_t count = 0;
  std::unique_ptr<mmBuffer> entries;
  PrefixIndex<TimeState> index;
};

}  // namespace mp4
