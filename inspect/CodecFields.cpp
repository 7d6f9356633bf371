#include <algorithm>
#include <cstdio>

#include "inspect/CodecNames.h"
#include "inspect/DecoderConfig.h"
#include "inspect/FieldReader.h"
#include "io/FourCC.h"

namespace mp4 {

namespace {

using Count = std::uint64_t;

/// The last part of the "codecs" parameter (RFC 6381) is shown as `codecsParameter`, without the
/// format in front of it.
template <typename... Numbers>
std::string Printed(const char* format, Numbers... numbers) {
  char text[64];
  std::snprintf(text, sizeof text, format, numbers...);
  return text;
}

void AvcConfiguration(FieldReader* f) {
  f->U8("configurationVersion");
  const std::uint8_t profile = f->U8("profileIndication");
  const std::uint8_t constraints = f->U8("profileCompatibility");
  const std::uint8_t level = f->U8("levelIndication");
  f->Show("profile", AvcProfile(profile, constraints));
  f->Show("level", AvcLevel(level, constraints));
  f->Show("codecsParameter", Printed("%02X%02X%02X", profile, constraints, level));
  f->Show("nalLengthSize", Count{f->View()->U8() & 3U} + 1);
  const unsigned sequences = f->View()->U8() & 31U;
  f->Show("sequenceParameterSets", Count{sequences});
  for (unsigned i = 0; i < sequences; ++i) f->Skip(f->View()->U16());
  const unsigned pictures = f->U8("pictureParameterSets");
  for (unsigned i = 0; i < pictures; ++i) f->Skip(f->View()->U16());
  // Files from before these fields existed end here.
  const bool high = profile == 100 || profile == 110 || profile == 122 || profile == 144;
  if (!high || f->View()->Left() < 4) return;
  f->Show("chromaFormat", std::string(ChromaName(f->View()->U8() & 3U)));
  f->Show("bitDepthLuma", Count{f->View()->U8() & 7U} + 8);
  f->Show("bitDepthChroma", Count{f->View()->U8() & 7U} + 8);
}

/// Compatibility flags in reverse order of bits, and constraints without the zero bytes at the end.
std::string HevcParameter(unsigned head, std::uint32_t compatibility, std::uint64_t constraints,
                          unsigned level) {
  std::uint32_t reversed = 0;
  for (int i = 0; i < 32; ++i) reversed |= (compatibility >> i & 1U) << (31 - i);
  const unsigned space = head >> 6;
  std::string text;
  if (space > 0) text.push_back(static_cast<char>('A' + space - 1));
  text += Printed("%u.%X.%c%u", head & 31U, reversed, (head & 0x20) != 0 ? 'H' : 'L', level);
  for (int shift = 40; shift >= 0 && (constraints << (40 - shift) & 0xFFFFFFFFFFFF) != 0;
       shift -= 8) {
    text += Printed(".%X", static_cast<unsigned>(constraints >> shift & 0xFF));
  }
  return text;
}

void HevcConfiguration(FieldReader* f) {
  f->U8("configurationVersion");
  const unsigned head = f->View()->U8();
  const std::uint32_t compatibility = f->View()->U32();
  const std::uint64_t upper = f->View()->U32();
  const std::uint64_t constraints = upper << 16 | f->View()->U16();
  const unsigned level = f->View()->U8();
  f->Show("profile", HevcProfile(static_cast<std::uint8_t>(head & 31)));
  f->Show("tier", std::string((head & 0x20) != 0 ? "High" : "Main"));
  // Levels count in thirtieths.
  f->Show("level", level % 30 == 0 ? Printed("%u", level / 30)
                                   : Printed("%u.%u", level / 30, level % 30 / 3));
  f->Show("codecsParameter", HevcParameter(head, compatibility, constraints, level));
  f->Skip(3);
  f->Show("chromaFormat", std::string(ChromaName(f->View()->U8() & 3U)));
  f->Show("bitDepthLuma", Count{f->View()->U8() & 7U} + 8);
  f->Show("bitDepthChroma", Count{f->View()->U8() & 7U} + 8);
  f->Show("averageFrameRate", f->View()->U16() / 256.0);
  f->Show("nalLengthSize", Count{f->View()->U8() & 3U} + 1);
  f->U8("arrays");
}

void VvcConfiguration(FieldReader* f) {
  f->Full();
  const unsigned head = f->View()->U8();
  f->Show("nalLengthSize", Count{head >> 1 & 3U} + 1);
  if ((head & 1) == 0) return;
  const unsigned layers = f->View()->U16();
  f->Show("chromaFormat", std::string(ChromaName(layers & 3U)));
  f->Show("bitDepth", Count{unsigned{f->View()->U8()} >> 5} + 8);
  f->Skip(1);
  const unsigned profile = f->View()->U8();
  f->Show("profile", "profile " + std::to_string(profile >> 1));
  f->Show("tier", std::string((profile & 1) != 0 ? "High" : "Main"));
  const unsigned level = f->View()->U8();
  f->Show("level", Printed("%u.%u", level / 16, level % 16 / 3));
}

void Av1Configuration(FieldReader* f) {
  f->Skip(1);
  const unsigned head = f->View()->U8();
  const unsigned bits = f->View()->U8();
  const auto profile = static_cast<std::uint8_t>(head >> 5);
  const auto level = static_cast<std::uint8_t>(head & 31);
  const bool highTier = (bits & 0x80) != 0;
  const unsigned depth = (bits & 0x40) == 0 ? 8 : profile == 2 && (bits & 0x20) != 0 ? 12 : 10;
  const bool halfWidth = (bits & 8) != 0, halfHeight = (bits & 4) != 0;
  f->Show("profile", Av1Profile(profile));
  f->Show("level", Av1Level(level));
  f->Show("tier", std::string(highTier ? "High" : "Main"));
  f->Show("codecsParameter", Printed("%u.%02u%c.%02u", static_cast<unsigned>(profile),
                                     static_cast<unsigned>(level), highTier ? 'H' : 'M', depth));
  f->Show("bitDepth", Count{depth});
  const unsigned chroma = (bits & 0x10) != 0 ? 0 : !halfWidth ? 3 : halfHeight ? 1 : 2;
  f->Show("chromaFormat", std::string(ChromaName(chroma)));
}

void VpConfiguration(FieldReader* f) {
  f->Full();
  const unsigned profile = f->View()->U8();
  const unsigned level = f->View()->U8();
  const unsigned bits = f->View()->U8();
  f->Show("profile", "Profile " + std::to_string(profile));
  f->Show("level", Printed("%u.%u", level / 10, level % 10));
  f->Show("codecsParameter", Printed("%02u.%02u.%02u", profile, level, bits >> 4));
  f->Show("bitDepth", Count{bits >> 4});
  static constexpr const char* kChroma[] = {"4:2:0", "4:2:0", "4:2:2", "4:4:4"};
  const unsigned chroma = bits >> 1 & 7;
  f->Show("chromaFormat", std::string(chroma < 4 ? kChroma[chroma] : "unknown"));
  f->Show("fullRange", (bits & 1) != 0);
  f->U8("colourPrimaries");
  f->U8("transferCharacteristics");
  f->U8("matrixCoefficients");
}

void OpusConfiguration(FieldReader* f) {
  f->U8("configurationVersion");
  f->U8("channelCount");
  f->U16("preSkip");
  f->U32("inputSampleRate");
  f->S16("outputGain");
  f->U8("channelMappingFamily");
}

/// A full box with FLAC's metadata blocks, the first of which is its stream information.
void FlacConfiguration(FieldReader* f) {
  f->Full();
  f->Skip(4);
  f->U16("minimumBlockSize");
  f->U16("maximumBlockSize");
  f->Skip(6);
  const std::uint64_t bits = f->View()->U64();
  f->Show("sampleRate", bits >> 44);
  f->Show("channelCount", (bits >> 41 & 7) + 1);
  f->Show("sampleSize", (bits >> 36 & 31) + 1);
  f->Show("sampleCount", bits & 0xFFFFFFFFF);
}

/// The cookie below the entry "alac", itself a box of that type.
void LosslessConfiguration(FieldReader* f) {
  f->Full();
  f->U32("frameLength");
  f->Skip(1);
  f->U8("sampleSize");
  f->Skip(3);
  f->U8("channelCount");
  f->Skip(2);
  f->U32("maximumFrameSize");
  f->U32("averageBitrate");
  f->U32("sampleRate");
}

void ShowAc3Channels(FieldReader* f, unsigned mode, bool lfe) {
  static constexpr unsigned kChannels[] = {2, 1, 2, 3, 3, 4, 4, 5};
  f->Show("channelCount", Count{kChannels[mode]} + (lfe ? 1 : 0));
  f->Show("lowFrequencyChannel", lfe);
}

void ShowAc3Rate(FieldReader* f, unsigned code) {
  static constexpr unsigned kRates[] = {48000, 44100, 32000};
  if (code < 3) f->Show("sampleRate", Count{kRates[code]});
}

void Ac3Configuration(FieldReader* f) {
  static constexpr unsigned kKilobits[] = {32,  40,  48,  56,  64,  80,  96,  112, 128, 160,
                                           192, 224, 256, 320, 384, 448, 512, 576, 640};
  const std::uint32_t bits = f->View()->U24();
  ShowAc3Rate(f, bits >> 22);
  ShowAc3Channels(f, bits >> 11 & 7, (bits >> 10 & 1) != 0);
  const unsigned code = bits >> 5 & 31;
  if (code < std::size(kKilobits)) f->Show("averageBitrate", Count{kKilobits[code]} * 1000);
}

void EnhancedAc3Configuration(FieldReader* f) {
  const std::uint16_t head = f->View()->U16();
  f->Show("averageBitrate", Count{static_cast<unsigned>(head >> 3)} * 1000);
  const std::uint32_t bits = f->View()->U24();
  ShowAc3Rate(f, bits >> 22);
  ShowAc3Channels(f, bits >> 9 & 7, (bits >> 8 & 1) != 0);
}

void DolbyVisionConfiguration(FieldReader* f) {
  const unsigned major = f->View()->U8();
  const unsigned minor = f->View()->U8();
  const unsigned bits = f->View()->U16();
  f->Show("configurationVersion", Printed("%u.%u", major, minor));
  f->Show("profile", Printed("%u", bits >> 9));
  f->Show("level", Printed("%02u", bits >> 3 & 63));
}

void AmrConfiguration(FieldReader* f) {
  f->Type("vendor");
  f->U8("decoderVersion");
  f->U16("modeSet");
  f->U8("modeChangePeriod");
  f->U8("framesPerSample");
}

void H263Configuration(FieldReader* f) {
  f->Type("vendor");
  f->U8("decoderVersion");
  f->U8("levelIndication");
  f->U8("profileIndication");
}

void BitRate(FieldReader* f) {
  f->U32("bufferSize");
  f->U32("maximumBitrate");
  f->U32("averageBitrate");
}

void PixelAspect(FieldReader* f) {
  f->U32("horizontalSpacing");
  f->U32("verticalSpacing");
}

void Colour(FieldReader* f) {
  f->Type("colourType");
  const std::size_t left = f->View()->Left();
  // "nclx" and QuickTime's "nclc" have numbers, the others a profile.
  if (left != 6 && left != 7) {
    f->RestHex("profile");
    return;
  }
  f->U16("colourPrimaries");
  f->U16("transferCharacteristics");
  f->U16("matrixCoefficients");
  if (left == 7) f->Show("fullRange", f->View()->U8() >> 7 != 0);
}

void CleanAperture(FieldReader* f) {
  for (const char* name : {"width", "height", "horizontalOffset", "verticalOffset"}) {
    const std::string over = std::to_string(f->View()->S32());
    f->Show(name, over + "/" + std::to_string(f->View()->U32()));
  }
}

void LightLevel(FieldReader* f) {
  f->U16("maximumContentLightLevel");
  f->U16("maximumAverageLightLevel");
}

void ElementaryStream(FieldReader* f) {
  f->Full();
  const DecoderConfig config = ReadDecoderConfig(*f->View());
  if (!config.found) return;
  f->Show("objectType", ObjectTypeName(config.objectType));
  f->Show("objectTypeIndication", Count{config.objectType});
  f->Show("streamType", Count{config.streamType});
  f->Show("bufferSize", Count{config.bufferSize});
  f->Show("maximumBitrate", Count{config.maximumBitrate});
  f->Show("averageBitrate", Count{config.averageBitrate});
  if (config.audioObject != 0) {
    f->Show("profile", AudioObjectName(config.audioObject));
    f->Show("codecsParameter", Printed("40.%u", config.audioObject));
    f->Show("sampleRate", Count{config.sampleRate});
    f->Show("channelCount", Count{config.channels});
  } else if (config.visualProfile != 0) {
    f->Show("profile", Mpeg4VisualProfile(config.visualProfile));
    f->Show("codecsParameter", Printed("20.%u", config.visualProfile));
  } else {
    f->Show("codecsParameter", Printed("%X", static_cast<unsigned>(config.objectType)));
  }
}

constexpr FieldParserRow kCodecParsers[] = {
    {FourCC("avcC"), AvcConfiguration},
    {FourCC("hvcC"), HevcConfiguration},
    {FourCC("vvcC"), VvcConfiguration},
    {FourCC("av1C"), Av1Configuration},
    {FourCC("vpcC"), VpConfiguration},
    {FourCC("esds"), ElementaryStream},
    {FourCC("dOps"), OpusConfiguration},
    {FourCC("dfLa"), FlacConfiguration},
    {FourCC("alac"), LosslessConfiguration},
    {FourCC("dac3"), Ac3Configuration},
    {FourCC("dec3"), EnhancedAc3Configuration},
    {FourCC("dvcC"), DolbyVisionConfiguration},
    {FourCC("dvvC"), DolbyVisionConfiguration},
    {FourCC("damr"), AmrConfiguration},
    {FourCC("d263"), H263Configuration},
    {FourCC("btrt"), BitRate},
    {FourCC("pasp"), PixelAspect},
    {FourCC("colr"), Colour},
    {FourCC("clap"), CleanAperture},
    {FourCC("clli"), LightLevel},
};

}  // namespace

FieldParser CodecFieldParser(std::uint32_t type) { return FindParser(kCodecParsers, type); }

}  // namespace mp4
