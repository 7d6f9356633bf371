#include <gtest/gtest.h>

#include "boxes/fragments/BoxMOOF.h"
#include "io/Limits.h"
#include "tests/FragmentFixtures.h"

namespace {

using MoofRead = fixture::PayloadRead<BoxMOOF>;

TEST(BoxMOOF, KeepsHeaderAndTrackFragmentsInFileOrder) {
  MoofRead moof(fixture::Moof(fixture::Mfhd(12) + fixture::Traf(fixture::Tfhd(0, 2)) +
                              fixture::Traf(fixture::Tfhd(0, 1))));
  ASSERT_TRUE(moof.ok);
  ASSERT_NE(moof.read.header, nullptr);
  EXPECT_EQ(moof.read.header->sequence_number, 12u);
  ASSERT_EQ(moof.read.trackFragments.size(), 2u);
  EXPECT_EQ(moof.read.trackFragments[0]->header->track_ID, 2u);
  EXPECT_EQ(moof.read.trackFragments[1]->header->track_ID, 1u);
  EXPECT_EQ(moof.position, 64);
}

TEST(BoxMOOF, IsEmptyWithoutChildren) {
  MoofRead moof(fixture::Moof({}));
  EXPECT_TRUE(moof.ok);
  EXPECT_EQ(moof.read.header, nullptr);
  EXPECT_TRUE(moof.read.trackFragments.empty());
  EXPECT_EQ(moof.position, 0);
}

TEST(BoxMOOF, ASecondHeaderIsReadOverTheFirst) {
  MoofRead moof(fixture::Moof(fixture::Mfhd(1) + fixture::Mfhd(2)));
  ASSERT_TRUE(moof.ok);
  EXPECT_EQ(moof.read.header->sequence_number, 2u);
}

// The unknown child's size counts but its body is not passed over: the header inside it is read
// and uses up the size of the one behind it.
TEST(BoxMOOF, EntersAnUnknownChild) {
  MoofRead moof(fixture::Moof(Box("pssh", fixture::Mfhd(3)) + fixture::Mfhd(4)));
  ASSERT_TRUE(moof.ok);
  ASSERT_NE(moof.read.header, nullptr);
  EXPECT_EQ(moof.read.header->sequence_number, 3u);
  EXPECT_EQ(moof.position, 24);  // 40 counted of 40, 24 read
}

TEST(BoxMOOF, AChildOfSizeZeroExtendsToTheEnd) {
  MoofRead moof(fixture::Moof(SizedBox(0, "traf", fixture::Tfhd(0, 6) + fixture::Trun(0, 3))));
  ASSERT_TRUE(moof.ok);
  ASSERT_EQ(moof.read.trackFragments.size(), 1u);
  EXPECT_EQ(moof.read.trackFragments[0]->header->track_ID, 6u);
  EXPECT_EQ(moof.read.trackFragments[0]->runs.size(), 1u);
}

TEST(BoxMOOF, AFailingTrackFragmentIsDroppedAndFailsTheBox) {
  const Bytes broken = fixture::Traf(SizedBox(7, "tfhd", Bytes().Fill(8)));
  MoofRead moof(fixture::Moof(fixture::Traf(fixture::Tfhd(0, 1)) + broken));
  EXPECT_FALSE(moof.ok);
  EXPECT_EQ(moof.read.trackFragments.size(), 1u);
  EXPECT_EQ(moof.position, 40);  // behind the failing header's header: no final skip
}

TEST(BoxMOOF, AFailingHeaderFailsTheBoxAndStays) {
  MoofRead moof(fixture::Moof(SizedBox(7, "mfhd", Bytes().Fill(8))));
  EXPECT_FALSE(moof.ok);
  EXPECT_NE(moof.read.header, nullptr);
}

// A size below 8 gives a track fragment a negative payload, which it passes over.
TEST(BoxMOOF, ATrackFragmentOfNegativeSizeStepsBack) {
  MoofRead moof(fixture::Moof(SizedBox(4, "traf")));
  EXPECT_TRUE(moof.ok);
  // Headers are read at 0 (4 counted, back to 4) and at 4, whose size "traf" ends the box.
  EXPECT_EQ(moof.read.trackFragments.size(), 1u);
}

TEST(BoxMOOF, MovesToTheEndByTheSizesItCounted) {
  MoofRead moof(fixture::Moof(SizedBox(50, "mfhd", Bytes().Fill(8))));
  EXPECT_TRUE(moof.ok);
  EXPECT_EQ(moof.position, 16);
}

TEST(BoxMOOF, FailsWithoutReaderOrWithNegativeSize) {
  BoxMOOF box;
  mmBufReader reader;
  EXPECT_FALSE(box.ReadData(nullptr, 8, nullptr));
  EXPECT_FALSE(box.ReadData(&reader, -1, nullptr));
}

TEST(BoxMOOF, TrackFragmentsAreChargedToTheOpening) {
  const Bytes box = fixture::Moof(fixture::Traf({}) + fixture::Traf({}));
  for (const std::int64_t left : {255, 256}) {
    mp4::ScanControl scan(0);
    scan.TakeMemory(mp4::limits::kSpareMemory - left);
    EXPECT_EQ(MoofRead(box, &scan).ok, left == 256);
  }
}

}  // namespace
