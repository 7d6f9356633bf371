#include "boxes/tables/SizeEntries.h"

#include <algorithm>
#include <utility>

#include "boxes/base/TableBody.h"
#include "io/WithoutThrowing.h"

namespace mp4 {

namespace {

constexpr std::int64_t kBlock = 128;  // rows
constexpr std::size_t kFirstRows = 8;

}  // namespace

void SizeEntries::Clear() {
  entries.reset();
  blockSums.clear();
  prefixCount = 0;
}

bool SizeEntries::Read(mmStreamReader* reader, long long body) {
  Clear();
  return ReadTableBody(reader, body, kRow, &entries);
}

bool SizeEntries::StartWith(std::uint32_t count, std::uint32_t size) {
  std::unique_ptr<mmBuffer> rows;
  if (!EnsureBuffer(&rows, kRow * kFirstRows)) return false;
  entries = std::move(rows);
  blockSums.clear();
  prefixCount = count;
  prefixSize = size;
  return true;
}

bool SizeEntries::IsEmpty() const { return prefixCount == 0 && Held() == 0; }

std::int64_t SizeEntries::Held() const {
  return entries != nullptr ? static_cast<std::int64_t>(entries->used) / kRow : 0;
}

std::uint64_t SizeEntries::Sum(int first, int last) {
  if (first >= last) return 0;
  const std::int64_t from = first;
  const std::int64_t to = last;
  const std::int64_t prefix = prefixCount;
  const std::int64_t inPrefix = std::min(to, prefix) - std::clamp<std::int64_t>(from, 0, prefix);
  const std::int64_t firstRow = std::clamp<std::int64_t>(from - prefix, 0, Held());
  const std::int64_t lastRow = std::clamp<std::int64_t>(to - prefix, 0, Held());
  const std::uint64_t sum =
      static_cast<std::uint64_t>(std::max<std::int64_t>(inPrefix, 0)) * prefixSize;
  if (lastRow - firstRow <= 2 * kBlock) return sum + SumRows(firstRow, lastRow);
  ExtendBlockSums();
  return sum + SumRowsBefore(lastRow) - SumRowsBefore(firstRow);
}

std::uint64_t SizeEntries::SumRows(std::int64_t first, std::int64_t last) const {
  std::uint64_t sum = 0;
  for (std::int64_t row = first; row < last; ++row) sum += entries->Be32At(row * kRow);
  return sum;
}

std::uint64_t SizeEntries::SumRowsBefore(std::int64_t row) const {
  const auto known = static_cast<std::int64_t>(blockSums.size());
  const std::int64_t block = std::min(row / kBlock, known);
  const std::uint64_t sum = block > 0 ? blockSums[static_cast<std::size_t>(block) - 1] : 0;
  return sum + SumRows(block * kBlock, row);
}

/// Only blocks that are full: rows are appended, never changed. Without memory the sums are made
/// the long way.
void SizeEntries::ExtendBlockSums() {
  WithoutThrowing([this] {
    const auto wanted = static_cast<std::size_t>(Held() / kBlock);
    if (blockSums.empty()) blockSums.reserve(wanted);
    while (blockSums.size() < wanted) {
      const auto first = static_cast<std::int64_t>(blockSums.size()) * kBlock;
      const std::uint64_t before = blockSums.empty() ? 0 : blockSums.back();
      blockSums.push_back(before + SumRows(first, first + kBlock));
    }
  });
}

bool SizeEntries::MakeRoom(std::size_t count) { return entries->MakeRoom(count * kRow); }

void SizeEntries::Append(std::uint32_t size, std::size_t count) {
  unsigned char* row = entries->data.get() + entries->used;
  for (std::size_t i = 0; i < count; ++i) StoreBe32(row + i * kRow, size);
  entries->used += count * kRow;
}

void SizeEntries::Append(const std::uint32_t* sizes, std::size_t count) {
  unsigned char* row = entries->data.get() + entries->used;
  for (std::size_t i = 0; i < count; ++i) StoreBe32(row + i * kRow, sizes[i]);
  entries->used += count * kRow;
}

}  // namespace mp4
