#include "boxes/track/BoxTKHD.h"

#include "boxes/base/BoxReading.h"
#include "boxes/base/Mp4Context.h"
#include "boxes/track/BoxTimes.h"
#include "io/Limits.h"
#include "io/ScanControl.h"

namespace {

constexpr long long kTrackHeaderPayload = 84;
constexpr long long kWideTrackHeaderPayload = 96;

bool IsFull(const Mp4Context* context) {
  return context->tracks.size() >= static_cast<std::size_t>(mp4::limits::kMostTracks);
}

/// The first record with that ID, as SetCurrentTrack, but without a search during an opening.
void MakeCurrent(Mp4Context* context, std::uint32_t id, mp4::ScanControl* scan) {
  std::int64_t first = -1;
  if (scan != nullptr) {
    mp4::WithoutThrowing([&] { first = scan->NoteTrack(id, context->tracks.size() - 1); });
  }
  if (first >= 0) {
    context->currentTrack = first;
  } else {
    context->SetCurrentTrack(static_cast<int>(id));
  }
}

}  // namespace

bool BoxTKHD::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size <= 0) return false;
  const mp4::FullBoxHeader header = mp4::ReadFullBoxHeader(reader);
  flags = header.flags;
  creationTime = mp4::ReadTime(reader, header.version);
  modificationTime = mp4::ReadTime(reader, header.version);
  trackId = reader->GetBe32();
  reader->Skip(4);  // reserved
  duration = mp4::ReadTime(reader, header.version);
  reader->Skip(8);  // reserved
  reader->Skip(4);  // layer, alternate group
  volume = reader->GetBe16();
  reader->Skip(2);   // reserved
  reader->Skip(36);  // matrix
  width = reader->GetBe32();
  height = reader->GetBe32();
  reader->Skip(size -
               (mp4::HasWideTimes(header.version) ? kWideTrackHeaderPayload : kTrackHeaderPayload));
  return context == nullptr || Publish(context, reader->Scan());
}

bool BoxTKHD::Publish(Mp4Context* context, mp4::ScanControl* scan) const {
  if (IsFull(context)) return false;
  Mp4Context::TRACK* track = context->AddTrack(static_cast<int>(trackId));
  if (track == nullptr) return false;
  // After a repeated ID an earlier record becomes current; this header's values go to the new one.
  MakeCurrent(context, trackId, scan);
  track->volume = volume;
  track->width = width;
  track->height = height;
  return true;
}
