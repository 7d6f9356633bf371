#include "boxes/movie/BoxMVHD.h"

#include "boxes/base/FullBoxHeader.h"
#include "boxes/base/Mp4Context.h"
#include "boxes/track/BoxTimes.h"

namespace {

/// Bytes read of the payload, which depend on the width of the times.
constexpr long long kBytesRead32 = 20;
constexpr long long kBytesRead64 = 32;

}  // namespace

bool BoxMVHD::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size <= 0) return false;
  const std::uint8_t version = mp4::ReadVersion(reader);
  creationTime = mp4::ReadTime(reader, version);
  modificationTime = mp4::ReadTime(reader, version);
  timescale = reader->GetBe32();
  if (timescale == 0) timescale = 1;
  duration = mp4::ReadTime(reader, version);
  reader->Skip(size - (mp4::HasWideTimes(version) ? kBytesRead64 : kBytesRead32));
  if (context == nullptr) return true;
  context->SetTimescale(static_cast<int>(timescale));
  context->SetDuration(static_cast<long long>(duration));
  return true;
}
