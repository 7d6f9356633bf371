#include <algorithm>
#include <bit>

#include "inspect/FieldReader.h"

namespace mp4 {

namespace {

/// Bytes in front of the child boxes tell the kinds of entries apart.
constexpr std::uint64_t kVisualEntry = 78;
constexpr std::uint64_t kAudioEntry = 28;
constexpr std::uint64_t kSoundVersion1 = 44;
constexpr std::uint64_t kSoundVersion2 = 64;

void Visual(FieldReader* f) {
  f->Skip(16);
  f->U16("width");
  f->U16("height");
  f->Fixed32("horizontalResolution");
  f->Fixed32("verticalResolution");
  f->Skip(4);
  f->U16("frameCount");
  const std::size_t n = std::min<std::size_t>(f->View()->U8(), 31);
  const unsigned char* name = f->View()->Bytes(31);
  if (name != nullptr && n > 0) {
    f->Show("compressorName", std::string(reinterpret_cast<const char*>(name), n));
  }
  f->U16("depth");
}

/// QuickTime's second version says everything again, in wider fields.
void SoundVersion2(FieldReader* f) {
  f->Skip(16);
  f->Show("sampleRate", std::bit_cast<double>(f->View()->U64()));
  f->U32("channelCount");
  f->Skip(4);
  f->U32("sampleSize");
  f->U32("formatFlags");
  f->U32("bytesPerPacket");
  f->U32("framesPerPacket");
}

void Audio(FieldReader* f) {
  const std::uint16_t version = f->U16("soundVersion");
  f->Skip(6);
  if (version == 2) return SoundVersion2(f);
  f->U16("channelCount");
  f->U16("sampleSize");
  f->Skip(4);
  f->Show("sampleRate", f->View()->U32() / 65536.0);
  if (f->Tree()->FixedBytes(f->Id()) != kSoundVersion1) return;
  f->U32("samplesPerPacket");
  f->U32("bytesPerPacket");
  f->U32("bytesPerFrame");
  f->U32("bytesPerSample");
}

}  // namespace

void SampleEntryFields(FieldReader* f) {
  // Finding the layout reads other boxes, and may move the bytes that were in hand.
  const std::uint64_t fixed = f->Tree()->FixedBytes(f->Id());
  *f->View() = f->Tree()->Payload(f->Id());
  f->Skip(6);
  f->U16("dataReferenceIndex");
  if (fixed == kVisualEntry) {
    Visual(f);
  } else if (fixed == kAudioEntry || fixed == kSoundVersion1 || fixed == kSoundVersion2) {
    Audio(f);
  }
}

}  // namespace mp4
