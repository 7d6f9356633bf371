#include "boxes/movie/BoxTREX.h"

#include "boxes/base/BoxReading.h"

bool BoxTREX::ReadData(mmStreamReader* reader, long long size, Mp4Context* /*context*/) {
  if (reader == nullptr || size < 0) return false;
  mp4::SkipFullBoxHeader(reader);
  unsigned char fields[20] = {};
  reader->GetData(fields, sizeof fields);
  track_ID = mp4::LoadBe32(fields);
  default_sample_description_index = mp4::LoadBe32(fields + 4);
  default_sample_duration = mp4::LoadBe32(fields + 8);
  default_sample_size = mp4::LoadBe32(fields + 12);
  default_sample_flags = mp4::LoadBe32(fields + 16);
  reader->Skip(size - 24);
  return true;
}
