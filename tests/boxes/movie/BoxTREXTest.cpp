#include <gtest/gtest.h>

#include "boxes/movie/BoxTREX.h"
#include "io/Mp4StreamReader.h"
#include "tests/Fixtures.h"
#include "tests/FragmentFixtures.h"

namespace {

using TrexRead = fixture::PayloadRead<BoxTREX>;

TEST(BoxTREX, IsZeroAfterConstruction) {
  const BoxTREX box;
  EXPECT_EQ(box.track_ID, 0u);
  EXPECT_EQ(box.default_sample_description_index, 0u);
  EXPECT_EQ(box.default_sample_duration, 0u);
  EXPECT_EQ(box.default_sample_size, 0u);
  EXPECT_EQ(box.default_sample_flags, 0u);
}

TEST(BoxTREX, ReadsItsFieldsBehindVersionAndFlags) {
  TrexRead trex(FullBox("trex", 9, 0xABCDEF, fixture::Be32s({3, 2, 1024, 200, 0x01010000})));
  EXPECT_TRUE(trex.ok);
  EXPECT_EQ(trex.read.track_ID, 3u);
  EXPECT_EQ(trex.read.default_sample_description_index, 2u);
  EXPECT_EQ(trex.read.default_sample_duration, 1024u);
  EXPECT_EQ(trex.read.default_sample_size, 200u);
  EXPECT_EQ(trex.read.default_sample_flags, 0x01010000u);
  EXPECT_EQ(trex.position, 24);
}

TEST(BoxTREX, SkipsTrailingBytes) {
  TrexRead trex(Box("trex", Bytes().Fill(31)));
  EXPECT_TRUE(trex.ok);
  EXPECT_EQ(trex.position, 31);
}

TEST(BoxTREX, ReadsAShortPayloadFromWhatFollowsAndStepsBack) {
  const Bytes bytes = Bytes().Be32(0) + fixture::Be32s({1, 2, 3, 4, 5});
  mmBufReader reader(bytes.data(), bytes.size());
  BoxTREX box;
  EXPECT_TRUE(box.ReadData(&reader, 8, nullptr));
  EXPECT_EQ(box.track_ID, 1u);
  EXPECT_EQ(box.default_sample_flags, 5u);
  EXPECT_EQ(reader.GetPos(), 8);
}

TEST(BoxTREX, ReadsAnEmptyPayloadFromWhatFollowsAndStepsBack) {
  const Bytes bytes = Bytes().Be32(0) + fixture::Be32s({1, 2, 3, 4, 5});
  mmBufReader reader(bytes.data(), bytes.size());
  BoxTREX box;
  EXPECT_TRUE(box.ReadData(&reader, 0, nullptr));
  EXPECT_EQ(box.track_ID, 1u);
  EXPECT_EQ(reader.GetPos(), 0);
}

TEST(BoxTREX, KeepsTheBytesThatExistAtAFilesEnd) {
  const TempFile file(Bytes().Be32(0).Be32(6).Be16(0x1234));
  Mp4StreamReader reader;
  ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
  BoxTREX box;
  EXPECT_TRUE(box.ReadData(&reader, 24, nullptr));
  EXPECT_EQ(box.track_ID, 6u);
  EXPECT_EQ(box.default_sample_description_index, 0x12340000u);
  EXPECT_EQ(box.default_sample_duration, 0u);
  EXPECT_EQ(reader.GetPos(), 10);
}

TEST(BoxTREX, FailsWithoutReaderOrWithNegativeSize) {
  BoxTREX box;
  mmBufReader reader;
  EXPECT_FALSE(box.ReadData(nullptr, 24, nullptr));
  EXPECT_FALSE(box.ReadData(&reader, -1, nullptr));
}

}  // namespace
