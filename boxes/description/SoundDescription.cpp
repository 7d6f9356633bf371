#include "boxes/description/SoundDescription.h"

#include <algorithm>

#include "codecs/movaudiotags.h"
#include "io/FourCC.h"

namespace mp4 {

namespace {

// PCM codecs in the host's numbering.
constexpr int kPcmSigned8 = 31;
constexpr int kPcmUnsigned8 = 32;
constexpr int kPcmLittle16 = 10000;
constexpr int kPcmBig16 = 50000;
constexpr int kPcmBig24 = 50005;

constexpr std::uint32_t kSamr = FourCC("samr");

/// A PCM format names one sample size; the entry's own sample size tells which one is meant. The
/// record then has another format than the file, and hosts rely on it.
void SettleCodec(std::uint32_t sampleSize, SoundDescription* sound) {
  int id = codec_get_id(codec_movaudio_tags, sound->format);
  if ((id == kPcmSigned8 || id == kPcmUnsigned8) && sampleSize == 16) {
    id = kPcmBig16;
    sound->format = FourCC("twos");
  } else if ((id == kPcmLittle16 || id == kPcmBig16) && sampleSize == 8) {
    id = kPcmSigned8;
    sound->format = FourCC("sowt");
  } else if ((id == kPcmLittle16 || id == kPcmBig16) && sampleSize == 24) {
    id = kPcmBig24;
    sound->format = FourCC("in24");
  }
  const int bits = av_get_bits_per_sample(static_cast<CodecID>(id));
  sound->bitsPerSample = sound->format == kSamr ? 16 : static_cast<std::uint32_t>(bits);
}

/// Magnitude of an IEEE double rounded half up, in integers so that nothing rounds twice. Saturates
/// at 2^32 - 1; infinity and NaN give 0.
std::uint32_t RoundedMagnitude(std::uint64_t bits) {
  constexpr int kBias = 1023;
  constexpr int kFractionBits = 52;
  const int exponent = static_cast<int>(bits >> kFractionBits & 0x7FF);
  if (exponent == 0x7FF || exponent < kBias - 1) return 0;
  if (exponent >= kBias + 32) return UINT32_MAX;
  constexpr std::uint64_t kOne = std::uint64_t{1} << kFractionBits;
  const std::uint64_t significand = (bits & (kOne - 1)) | kOne;
  const int shift = kBias + kFractionBits - exponent;
  const std::uint64_t rounded = (significand + (std::uint64_t{1} << (shift - 1))) >> shift;
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(rounded, UINT32_MAX));
}

/// As QuickTime has it. AudioSampleEntryV1 of ISO/IEC 14496-12 has none of these fields.
void ReadVersion1(mmStreamReader* reader, SoundDescription* sound) {
  sound->samplesPerPacket = reader->GetBe32();
  sound->bytesPerPacket = reader->GetBe32();
  sound->bytesPerFrame = reader->GetBe32();
  reader->Skip(4);  // bytes per sample
  sound->headerSize = 48;
}

void ReadVersion2(mmStreamReader* reader, SoundDescription* sound) {
  reader->Skip(4);  // size of the fixed part
  sound->sampleRate = RoundedMagnitude(reader->GetBe64());
  sound->channels = reader->GetBe32();
  reader->Skip(20);  // constant, bits per channel, flags, packet sizes
  sound->headerSize = 68;
}

}  // namespace

SoundDescription ReadSoundDescription(mmStreamReader* reader) {
  SoundDescription sound;
  sound.format = reader->GetLe32();
  reader->Skip(8);  // reserved, data reference index
  const unsigned int version = reader->GetBe16();
  reader->Skip(6);  // revision, vendor
  sound.channels = reader->GetBe16();
  SettleCodec(reader->GetBe16(), &sound);
  sound.compressionId = static_cast<std::int16_t>(reader->GetBe16());
  reader->GetBe16();  // packet size
  sound.sampleRate = reader->GetBe32() >> 16;
  // AMR narrow band has no other form, whatever the entry says.
  if (sound.format == kSamr) {
    sound.sampleRate = 8000;
    sound.channels = 1;
  }
  if (version == 1) ReadVersion1(reader, &sound);
  if (version == 2) ReadVersion2(reader, &sound);
  return sound;
}

}  // namespace mp4
