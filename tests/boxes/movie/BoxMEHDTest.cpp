#include <gtest/gtest.h>

#include "boxes/movie/BoxMEHD.h"
#include "tests/FragmentFixtures.h"

namespace {

using MehdRead = fixture::PayloadRead<BoxMEHD>;

TEST(BoxMEHD, IsZeroAfterConstruction) {
  const BoxMEHD box;
  EXPECT_EQ(box.version, 0);
  EXPECT_EQ(box.flags, 0u);
  EXPECT_EQ(box.fragment_duration, 0u);
}

TEST(BoxMEHD, Version1HoldsA64BitDuration) {
  MehdRead mehd(FullBox("mehd", 1, 0x010203, Bytes().Be64(0x0000000100000000u)));
  EXPECT_TRUE(mehd.ok);
  EXPECT_EQ(mehd.read.version, 1);
  EXPECT_EQ(mehd.read.flags, 0x010203u);
  EXPECT_EQ(mehd.read.fragment_duration, 0x0000000100000000u);
  EXPECT_EQ(mehd.position, 12);
}

TEST(BoxMEHD, Version0HoldsA32BitDurationZeroExtended) {
  MehdRead mehd(FullBox("mehd", 0, 0, Bytes().Be32(0xFFFFFFFE)));
  EXPECT_TRUE(mehd.ok);
  EXPECT_EQ(mehd.read.fragment_duration, 0x00000000FFFFFFFEu);
  EXPECT_EQ(mehd.position, 8);
}

TEST(BoxMEHD, EveryVersionButZeroIs64Bit) {
  MehdRead mehd(FullBox("mehd", 7, 0, Bytes().Be64(5)));
  EXPECT_EQ(mehd.read.version, 7);
  EXPECT_EQ(mehd.read.fragment_duration, 5u);
}

TEST(BoxMEHD, SkipsTrailingBytes) {
  MehdRead mehd(FullBox("mehd", 0, 0, Bytes().Be32(9).Fill(5, 0xEE)));
  EXPECT_TRUE(mehd.ok);
  EXPECT_EQ(mehd.position, 13);
}

TEST(BoxMEHD, StepsBackFromAShortPayload) {
  const Bytes bytes = Bytes().Byte(0).Be24(0).Be32(77);
  mmBufReader reader(bytes.data(), bytes.size());
  BoxMEHD box;
  EXPECT_TRUE(box.ReadData(&reader, 3, nullptr));
  EXPECT_EQ(box.fragment_duration, 77u);
  EXPECT_EQ(reader.GetPos(), 3);
}

TEST(BoxMEHD, FailsWithoutReaderOrWithNegativeSize) {
  BoxMEHD box;
  mmBufReader reader;
  EXPECT_FALSE(box.ReadData(nullptr, 8, nullptr));
  EXPECT_FALSE(box.ReadData(&reader, -1, nullptr));
  EXPECT_EQ(reader.GetPos(), 0);
}

}  // namespace
