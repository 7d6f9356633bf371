#include "boxes/track/BoxMDHD.h"

#include "boxes/base/FullBoxHeader.h"
#include "boxes/base/Mp4Context.h"
#include "boxes/track/BoxTimes.h"

namespace {

constexpr long long kMediaHeaderPayload = 24;
constexpr long long kWideMediaHeaderPayload = 36;

}  // namespace

bool BoxMDHD::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size <= 0) return false;
  const std::uint8_t version = mp4::ReadVersion(reader);
  creationTime = mp4::ReadTime(reader, version);
  modificationTime = mp4::ReadTime(reader, version);
  timescale = reader->GetBe32();
  duration = mp4::ReadTime(reader, version);
  language = static_cast<std::uint16_t>(reader->GetBe16());
  reader->Skip(2);  // quality
  reader->Skip(size - (mp4::HasWideTimes(version) ? kWideMediaHeaderPayload : kMediaHeaderPayload));
  Publish(context);
  return true;
}

void BoxMDHD::Publish(Mp4Context* context) const {
  Mp4Context::TRACK* track = mp4::CurrentTrack(context);
  if (track == nullptr) return;
  track->timescale = static_cast<std::int32_t>(timescale);
  track->duration = static_cast<std::int64_t>(duration);
  track->language = language;
}
