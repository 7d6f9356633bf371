#include <algorithm>

#include "boxes/base/BoxReading.h"
#include "boxes/tables/BoxSTSZ.h"

namespace {

constexpr std::int64_t kRow = 4;      // bytes
constexpr std::int64_t kBlock = 128;  // rows

}  // namespace

std::int64_t BoxSTSZ::HeldRows() const {
  return entries != nullptr ? static_cast<std::int64_t>(entries->used) / kRow : 0;
}

unsigned int BoxSTSZ::GetSampleSize(int i) {
  if (constantSize != 0) return constantSize;
  if (i < 0) return 0;
  const std::int64_t row = static_cast<std::int64_t>(i) - prefixCount;
  if (row < 0) return prefixSize;
  return entries != nullptr ? entries->Be32At(row * kRow) : 0;
}

unsigned long long BoxSTSZ::SumSizes(int first, int last) {
  if (first >= last) return 0;
  const std::int64_t from = first;
  const std::int64_t to = last;
  if (constantSize != 0) return static_cast<std::uint64_t>(to - from) * constantSize;
  const std::int64_t prefix = prefixCount;
  const std::int64_t inPrefix = std::min(to, prefix) - std::clamp<std::int64_t>(from, 0, prefix);
  const std::int64_t firstRow = std::clamp<std::int64_t>(from - prefix, 0, HeldRows());
  const std::int64_t lastRow = std::clamp<std::int64_t>(to - prefix, 0, HeldRows());
  std::uint64_t sum = static_cast<std::uint64_t>(std::max<std::int64_t>(inPrefix, 0)) * prefixSize;
  if (lastRow - firstRow <= 2 * kBlock) return sum + SumRows(firstRow, lastRow);
  ExtendBlockSums();
  return sum + SumRowsBefore(lastRow) - SumRowsBefore(firstRow);
}

std::uint64_t BoxSTSZ::SumRows(std::int64_t first, std::int64_t last) const {
  std::uint64_t sum = 0;
  for (std::int64_t row = first; row < last; ++row) sum += entries->Be32At(row * kRow);
  return sum;
}

std::uint64_t BoxSTSZ::SumRowsBefore(std::int64_t row) const {
  const auto known = static_cast<std::int64_t>(blockSums.size());
  const std::int64_t block = std::min(row / kBlock, known);
  const std::uint64_t sum = block > 0 ? blockSums[static_cast<std::size_t>(block) - 1] : 0;
  return sum + SumRows(block * kBlock, row);
}

/// Only blocks that are full: rows are appended, never changed. Without memory the sums are made
/// the long way.
void BoxSTSZ::ExtendBlockSums() {
  mp4::WithoutThrowing([this] {
    const auto wanted = static_cast<std::size_t>(HeldRows() / kBlock);
    if (blockSums.empty()) blockSums.reserve(wanted);
    while (blockSums.size() < wanted) {
      const auto first = static_cast<std::int64_t>(blockSums.size()) * kBlock;
      const std::uint64_t before = blockSums.empty() ? 0 : blockSums.back();
      blockSums.push_back(before + SumRows(first, first + kBlock));
    }
  });
}
