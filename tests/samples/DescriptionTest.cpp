#include <gtest/gtest.h>

#include "io/FourCC.h"
#include "samples/Description.h"

namespace {

using mp4::Description;
using mp4::FourCC;
using mp4::Packing;
using mp4::PackingOf;

/// A sound description of QuickTime.
Description Sound(std::uint32_t format, std::uint16_t version = 0) {
  Description d;
  d.format = format;
  d.soundVersion = version;
  d.channels = 2;
  d.bits = 16;
  return d;
}

void ExpectPacking(const Packing& packing, std::uint32_t frames, std::uint32_t bytes) {
  EXPECT_EQ(packing.frames, frames);
  EXPECT_EQ(packing.bytes, bytes);
}

TEST(Description, PacketsOfVersionOneAreAsLongAsItsFieldsSay) {
  Description d = Sound(FourCC("QDM2"), 1);
  d.framesPerPacket = 2048;
  d.bytesPerPacket = 370;
  ExpectPacking(PackingOf(d, 1), 2048, 370);
}

TEST(Description, CompressionOfMinusTwoSaysThatTheTablesCountPackets) {
  Description d = Sound(FourCC("mp4a"), 1);
  d.framesPerPacket = 1024;
  d.bytesPerPacket = 300;
  d.compression = -2;
  ExpectPacking(PackingOf(d, 1), 1, 0);
}

TEST(Description, FieldsOfVersionTwoCountWhateverTheCompression) {
  Description d = Sound(FourCC("lpcm"), 2);
  d.compression = -2;
  ExpectPacking(PackingOf(d, 1), 1, 0);  // neither is told
  d.framesPerPacket = 1;
  d.bytesPerPacket = 6;
  ExpectPacking(PackingOf(d, 1), 1, 6);
  ExpectPacking(PackingOf(d, 6), 1, 0);  // as the table has it
  d.framesPerPacket = 4;
  ExpectPacking(PackingOf(d, 1), 4, 6);
}

TEST(Description, FramesOfUncompressedSoundAreAllChannelsTogether) {
  ExpectPacking(PackingOf(Sound(FourCC("twos")), 1), 1, 4);
  ExpectPacking(PackingOf(Sound(FourCC("in24")), 1), 1, 6);
  ExpectPacking(PackingOf(Sound(FourCC("fl32")), 1), 1, 8);
  ExpectPacking(PackingOf(Sound(FourCC("fl64")), 1), 1, 16);
  ExpectPacking(PackingOf(Sound(FourCC("ulaw")), 1), 1, 2);
  Description d = Sound(FourCC("raw "));
  d.bits = 12;  // whole bytes
  ExpectPacking(PackingOf(d, 1), 1, 4);
}

TEST(Description, SomeCodecsHavePacketsOfOneLength) {
  ExpectPacking(PackingOf(Sound(FourCC("ima4")), 1), 64, 68);
  ExpectPacking(PackingOf(Sound(FourCC("MAC3")), 1), 6, 4);
  ExpectPacking(PackingOf(Sound(FourCC("MAC6")), 1), 6, 2);
  ExpectPacking(PackingOf(Sound(FourCC("agsm")), 1), 160, 33);
}

TEST(Description, ATableThatSaysAsMuchOrMoreIsBelieved) {
  ExpectPacking(PackingOf(Sound(FourCC("twos")), 4), 1, 0);
  ExpectPacking(PackingOf(Sound(FourCC("twos")), 5), 1, 0);
  ExpectPacking(PackingOf(Sound(FourCC("twos")), 3), 1, 4);
}

TEST(Description, OtherCodecsAreAsTheTablesHaveThem) {
  ExpectPacking(PackingOf(Sound(FourCC("mp4a")), 1), 1, 0);
  ExpectPacking(PackingOf(Sound(FourCC("mp4a"), 1), 1), 1, 0);  // no fields told
}

TEST(Description, TheCodecIsTheFormatBeforeProtection) {
  Description d = Sound(FourCC("enca"));
  d.original = FourCC("sowt");
  EXPECT_EQ(d.Codec(), FourCC("sowt"));
  ExpectPacking(PackingOf(d, 1), 1, 4);
}

}  // namespace
