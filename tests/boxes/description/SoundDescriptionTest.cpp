#include <gtest/gtest.h>

#include "boxes/description/SoundDescription.h"
#include "io/FourCC.h"
#include "tests/SampleEntries.h"

using namespace fixture;

namespace {

mp4::SoundDescription ReadAll(const Bytes& bytes, long long* position = nullptr) {
  mmBufReader reader(bytes.data(), bytes.size());
  const mp4::SoundDescription sound = mp4::ReadSoundDescription(&reader);
  if (position != nullptr) *position = reader.GetPos();
  return sound;
}

}  // namespace

TEST(SoundDescription, Version0HasNoPackets) {
  long long position = 0;
  const auto sound = ReadAll(AudioFields("in32", 6, 16, 48000, 0, 0xFFFE).Fill(40, 9), &position);
  EXPECT_EQ(sound.format, mp4::FourCC("in32"));
  EXPECT_EQ(sound.channels, 6u);
  EXPECT_EQ(sound.sampleRate, 48000u);
  EXPECT_EQ(sound.bitsPerSample, 32u);
  EXPECT_EQ(sound.compressionId, -2);
  EXPECT_EQ(sound.samplesPerPacket, 0u);
  EXPECT_EQ(sound.bytesPerPacket, 0u);
  EXPECT_EQ(sound.bytesPerFrame, 0u);
  EXPECT_EQ(sound.headerSize, 32);
  EXPECT_EQ(position, 32);
}

TEST(SoundDescription, Version1HasPackets) {
  long long position = 0;
  const Bytes fields = AudioFields("mp4a", 2, 16, 44100, 1);
  const auto sound = ReadAll(Bytes(fields).Be32(1024).Be32(3).Be32(6).Fill(20, 9), &position);
  EXPECT_EQ(sound.samplesPerPacket, 1024u);
  EXPECT_EQ(sound.bytesPerPacket, 3u);
  EXPECT_EQ(sound.bytesPerFrame, 6u);
  EXPECT_EQ(sound.sampleRate, 44100u);
  EXPECT_EQ(sound.headerSize, 48);
  EXPECT_EQ(position, 48);
}

TEST(SoundDescription, Version2HasARateAndChannelsOfItsOwn) {
  long long position = 0;
  const Bytes fields = AudioFields("lpcm", 3, 16, 1, 2);
  // 48000 as an IEEE double.
  const auto sound =
      ReadAll(Bytes(fields).Be32(72).Be64(0x40E7700000000000).Be32(8).Fill(40, 9), &position);
  EXPECT_EQ(sound.sampleRate, 48000u);
  EXPECT_EQ(sound.channels, 8u);
  EXPECT_EQ(sound.headerSize, 68);
  EXPECT_EQ(position, 68);
}

TEST(SoundDescription, OtherVersionsReadLikeVersion0) {
  for (const unsigned version : {3u, 0x100u, 0x101u, 0xFFFFu}) {
    long long position = 0;
    const Bytes fields = AudioFields("mp4a", 2, 16, 44100, version);
    EXPECT_EQ(ReadAll(Bytes(fields).Fill(40, 9), &position).headerSize, 32) << version;
    EXPECT_EQ(position, 32) << version;
  }
}

TEST(SoundDescription, WhatIsNotThereReadsAsZero) {
  const auto sound = ReadAll(AudioFields("mp4a", 2, 16, 44100).Cut(18));
  EXPECT_EQ(sound.format, mp4::FourCC("mp4a"));
  EXPECT_EQ(sound.channels, 0u);
  EXPECT_EQ(sound.sampleRate, 0u);
  EXPECT_EQ(sound.headerSize, 32);
}
