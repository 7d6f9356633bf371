#include <algorithm>
#include <cstring>
#include <utility>

#include "boxes/base/TableBody.h"
#include "boxes/tables/BoxSTSZ.h"
#include "io/FillFrom.h"

void BoxSTSZ::AppendSizes(unsigned int size, unsigned int count) {
  while (count > 0) {
    const std::uint64_t done = AppendStep(size, count);
    if (done == 0) {
      intact = false;
      return;
    }
    count -= static_cast<unsigned int>(done);
  }
}

void BoxSTSZ::AppendEach(const std::uint32_t* sizes, std::size_t count) {
  const std::uint32_t* const end = sizes + count;
  // Until the table form is reached, and again where the count wraps.
  while (sizes != end && !TakesRows(static_cast<std::size_t>(end - sizes))) {
    const std::uint32_t* const other =
        std::find_if(sizes, end, [size = *sizes](std::uint32_t each) { return each != size; });
    AppendSizes(*sizes, static_cast<unsigned int>(other - sizes));
    sizes = other;
  }
  if (sizes == end) return;
  if (!AppendRows(sizes, static_cast<std::size_t>(end - sizes))) {
    intact = false;
    return;
  }
  sampleCount += static_cast<std::uint32_t>(end - sizes);
  const auto asSigned = [](std::uint32_t a, std::uint32_t b) {
    return static_cast<std::int32_t>(a) < static_cast<std::int32_t>(b);
  };
  PublishAppended(*std::max_element(sizes, end, asSigned));
}

bool BoxSTSZ::TakesRows(std::size_t count) const {
  return sampleCount != 0 && !MustExpand() && count < (1ULL << 32) - sampleCount;
}

/// Appends as many of `count` samples as one form takes; returns how many, 0 without memory. A
/// count that wraps to 0 starts a constant form again.
std::uint64_t BoxSTSZ::AppendStep(unsigned int size, unsigned int count) {
  if (sampleCount == 0) {
    constantSize = size;
    sampleCount = 1;
    return 1;
  }
  const std::uint64_t step = std::min<std::uint64_t>(count, (1ULL << 32) - sampleCount);
  if (constantSize != 0 && constantSize == size) {
    sampleCount += static_cast<std::uint32_t>(step);
    if (track != nullptr) track->constSampleCount = sampleCount;
    return step;
  }
  if (MustExpand() && !Expand()) return 0;
  if (!AppendRows(size, step)) return 0;
  sampleCount += static_cast<std::uint32_t>(step);
  PublishAppended(size);
  return step;
}

/// Samples that exist only as a count: the constant form, or zero sizes that no row holds.
bool BoxSTSZ::MustExpand() const {
  return constantSize != 0 || (prefixCount == 0 && HeldRows() == 0);
}

bool BoxSTSZ::Expand() {
  std::unique_ptr<mmBuffer> rows;
  if (!mp4::EnsureBuffer(&rows, kRowBytes * 8)) return false;
  entries = std::move(rows);
  blockSums.clear();
  prefixCount = sampleCount;
  prefixSize = constantSize;
  constantSize = 0;
  return true;
}

/// Appends rows, and for audio the published sizes. The samples of an expanded constant form are
/// not published with them: hosts expect only what was appended.
bool BoxSTSZ::AppendRows(unsigned int size, std::size_t count) {
  if (!entries->MakeRoom(count * kRowBytes)) return false;
  const bool published = !IsAudio() || mp4::WithoutThrowing([&] {
    std::vector<tagSTSZ>& table = track->sampleSizeTable;
    table.insert(table.end(), count, tagSTSZ{size});
  });
  if (!published) return false;
  unsigned char* row = entries->data.get() + entries->used;
  for (std::size_t i = 0; i < count; ++i) mp4::StoreBe32(row + i * kRowBytes, size);
  entries->used += count * kRowBytes;
  return true;
}

bool BoxSTSZ::AppendRows(const std::uint32_t* sizes, std::size_t count) {
  if (!entries->MakeRoom(count * kRowBytes)) return false;
  const bool published = !IsAudio() || mp4::WithoutThrowing([&] {
    std::vector<tagSTSZ>& table = track->sampleSizeTable;
    const std::size_t before = table.size();
    mp4::FillFrom(&table, before, before + count,
                  [&](std::size_t from, std::size_t n, tagSTSZ* out) {
                    std::memcpy(out, sizes + (from - before), n * sizeof *out);
                  });
  });
  if (!published) return false;
  unsigned char* row = entries->data.get() + entries->used;
  for (std::size_t i = 0; i < count; ++i) mp4::StoreBe32(row + i * kRowBytes, sizes[i]);
  entries->used += count * kRowBytes;
  return true;
}

void BoxSTSZ::PublishAppended(unsigned int size) {
  if (track == nullptr) return;
  if (static_cast<std::int32_t>(size) >= static_cast<std::int32_t>(track->maxSampleSize)) {
    track->maxSampleSize = size;
  }
  track->constSampleCount = track->constSampleSize = 0;
}
