#include "boxes/track/BoxTRAK.h"

#include <algorithm>

#include "boxes/base/BoxReading.h"
#include "boxes/track/EditList.h"
#include "io/BulkRead.h"
#include "io/FourCC.h"
#include "io/WithoutThrowing.h"
#include "io/WrapMath.h"
#include "platform/ZR_Log.h"

namespace {

constexpr long long kSmallestTrack = 4;
/// Units of Seek a second: 100 ns.
constexpr std::int64_t kSeekUnits = 10'000'000;
/// An edit box of this size, header included, is empty and not read.
constexpr long long kEmptyBox = 8;

/// What hosts see in their log when no track header came before the end of a track.
constexpr wchar_t kNoCurrentTrack[] =
    L"BoxTRAK LINE: 173: pTrack = context->GetCurrentTrack() !;pTrack == NULL";

/// Passes over the IDs of the first reference box inside "tref" as if read. Its own size counts,
/// not the one of "tref", and nothing realigns the reader afterwards; hosts count on what follows.
/// In ISO/IEC 14496-12 "tref" holds any number of such boxes.
void PassOverReferences(mmStreamReader* reader) {
  const long long payload = static_cast<long long>(reader->GetBe32()) - 8;
  reader->GetLe32();  // type
  if (payload >= 4) mp4::PassAsRead(reader, payload / 4 * 4);
}

/// A single edit from the start of the media is dropped on purpose: such tracks iterate without
/// correction, although their duration is the edited one. In ISO/IEC 14496-12 it ends the track
/// after its segment_duration.
bool IsTrivial(const std::vector<tagElstItem>& edits) {
  return edits.size() == 1 && edits.front().mediaTime == 0;
}

std::int64_t TotalDuration(const std::vector<tagElstItem>& edits) {
  std::int64_t total = 0;
  for (const tagElstItem& edit : edits) total += edit.segmentDuration;
  return total;
}

}  // namespace

BoxTRAK::~BoxTRAK() { Clear(); }

bool BoxTRAK::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < kSmallestTrack) return false;
  Clear();
  std::vector<tagElstItem> edits;
  const auto readEdits = [&](const mp4::ChildHeader& child) {
    if (child.size == kEmptyBox) return mp4::Child::kRead;
    if (!mp4::ReadEditList(reader, &edits)) return mp4::Child::kFailed;
    if (context != nullptr) movieTimescale = context->GetTimescale();
    return mp4::Child::kRead;
  };
  const auto dispatch = [&](const mp4::ChildHeader& child) {
    switch (child.type) {
      case mp4::FourCC("mdia"):
        return mp4::ReadReplacing(&mediaBox, reader, child, context);
      case mp4::FourCC("tkhd"):
        return mp4::ReadReused(&trackHeaderBox, reader, child, context);
      case mp4::FourCC("edts"):
        return readEdits(child);
      case mp4::FourCC("tref"):
        PassOverReferences(reader);
        return mp4::Child::kRead;
      default:
        return mp4::Child::kUnknown;
    }
  };
  const bool read = mp4::ReadContainer(reader, size, 0, dispatch);
  const bool published = Publish(context, edits);
  const bool complete = published && read && mediaBox != nullptr;
  // A judgement asks for the records alone and need not hold the boxes of hundreds of tracks.
  if (mp4::OnlyJudges(reader)) mediaBox.reset();
  return complete;
}

void BoxTRAK::Clear() {
  trackHeaderBox.reset();
  mediaBox.reset();
  DropSample();
}

void BoxTRAK::DropSample() {
  if (sample != nullptr) delete[] sample->data;
  sample.reset();
}

bool BoxTRAK::Publish(Mp4Context* context, const std::vector<tagElstItem>& edits) {
  Mp4Context::TRACK* track = mp4::CurrentTrack(context);
  if (track == nullptr) {
    ZRLogEx(kNoCurrentTrack);
    return true;
  }
  format = track->format;
  if (edits.empty()) return true;
  const bool kept = IsTrivial(edits) || KeepEdits(track, edits);
  track->movieTimescale = context->GetTimescale();
  editDuration = TotalDuration(edits);
  track->duration =
      mp4::WrapDiv(mp4::WrapMul(track->timescale, editDuration), track->movieTimescale);
  return kept;
}

