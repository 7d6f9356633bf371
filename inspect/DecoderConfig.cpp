#include "inspect/DecoderConfig.h"

#include <iterator>

#include "iso/Descriptor.h"

namespace mp4 {

namespace {

constexpr std::uint8_t kTagDecoderConfig = 4;
constexpr std::uint8_t kTagDecoderSpecific = 5;
constexpr std::uint8_t kMpeg4Visual = 0x20;
constexpr std::uint8_t kMpeg4Audio = 0x40;

/// Bits of a descriptor, high ones first; zeros past the end.
class BitView {
 public:
  explicit BitView(FieldView bytes) : bytes_(bytes) {}

  std::uint32_t Take(int n) {
    std::uint32_t value = 0;
    for (; n > 0; --n) {
      if (held_ == 0) {
        byte_ = bytes_.U8();
        held_ = 8;
      }
      --held_;
      value = value << 1 | (byte_ >> held_ & 1U);
    }
    return value;
  }
  bool Ok() const { return bytes_.Ok(); }

 private:
  FieldView bytes_;
  unsigned byte_ = 0;
  int held_ = 0;
};

unsigned TakeObjectType(BitView* bits) {
  const unsigned type = bits->Take(5);
  return type == 31 ? 32 + bits->Take(6) : type;
}

std::uint32_t TakeRate(BitView* bits) {
  static constexpr std::uint32_t kRates[] = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                             22050, 16000, 12000, 11025, 8000,  7350};
  const std::uint32_t index = bits->Take(4);
  if (index == 15) return bits->Take(24);
  return index < std::size(kRates) ? kRates[index] : 0;
}

/// Spectral band replication and parametric stereo name the core codec behind their own rate.
void ReadAudio(FieldView fields, DecoderConfig* config) {
  BitView bits(fields);
  const unsigned object = TakeObjectType(&bits);
  std::uint32_t rate = TakeRate(&bits);
  const unsigned channels = bits.Take(4);
  constexpr unsigned kSpectralBandReplication = 5, kParametricStereo = 29;
  const bool extended = object == kSpectralBandReplication || object == kParametricStereo;
  if (extended) rate = TakeRate(&bits);
  if (!bits.Ok()) return;
  config->audioObject = object;
  config->sampleRate = rate;
  config->channels = object == kParametricStereo ? 2 : channels == 7 ? 8 : channels;
}

/// The visual object sequence begins with its start code and the profile.
void ReadVisual(FieldView fields, DecoderConfig* config) {
  constexpr std::uint32_t kSequenceStart = 0x1B0;
  if (fields.U32() == kSequenceStart) config->visualProfile = fields.U8();
}

void ReadDecoder(FieldView fields, DecoderConfig* config) {
  config->found = true;
  config->objectType = fields.U8();
  config->streamType = fields.U8() >> 2;
  config->bufferSize = fields.U24();
  config->maximumBitrate = fields.U32();
  config->averageBitrate = fields.U32();
  Descriptor specific;
  while (ReadDescriptor(&fields, &specific)) {
    if (specific.tag != kTagDecoderSpecific) continue;
    if (config->objectType == kMpeg4Audio) ReadAudio(specific.payload, config);
    if (config->objectType == kMpeg4Visual) ReadVisual(specific.payload, config);
  }
}

}  // namespace

DecoderConfig ReadDecoderConfig(FieldView fields) {
  DecoderConfig config;
  Descriptor stream;
  if (!ReadDescriptor(&fields, &stream) || stream.tag != kTagEs) return config;
  FieldView inner = stream.payload;
  inner.Skip(2);
  const unsigned flags = inner.U8();
  if ((flags & 0x80) != 0) inner.Skip(2);
  if ((flags & 0x40) != 0) inner.Skip(inner.U8());
  if ((flags & 0x20) != 0) inner.Skip(2);
  Descriptor decoder;
  while (ReadDescriptor(&inner, &decoder)) {
    if (decoder.tag != kTagDecoderConfig) continue;
    ReadDecoder(decoder.payload, &config);
    break;
  }
  return config;
}

}  // namespace mp4
