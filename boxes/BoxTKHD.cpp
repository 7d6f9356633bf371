#include "boxes/BoxTKHD.h"

#include "boxes/BoxReading.h"
#include "boxes/BoxTimes.h"
#include "boxes/Mp4Context.h"
#include "io/Limits.h"

namespace {

constexpr long long kPayload = 84;
constexpr long long kWidePayload = 96;

bool IsFull(const Mp4Context* context) {
  return context->tracks.size() >= static_cast<std::size_t>(mp4::limits::kMostTracks);
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
  reader->Skip(size - (mp4::HasWideTimes(header.version) ? kWidePayload : kPayload));
  return context == nullptr || Publish(context);
}

bool BoxTKHD::Publish(Mp4Context* context) const {
  if (IsFull(context)) return false;
  Mp4Context::TRACK* track = context->AddTrack(static_cast<int>(trackId));
  if (track == nullptr) return false;
  // After a repeated ID an earlier record becomes current; this header's values go to the new one.
  context->SetCurrentTrack(static_cast<int>(trackId));
  track->volume = volume;
  track->width = width;
  track->height = height;
  return true;
}
