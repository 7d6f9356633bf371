#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "io/mmBuffer.h"
#include "io/mmStreamReader.h"

namespace mp4 {

/// Sample sizes in table form: a number of samples that all have one size and stand nowhere, then a
/// row a sample as the file's bytes. Samples are 0-based, sizes are unsigned bytes. Samples that
/// exist only as a number so cost no memory.
class SizeEntries {
 public:
  void Clear();
  /// Replaces everything by the rows of a table's body. False, and empty, when memory or the
  /// opening's account refuses.
  bool Read(mmStreamReader* reader, long long body);
  /// Replaces everything by `count` samples of `size` that no row holds; false without memory.
  bool StartWith(std::uint32_t count, std::uint32_t size);

  bool IsEmpty() const;
  /// Rows held.
  std::int64_t Held() const;
  /// The rows as file bytes; `Held` of them.
  const unsigned char* Bytes() const { return entries->data.get(); }

  /// Size of sample `i`; 0 outside the table. O(1).
  std::uint32_t SizeOf(int i) const {
    if (i < 0) return 0;
    const std::int64_t row = std::int64_t{i} - prefixCount;
    if (row < 0) return prefixSize;
    return entries != nullptr ? entries->Be32At(row * kRow) : 0;
  }
  /// Sum of SizeOf(j) for first <= j < last; O(1) and at most two scans of 128 rows.
  std::uint64_t Sum(int first, int last);

  /// Room for `count` more rows, of which Append then makes use; false without memory. Needs rows
  /// that were read or started.
  bool MakeRoom(std::size_t count);
  void Append(std::uint32_t size, std::size_t count);
  void Append(const std::uint32_t* sizes, std::size_t count);

 private:
  static constexpr std::int64_t kRow = 4;  // bytes

  std::uint64_t SumRows(std::int64_t first, std::int64_t last) const;
  std::uint64_t SumRowsBefore(std::int64_t row) const;
  void ExtendBlockSums();

  std::unique_ptr<mmBuffer> entries;
  std::uint32_t prefixCount = 0;  ///< samples before the rows, all of prefixSize
  std::uint32_t prefixSize = 0;
  std::vector<std::uint64_t> blockSums;  ///< [b]: sum of the rows before block b + 1
};

}  // namespace mp4
