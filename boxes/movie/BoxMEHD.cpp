#include "boxes/movie/BoxMEHD.h"

#include "boxes/base/BoxReading.h"

bool BoxMEHD::ReadData(mmStreamReader* reader, long long size, Mp4Context* /*context*/) {
  if (reader == nullptr || size < 0) return false;
  const mp4::FullBoxHeader header = mp4::ReadFullBoxHeader(reader);
  version = header.version;
  flags = header.flags;
  // ISO/IEC 14496-12 has the wide form for version 1 alone.
  const bool wide = version != 0;
  fragment_duration = wide ? reader->GetBe64() : reader->GetBe32();
  reader->Skip(size - (wide ? 12 : 8));
  return true;
}
