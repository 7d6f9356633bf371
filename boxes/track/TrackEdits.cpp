#include "boxes/track/TrackEdits.h"

#include "io/WrapMath.h"

namespace mp4 {

namespace {

/// Up to this many edits are summed on every call.
constexpr std::size_t kEditsSummedAnew = 64;

}  // namespace

/// Whether an edit still holds a sample is decided in whole seconds, truncated on both sides. Hosts
/// count on the samples this coarse test lets through. In ISO/IEC 14496-12 an edit ends exactly
/// segment_duration behind its start.
bool TrackEdits::Holds(std::size_t edit, std::int64_t mediaTime) const {
  const std::int64_t into = WrapSub(mediaTime, edits[edit].mediaTime);
  return WrapDiv(into, mediaTimescale) <= WrapDiv32(edits[edit].segmentDuration, movieTimescale);
}

TrackEdits::Place TrackEdits::EditAt(std::int64_t target) const {
  std::int64_t before = 0;
  std::size_t i = 0;
  for (; i + 1 < edits.size(); ++i) {
    const std::int64_t end = before + edits[i].segmentDuration;
    if (MediaUnits(end) > target) break;
    before = end;
  }
  return {i, MediaUnits(before)};
}

std::int64_t TrackEdits::MediaUnits(std::int64_t movieUnits) const {
  const std::int32_t perSecond = mediaTimescale != 0 ? mediaTimescale : 1;
  return WrapDiv(WrapMul(movieUnits, perSecond), movieTimescale);
}

std::int64_t EditSum::Before(const std::vector<tagElstItem>& edits, std::size_t edit) {
  const std::size_t whole = edit - edit % kEditsSummedAnew;
  const bool sameList = list == edits.data() && listSize == edits.size();
  if (!sameList || summed > whole) {
    *this = {};
    list = edits.data();
    listSize = edits.size();
  }
  for (; summed < whole; ++summed) duration += edits[summed].segmentDuration;
  std::int64_t before = duration;
  for (std::size_t i = whole; i < edit; ++i) before += edits[i].segmentDuration;
  return before;
}

}  // namespace mp4
