#include "samples/SampleColumns.h"

#include <algorithm>

#include "samples/SampleCursor.h"
#include "samples/Track.h"

namespace mp4 {

namespace {

/// Samples taken at a time: they stay in the nearest cache while the columns are written.
constexpr std::size_t kAtOnce = 128;

std::uint8_t FlagsOf(const Sample& sample) {
  constexpr std::uint8_t sync[] = {0, SampleColumns::kSync, SampleColumns::kSyncUnknown};
  constexpr std::uint8_t guard[] = {0, SampleColumns::kProtected,
                                    SampleColumns::kProtectionUnknown};
  int flags = sync[static_cast<int>(sample.sync)] | guard[static_cast<int>(sample.isProtected)];
  if (sample.outside) flags |= SampleColumns::kOutside;
  if (sample.elsewhere) flags |= SampleColumns::kElsewhere;
  if (sample.partialSync) flags |= SampleColumns::kPartialSync;
  return static_cast<std::uint8_t>(flags);
}

template <class T, class Field>
void Fill(T* column, std::size_t at, const Sample* samples, std::size_t n, const Field& field) {
  if (column == nullptr) return;
  for (std::size_t i = 0; i < n; ++i) column[at + i] = field(samples[i]);
}

}  // namespace

std::size_t FillColumns(Track* track, std::uint64_t first, std::size_t most,
                        const SampleColumns& columns) {
  SampleCursor cursor(track);
  if (!cursor.Seek(first)) return 0;
  Sample samples[kAtOnce];
  std::size_t done = 0;
  while (done < most) {
    const std::size_t n = cursor.Next(samples, std::min(kAtOnce, most - done));
    if (n == 0) break;
    Fill(columns.offsets, done, samples, n, [](const Sample& s) { return s.offset; });
    Fill(columns.sizes, done, samples, n, [](const Sample& s) { return s.size; });
    Fill(columns.decodeTimes, done, samples, n, [](const Sample& s) { return s.decodeTime; });
    Fill(columns.compositionTimes, done, samples, n,
         [](const Sample& s) { return s.compositionTime; });
    Fill(columns.durations, done, samples, n, [](const Sample& s) { return s.duration; });
    Fill(columns.flags, done, samples, n, FlagsOf);
    done += n;
  }
  return done;
}

}  // namespace mp4
