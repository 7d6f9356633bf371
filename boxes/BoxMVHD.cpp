#include "boxes/BoxMVHD.h"

#include "boxes/Mp4Context.h"

namespace {

/// Bytes read of the payload, which depend on the width of the times.
constexpr long long kBytesRead32 = 20;
constexpr long long kBytesRead64 = 32;

std::uint64_t ReadTime(mmStreamReader* reader, bool wide) {
  return wide ? reader->GetBe64() : reader->GetBe32();
}

}  // namespace

bool BoxMVHD::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size <= 0) return false;
  const bool wide = reader->GetByte() == 1;
  reader->Skip(3);  // flags
  creationTime = ReadTime(reader, wide);
  modificationTime = ReadTime(reader, wide);
  timescale = reader->GetBe32();
  if (timescale == 0) timescale = 1;
  duration = ReadTime(reader, wide);
  reader->Skip(size - (wide ? kBytesRead64 : kBytesRead32));
  if (context == nullptr) return true;
  context->SetTimescale(static_cast<int>(timescale));
  context->SetDuration(static_cast<long long>(duration));
  return true;
}
