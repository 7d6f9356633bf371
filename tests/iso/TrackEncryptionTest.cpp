#include <gtest/gtest.h>

#include "iso/TrackEncryption.h"
#include "tests/Bytes.h"

namespace {

mp4::FieldView View(const Bytes& bytes) { return {bytes.data(), bytes.size()}; }

Bytes Fields(unsigned version, unsigned pattern, unsigned isProtected, unsigned ivSize) {
  return Bytes{}
      .Byte(version)
      .Be24(0)
      .Byte(0)
      .Byte(pattern)
      .Byte(isProtected)
      .Byte(ivSize)
      .Fill(16, 0xAB);
}

TEST(TrackEncryption, VersionZeroHasNoPattern) {
  mp4::TrackEncryption read;
  ASSERT_TRUE(mp4::ReadTrackEncryption(View(Fields(0, 0x19, 1, 8)), &read));
  EXPECT_TRUE(read.isProtected);
  EXPECT_EQ(8, read.ivSize);
  EXPECT_EQ(0, read.cryptBlocks);
  EXPECT_EQ(0xAB, read.keyId[15]);
  EXPECT_TRUE(read.constantIv.empty());
}

TEST(TrackEncryption, VersionOneHasAPatternAndAConstantVector) {
  mp4::TrackEncryption read;
  ASSERT_TRUE(mp4::ReadTrackEncryption(View(Fields(1, 0x19, 1, 0).Byte(8).Fill(8, 7)), &read));
  EXPECT_EQ(1, read.cryptBlocks);
  EXPECT_EQ(9, read.skipBlocks);
  EXPECT_EQ(std::vector<std::uint8_t>(8, 7), read.constantIv);
}

TEST(TrackEncryption, AConstantVectorThatIsCutOrMissingIsNone) {
  mp4::TrackEncryption read;
  EXPECT_TRUE(mp4::ReadTrackEncryption(View(Fields(1, 0, 1, 0)), &read));
  EXPECT_TRUE(mp4::ReadTrackEncryption(View(Fields(1, 0, 1, 0).Byte(8).Fill(7)), &read));
  EXPECT_TRUE(read.constantIv.empty());
}

TEST(TrackEncryption, WithoutAWholeKeyIdNothingIsKnown) {
  mp4::TrackEncryption read;
  Bytes cut = Fields(0, 0, 1, 8);
  EXPECT_FALSE(mp4::ReadTrackEncryption(View(cut.Cut(cut.size() - 1)), &read));
  EXPECT_FALSE(mp4::ReadTrackEncryption(View(Fields(2, 0, 1, 8)), &read));
}

TEST(TrackEncryption, ThePiffFormNamesAnAlgorithm) {
  const auto piff = [](unsigned algorithm) {
    return Bytes().Be32(0).Be24(algorithm).Byte(8).Fill(16, 0xCD);
  };
  mp4::TrackEncryption read;
  ASSERT_TRUE(mp4::ReadPiffTrackEncryption(View(piff(0)), &read));
  EXPECT_FALSE(read.isProtected);
  ASSERT_TRUE(mp4::ReadPiffTrackEncryption(View(piff(1)), &read));
  EXPECT_TRUE(read.isProtected);
  EXPECT_EQ(0xCD, read.keyId[0]);
  EXPECT_FALSE(mp4::ReadPiffTrackEncryption(View(piff(1).Cut(23)), &read));
}

}  // namespace
