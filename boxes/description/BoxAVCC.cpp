#include "boxes/description/BoxAVCC.h"

#include "boxes/description/SampleEntryReading.h"

bool BoxAVCC::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < 0) return false;
  bool stored = true;
  if (Mp4Context::TRACK* track = mp4::CurrentTrack(context)) {
    const long long start = reader->GetPos();
    stored = mp4::ReadExtraData(reader, size, track);
    reader->SetPos(start);
  }
  reader->GetBe32();  // version, profile, compatibility, level
  reader->Skip(size - 4);
  return stored;
}
