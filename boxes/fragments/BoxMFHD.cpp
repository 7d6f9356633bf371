#include "boxes/fragments/BoxMFHD.h"

#include "boxes/base/BoxReading.h"

bool BoxMFHD::ReadData(mmStreamReader* reader, long long size, Mp4Context* /*context*/) {
  if (reader == nullptr || size < 0) return false;
  mp4::SkipFullBoxHeader(reader);
  sequence_number = reader->GetBe32();
  reader->Skip(size - 8);
  return true;
}
