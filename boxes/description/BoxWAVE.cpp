#include "boxes/description/BoxWAVE.h"

#include "boxes/base/BoxReading.h"
#include "boxes/description/SampleEntryReading.h"
#include "io/Charge.h"
#include "io/FourCC.h"

namespace {

using Track = Mp4Context::TRACK;

/// Reversed texts mark little-endian integer PCM.
void MarkLittleEndian(Track* track) {
  if (track->format == mp4::FourCC("in32")) {
    track->format = mp4::FourCC("23ni");
  } else if (track->format == mp4::FourCC("in24")) {
    track->format = mp4::FourCC("42ni");
  }
}

/// Without a track the reader ends one payload behind the atom. The host relies on the boxes that
/// are then not seen.
void PassOverTwice(mmStreamReader* reader, long long size) {
  reader->Skip(size);
  reader->Skip(size);
}

/// Steps through the atom 8 bytes at a time, whatever sizes its children state; in the QuickTime
/// format they lie one behind the other by their sizes. False when the opening's account refuses.
bool Walk(mmStreamReader* reader, long long size, Track* track) {
  long long consumed = 0;
  while (consumed + 8 < size && mp4::Remaining(reader) > 0) {
    if (!mp4::ChargeStep(reader)) return false;
    reader->GetBe32();  // child size
    const std::uint32_t type = reader->GetLe32();
    if (type == mp4::FourCC("enda")) {
      if (reader->GetBe16() != 0) MarkLittleEndian(track);
      reader->Skip(size - 10 - consumed);
      return true;
    }
    if (type == mp4::FourCC("frma")) {
      reader->Skip(4);
      consumed += 4;
    }
    consumed += 8;
  }
  reader->Skip(size - consumed);
  return true;
}

}  // namespace

bool BoxWAVE::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < 1 || context == nullptr) return false;
  Track* track = mp4::CurrentTrack(context);
  if (track == nullptr) {
    PassOverTwice(reader, size);
    return true;
  }
  if (track->format == mp4::FourCC("QDM2")) {
    reader->Skip(-8);
    return mp4::ReadExtraData(reader, mp4::WrapAdd(size, 8), track);
  }
  if (size > 8) return Walk(reader, size, track);
  reader->Skip(size);
  return true;
}
