#include <gtest/gtest.h>

#include "boxes/fragments/BoxTRAF.h"
#include "io/Limits.h"
#include "tests/FragmentFixtures.h"

namespace {

using TrafRead = fixture::PayloadRead<BoxTRAF>;

TEST(BoxTRAF, KeepsHeaderAndRunsInFileOrder) {
  TrafRead traf(fixture::Traf(fixture::Tfhd(0, 4) + fixture::Trun(0, 2) + fixture::Trun(0, 1)));
  ASSERT_TRUE(traf.ok);
  ASSERT_NE(traf.read.header, nullptr);
  EXPECT_EQ(traf.read.header->track_ID, 4u);
  ASSERT_EQ(traf.read.runs.size(), 2u);
  EXPECT_EQ(traf.read.runs[0]->sample_count, 2u);
  EXPECT_EQ(traf.read.runs[1]->sample_count, 1u);
  EXPECT_EQ(traf.position, 48);
}

TEST(BoxTRAF, IsEmptyWithoutChildren) {
  TrafRead traf(fixture::Traf({}));
  EXPECT_TRUE(traf.ok);
  EXPECT_EQ(traf.read.header, nullptr);
  EXPECT_TRUE(traf.read.runs.empty());
}

TEST(BoxTRAF, ASecondHeaderIsReadOverTheFirst) {
  TrafRead traf(fixture::Traf(fixture::Tfhd(0x18, 4, Bytes().Be32(70).Be32(80)) +
                              fixture::Tfhd(0x10, 5, Bytes().Be32(81))));
  ASSERT_TRUE(traf.ok);
  EXPECT_EQ(traf.read.header->track_ID, 5u);
  EXPECT_EQ(traf.read.header->tf_flags, 0x10u);
  EXPECT_EQ(traf.read.header->default_sample_duration, 70u);
  EXPECT_EQ(traf.read.header->default_sample_size, 81u);
}

// A "tfdt" counts with its size but only its header is read: its body is taken for the header of
// the next child. The box then ends, by count, before the run behind it.
TEST(BoxTRAF, ATfdtMakesTheRunsBehindItGoUnseen) {
  TrafRead traf(fixture::Traf(fixture::Tfhd(0, 1) + FullBox("tfdt", 1, 0, Bytes().Be64(9000)) +
                              fixture::Trun(0, 2)));
  ASSERT_TRUE(traf.ok);
  ASSERT_NE(traf.read.header, nullptr);
  EXPECT_TRUE(traf.read.runs.empty());
  // The body 01000000 00000000 ... is a header of size 0x1000000: 16 + 20 + 0x1000000 counted of
  // 52, 16 + 8 + 8 read.
  EXPECT_EQ(traf.position, 32 + 52 - (36 + 0x1000000));
}

TEST(BoxTRAF, ATfdtOfVersion0EndsTheBoxToo) {
  // Version and flags of 0 read as a size of 0: the rest of the box.
  TrafRead traf(fixture::Traf(fixture::Tfhd(0, 1) + FullBox("tfdt", 0, 0, Bytes().Be32(9000)) +
                              fixture::Trun(0, 2)));
  ASSERT_TRUE(traf.ok);
  EXPECT_TRUE(traf.read.runs.empty());
  EXPECT_EQ(traf.position, 32);  // all counted, so nothing is skipped
}

TEST(BoxTRAF, RunsBeforeATfdtAreSeen) {
  TrafRead traf(fixture::Traf(fixture::Tfhd(0, 1) + fixture::Trun(0, 2) +
                              FullBox("tfdt", 0, 0, Bytes().Be32(9000))));
  ASSERT_TRUE(traf.ok);
  EXPECT_EQ(traf.read.runs.size(), 1u);
}

TEST(BoxTRAF, AChildOfSizeZeroExtendsToTheEnd) {
  TrafRead traf(fixture::Traf(SizedBox(0, "trun", fixture::Be32s({0x200, 2, 5, 6, 7, 8}))));
  ASSERT_TRUE(traf.ok);
  ASSERT_EQ(traf.read.runs.size(), 1u);
  EXPECT_EQ(traf.read.runs[0]->entries[1].size, 6u);
  EXPECT_EQ(traf.position, 32);
}

TEST(BoxTRAF, AFailingRunIsDroppedAndFailsTheBox) {
  TrafRead traf(fixture::Traf(fixture::Trun(0, 1) + SizedBox(7, "trun", Bytes().Fill(8)) +
                              fixture::Trun(0, 1)));
  EXPECT_FALSE(traf.ok);
  EXPECT_EQ(traf.read.runs.size(), 1u);
  EXPECT_EQ(traf.position, 24);  // right behind the failing run's header
}

TEST(BoxTRAF, AFailingHeaderFailsTheBoxAndStays) {
  TrafRead traf(fixture::Traf(SizedBox(7, "tfhd", Bytes().Fill(8))));
  EXPECT_FALSE(traf.ok);
  EXPECT_NE(traf.read.header, nullptr);
}

TEST(BoxTRAF, PassesOverASizeOfZeroOrLess) {
  const Bytes bytes = Bytes().Fill(16);
  mmBufReader reader(bytes.data(), bytes.size());
  BoxTRAF box;
  reader.SetPos(8);
  EXPECT_TRUE(box.ReadData(&reader, 0, nullptr));
  EXPECT_EQ(reader.GetPos(), 8);
  EXPECT_TRUE(box.ReadData(&reader, -3, nullptr));
  EXPECT_EQ(reader.GetPos(), 5);
}

TEST(BoxTRAF, FailsWithoutReader) {
  BoxTRAF box;
  EXPECT_FALSE(box.ReadData(nullptr, 8, nullptr));
  EXPECT_FALSE(box.ReadData(nullptr, 0, nullptr));
}

TEST(BoxTRAF, RunsAreChargedToTheOpening) {
  const Bytes box = fixture::Traf(fixture::Trun(0, 0) + fixture::Trun(0, 0));
  for (const std::int64_t left : {255, 256}) {
    mp4::ScanControl scan(0);
    scan.TakeMemory(mp4::limits::kSpareMemory - left);
    EXPECT_EQ(TrafRead(box, &scan).ok, left == 256);
  }
}

}  // namespace
