#include "boxes/description/BoxESDS.h"

#include "boxes/base/BoxReading.h"
#include "boxes/description/SampleEntryReading.h"
#include "codecs/movaudiotags.h"
#include "io/FourCC.h"

namespace {

using Track = Mp4Context::TRACK;

// Descriptor tags of ISO/IEC 14496-1.
constexpr unsigned int kElementaryStream = 3;
constexpr unsigned int kDecoderConfig = 4;
constexpr unsigned int kDecoderSpecificInfo = 5;

// Codecs in the host's numbering.
constexpr int kMpeg1Video = 1;
constexpr int kMp3 = 5;
constexpr int kMpeg2Video = 49;

struct Descriptor {
  unsigned int tag;
  long long length;
};

/// Reads a tag and its length of 1 to 4 bytes, 7 bits each, the most significant first.
Descriptor ReadDescriptor(mmStreamReader* reader, long long* consumed) {
  Descriptor descriptor{reader->GetByte(), 0};
  ++*consumed;
  for (int i = 0; i < 4; ++i) {
    const unsigned int byte = reader->GetByte();
    ++*consumed;
    descriptor.length = descriptor.length << 7 | (byte & 0x7F);
    if ((byte & 0x80) == 0) break;
  }
  return descriptor;
}

void Pass(mmStreamReader* reader, long long n, long long* consumed) {
  reader->Skip(n);
  *consumed += n;
}

/// A protected or MPEG-4 format hides what these streams really are. The host relies on it: an MP3
/// track is not judged protected. In ISO/IEC 14496-12 the type of the entry stands, whatever the
/// object type.
void PublishFormat(unsigned int objectType, Track* track) {
  if (track == nullptr) return;
  switch (static_cast<int>(codec_get_id(ff_mp4_obj_type, objectType))) {
    case kMpeg1Video:
      track->format = mp4::FourCC("MP1V");
      break;
    case kMp3:
      track->format = mp4::FourCC("MP3 ");
      break;
    case kMpeg2Video:
      track->format = mp4::FourCC("MP2V");
      break;
    default:
      break;
  }
}

/// False when memory or the account refuses.
bool ReadDecoderConfig(mmStreamReader* reader, Track* track, long long* consumed) {
  PublishFormat(reader->GetByte(), track);
  reader->GetByte();  // stream type
  reader->GetBe24();  // buffer size
  reader->GetBe32();  // maximum bit rate
  reader->GetBe32();  // average bit rate
  *consumed += 13;
  const Descriptor info = ReadDescriptor(reader, consumed);
  if (info.tag != kDecoderSpecificInfo) return true;
  bool stored = true;
  if (track != nullptr) {
    stored = mp4::ReadExtraData(reader, info.length, track);
    *consumed += info.length;
  }
  Pass(reader, 3, consumed);  // the sync layer's descriptor in its common form
  return stored;
}

}  // namespace

bool BoxESDS::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size <= 0) return false;
  long long consumed = 4;
  mp4::SkipFullBoxHeader(reader);
  const Descriptor outer = ReadDescriptor(reader, &consumed);
  Pass(reader, 2, &consumed);  // ES ID
  // The optional fields that the stream flags announce (ISO/IEC 14496-1: dependsOn_ES_ID, URL,
  // OCR_ES_Id) are not passed over: hosts see such streams without a configuration.
  if (outer.tag == kElementaryStream) Pass(reader, 1, &consumed);
  bool read = true;
  if (ReadDescriptor(reader, &consumed).tag == kDecoderConfig) {
    read = ReadDecoderConfig(reader, mp4::CurrentTrack(context), &consumed);
  }
  reader->Skip(mp4::WrapSub(size, consumed));
  return read;
}
