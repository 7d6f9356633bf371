#include <algorithm>

#include "boxes/track/BoxTRAK.h"
#include "io/WrapMath.h"

/// Sample times and seeks under an edit list. Movie and media timescales count as 1 when they are
/// 0.

namespace {

/// Units of Seek a second: 100 ns.
constexpr std::int64_t kSeekUnits = 10'000'000;
/// An edit of this media time is empty: it shows nothing and only takes time.
constexpr std::int32_t kEmptyEdit = -1;
/// Up to this many edits are summed on every call.
constexpr std::size_t kEditsSummedAnew = 64;

}  // namespace

bool BoxTRAK::GetSampleInfo(SAMPLE* current) {
  if (current == nullptr) return false;
  current->trackId = static_cast<std::uint32_t>(GetTrackID());
  current->format = format;
  if (mediaBox == nullptr) return false;
  const bool ok = mediaBox->GetSampleInfo(current);
  if (hasEditList == 0) return ok;
  if (!FindEdit(current, ok)) return false;
  const std::int32_t mediaTime = editList[static_cast<std::size_t>(editIndex)].mediaTime;
  current->time = std::max<std::int64_t>(0, mp4::WrapSub(current->time, mediaTime));
  if (editIndex > 0) {
    current->time = mp4::WrapAdd(current->time, MediaUnits(DurationBeforeEdit()));
  }
  return true;
}

/// Moves on to the first edit that holds the sample, reading the first sample of each edit entered.
bool BoxTRAK::FindEdit(SAMPLE* current, bool ok) {
  const auto count = static_cast<std::int64_t>(editList.size());
  if (editIndex < 0 || editIndex >= count) return false;
  for (;;) {
    const tagElstItem& edit = editList[static_cast<std::size_t>(editIndex)];
    if (ok && edit.mediaTime != kEmptyEdit && Holds(edit, current->time)) return true;
    if (++editIndex >= count) return false;
    const std::int32_t mediaTime = editList[static_cast<std::size_t>(editIndex)].mediaTime;
    if (mediaTime == kEmptyEdit) continue;
    mediaBox->Seek(mediaTime);
    ok = mediaBox->GetSampleInfo(current);
  }
}

/// Whether an edit still holds a sample is decided in whole seconds, truncated on both sides. Hosts
/// count on the samples this coarse test lets through.
bool BoxTRAK::Holds(const tagElstItem& edit, std::int64_t time) {
  const std::int64_t into = mp4::WrapSub(time, edit.mediaTime);
  return mp4::WrapDiv(into, MediaTimescale()) <=
         mp4::WrapDiv32(edit.segmentDuration, movieTimescale);
}

std::int64_t BoxTRAK::MediaTimescale() {
  const auto timescale = static_cast<std::int32_t>(mediaBox->GetTimescale());
  return timescale != 0 ? timescale : 1;
}

std::int64_t BoxTRAK::MediaUnits(std::int64_t movieUnits) {
  return mp4::WrapDiv(mp4::WrapMul(movieUnits, MediaTimescale()), movieTimescale);
}

std::int64_t BoxTRAK::DurationBeforeEdit() {
  const auto index = static_cast<std::size_t>(editIndex);
  const std::size_t whole = index - index % kEditsSummedAnew;
  const bool sameList = editSum.list == editList.data() && editSum.listSize == editList.size();
  if (!sameList || editSum.edits > whole) editSum = {editList.data(), editList.size(), 0, 0};
  for (; editSum.edits < whole; ++editSum.edits) {
    editSum.duration += editList[editSum.edits].segmentDuration;
  }
  std::int64_t before = editSum.duration;
  for (std::size_t i = whole; i < index; ++i) before += editList[i].segmentDuration;
  return before;
}

long long BoxTRAK::Seek(long long time) {
  if (mediaBox == nullptr) return -1;
  const std::int64_t target = mp4::WrapDiv(mp4::WrapMul(time, MediaTimescale()), kSeekUnits);
  if (hasEditList == 0 || editList.empty()) {
    return mp4::WrapDiv(mp4::WrapMul(mediaBox->Seek(target), kSeekUnits), MediaTimescale());
  }
  const std::int64_t base = ChooseEdit(target);
  const std::int32_t start = editList[static_cast<std::size_t>(editIndex)].mediaTime;
  const std::int64_t mediaTarget = mp4::WrapSub(mp4::WrapAdd(start, target), base);
  const std::int64_t reached = mediaBox->Seek(std::max<std::int64_t>(0, mediaTarget));
  const std::int64_t into = std::max<std::int64_t>(0, mp4::WrapSub(reached, start));
  return EditedSeekResult(mp4::WrapAdd(into, base));
}

/// Makes the first edit that ends behind the target the current one, the last edit when none does,
/// and returns its start on the track's time line in media units.
std::int64_t BoxTRAK::ChooseEdit(std::int64_t target) {
  editSum = {};
  std::int64_t before = 0;
  std::size_t i = 0;
  for (; i + 1 < editList.size(); ++i) {
    const std::int64_t end = before + editList[i].segmentDuration;
    if (MediaUnits(end) > target) break;
    before = end;
  }
  editIndex = static_cast<std::int32_t>(i);
  return MediaUnits(before);
}

/// With an edit list the time reached is multiplied by the timescale and divided by the seek units,
/// the reverse of what the conversion back would be. Hosts undo it themselves.
std::int64_t BoxTRAK::EditedSeekResult(std::int64_t mediaTime) {
  return mp4::WrapDiv(mp4::WrapMul(mediaTime, MediaTimescale()), kSeekUnits);
}