bool BoxTRAK::KeepEdits(Mp4Context::TRACK* track, const std::vector<tagElstItem>& edits) {
  editSum = {};
  return mp4::WithoutThrowing([&] {
    editList = edits;
    hasEditList = 1;
    track->editList = edits;
    track->hasEditList = 1;
  });
}

bool BoxTRAK::ReadyToDemux() {
  if (trackHeaderBox == nullptr || mediaBox == nullptr) return false;
  DropSample();
  if (!mp4::WithoutThrowing([&] { sample = std::make_unique<SAMPLE>(); })) return false;
  sample->trackId = static_cast<std::uint32_t>(GetTrackID());
  return mediaBox->ReadyToDemux(sample.get());
}

bool BoxTRAK::Next() { return mediaBox != nullptr && mediaBox->Next(); }

bool BoxTRAK::GetSampleInfo(SAMPLE* current) {
  if (current == nullptr) return false;
  current->trackId = static_cast<std::uint32_t>(GetTrackID());
  current->format = format;
  if (mediaBox == nullptr) return false;
  const bool ok = mediaBox->GetSampleInfo(current);
  return hasEditList == 0 ? ok : ApplyEdits(current, ok);
}

bool BoxTRAK::ApplyEdits(SAMPLE* current, bool ok) {
  if (!FindEdit(current, ok)) return false;
  const auto edit = static_cast<std::size_t>(editIndex);
  current->time = std::max<std::int64_t>(0, mp4::WrapSub(current->time, editList[edit].mediaTime));
  if (edit > 0) {
    const std::int64_t before = Timeline().MediaUnits(editSum.Before(editList, edit));
    current->time = mp4::WrapAdd(current->time, before);
  }
  return true;
}

/// Moves on to the first edit that holds the sample, reading the first sample of each edit entered.
bool BoxTRAK::FindEdit(SAMPLE* current, bool ok) {
  const auto count = static_cast<std::int64_t>(editList.size());
  if (editIndex < 0 || editIndex >= count) return false;
  for (;;) {
    const auto edit = static_cast<std::size_t>(editIndex);
    const bool shows = editList[edit].mediaTime != mp4::TrackEdits::kEmptyEdit;
    if (ok && shows && Timeline().Holds(edit, current->time)) return true;
    if (++editIndex >= count) return false;
    const std::int32_t mediaTime = editList[static_cast<std::size_t>(editIndex)].mediaTime;
    if (mediaTime == mp4::TrackEdits::kEmptyEdit) continue;
    mediaBox->Seek(mediaTime);
    ok = mediaBox->GetSampleInfo(current);
  }
}

mp4::TrackEdits BoxTRAK::Timeline() const { return {editList, MediaTimescale(), movieTimescale}; }

std::int32_t BoxTRAK::MediaTimescale() const {
  const auto timescale = static_cast<std::int32_t>(mediaBox->GetTimescale());
  return timescale != 0 ? timescale : 1;
}

long long BoxTRAK::Seek(long long time) {
  if (mediaBox == nullptr) return -1;
  const std::int64_t target = mp4::WrapDiv(mp4::WrapMul(time, MediaTimescale()), kSeekUnits);
  if (hasEditList == 0 || editList.empty()) {
    return mp4::WrapDiv(mp4::WrapMul(mediaBox->Seek(target), kSeekUnits), MediaTimescale());
  }
  editSum = {};
  const mp4::TrackEdits::Place at = Timeline().EditAt(target);
  editIndex = static_cast<std::int32_t>(at.edit);
  const std::int32_t start = editList[at.edit].mediaTime;
  const std::int64_t mediaTarget = mp4::WrapSub(mp4::WrapAdd(start, target), at.start);
  const std::int64_t reached = mediaBox->Seek(std::max<std::int64_t>(0, mediaTarget));
  const std::int64_t into = std::max<std::int64_t>(0, mp4::WrapSub(reached, start));
  return EditedSeekResult(mp4::WrapAdd(into, at.start));
}

/// With an edit list the time reached is multiplied by the timescale and divided by the seek units,
/// the reverse of what the conversion back would be. Hosts undo it themselves.
std::int64_t BoxTRAK::EditedSeekResult(std::int64_t mediaTime) const {
  return mp4::WrapDiv(mp4::WrapMul(mediaTime, MediaTimescale()), kSeekUnits);
}
