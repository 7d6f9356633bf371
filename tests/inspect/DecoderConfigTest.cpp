#include <gtest/gtest.h>

#include "inspect/DecoderConfig.h"
#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;

constexpr unsigned kVisual = 0x20, kAudio = 0x40;

/// A decoder's configuration with specific information behind it.
Bytes Decoder(unsigned objectType, const Bytes& specific) {
  return p::Descriptor(4, Bytes{}
                              .Byte(objectType)
                              .Byte(5 << 2 | 1)
                              .Be24(0x010203)
                              .Be32(256000)
                              .Be32(128000)
                              .Append(p::Descriptor(5, specific)));
}
/// A stream with these flags and what follows them.
Bytes Stream(unsigned flags, const Bytes& rest) {
  return p::Descriptor(3, Bytes().Be16(1).Byte(flags).Append(rest));
}

mp4::DecoderConfig Read(const Bytes& bytes) {
  return mp4::ReadDecoderConfig({bytes.data(), bytes.size()});
}
mp4::DecoderConfig ReadAudio(const Bytes& specific) {
  return Read(Stream(0, Decoder(kAudio, specific)));
}

void ExpectAudio(const mp4::DecoderConfig& config, unsigned object, std::uint32_t rate,
                 unsigned channels) {
  EXPECT_EQ(object, config.audioObject);
  EXPECT_EQ(rate, config.sampleRate);
  EXPECT_EQ(channels, config.channels);
}

}  // namespace

TEST(DecoderConfig, HasTheFieldsOfItsDescriptor) {
  const mp4::DecoderConfig config = Read(Stream(0, Decoder(0x6B, {})));
  EXPECT_TRUE(config.found);
  EXPECT_EQ(0x6B, config.objectType);
  EXPECT_EQ(5, config.streamType);
  EXPECT_EQ(0x010203U, config.bufferSize);
  EXPECT_EQ(256000U, config.maximumBitrate);
  EXPECT_EQ(128000U, config.averageBitrate);
  ExpectAudio(config, 0, 0, 0);
}

TEST(DecoderConfig, StandsBehindWhatTheStreamsFlagsAnnounce) {
  const Bytes decoder = Decoder(0x6B, {});
  const Bytes url = Bytes{3}.Text("a:b");
  EXPECT_TRUE(Read(Stream(0x80, Bytes().Be16(9) + decoder)).found);
  EXPECT_TRUE(Read(Stream(0x40, url + decoder)).found);
  EXPECT_TRUE(Read(Stream(0x20, Bytes().Be16(9) + decoder)).found);
  EXPECT_TRUE(Read(Stream(0xE0, Bytes().Be16(9) + url + Bytes().Be16(9) + decoder)).found);
  EXPECT_FALSE(Read(Stream(0x80, decoder)).found) << "its first bytes are no descriptor";
}

TEST(DecoderConfig, IsNotFoundWithoutItsDescriptors) {
  EXPECT_FALSE(Read({}).found);
  EXPECT_FALSE(Read(Decoder(0x6B, {})).found) << "not in a stream";
  EXPECT_FALSE(Read(Stream(0, {})).found);
  EXPECT_FALSE(Read(Stream(0, p::Descriptor(6, {2}))).found) << "another descriptor alone";
}

TEST(DecoderConfig, IsTheFirstOfSeveral) {
  const mp4::DecoderConfig config =
      Read(Stream(0, p::Descriptor(6, {2}) + Decoder(0x6B, {}) + Decoder(0x69, {})));
  EXPECT_EQ(0x6B, config.objectType);
}

// 00010 0100 0010 000: AAC LC, index 4, two channels.
TEST(DecoderConfig, OfAudioHasObjectRateAndChannels) {
  ExpectAudio(ReadAudio({0x12, 0x10}), 2, 44100, 2);
}

// 00101 0111 0010 0100 00010...: band replication over 22,050 Hz gives 44,100 Hz.
TEST(DecoderConfig, OfExtendedAudioHasTheRateThatIsHeard) {
  ExpectAudio(ReadAudio({0x2B, 0x92, 0x08}), 5, 44100, 2);
}

// 11101 0111 0001 0100...: parametric stereo makes two channels of one.
TEST(DecoderConfig, OfParametricStereoHasTwoChannels) {
  ExpectAudio(ReadAudio({0xEB, 0x8A, 0x00}), 29, 44100, 2);
}

// 11111 000111 1111, 44,100 in 24 bits, 0111.
TEST(DecoderConfig, OfAudioMayEscapeObjectAndRate) {
  ExpectAudio(ReadAudio({0xF8, 0xFE, 0x01, 0x58, 0x88, 0xE0}), 39, 44100, 8);
}

// 00010 1101 0001 000: no rate has index 13.
TEST(DecoderConfig, OfAReservedRateHasNone) { ExpectAudio(ReadAudio({0x16, 0x88}), 2, 0, 1); }

TEST(DecoderConfig, OfAudioThatIsCutHasNothing) { ExpectAudio(ReadAudio({0x12}), 0, 0, 0); }

TEST(DecoderConfig, OfVideoHasTheProfileBehindTheStartCode) {
  const auto read = [](const Bytes& specific) {
    return Read(Stream(0, Decoder(kVisual, specific))).visualProfile;
  };
  EXPECT_EQ(0xF5, read({0, 0, 1, 0xB0, 0xF5}));
  EXPECT_EQ(0, read({0, 0, 1, 0xB1, 0xF5}));
  EXPECT_EQ(0, read({0, 0, 1}));
  EXPECT_EQ(0, Read(Stream(0, Decoder(kAudio, {0, 0, 1, 0xB0, 0xF5}))).visualProfile);
}
