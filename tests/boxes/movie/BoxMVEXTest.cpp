#include <gtest/gtest.h>

#include "boxes/movie/BoxMVEX.h"
#include "io/Limits.h"
#include "tests/FragmentFixtures.h"

namespace {

using MvexRead = fixture::PayloadRead<BoxMVEX>;

TEST(BoxMVEX, AnEmptyBoxHasEmptyLists) {
  MvexRead mvex(fixture::Mvex({}));
  EXPECT_TRUE(mvex.ok);
  EXPECT_TRUE(mvex.read.headers.empty());
  EXPECT_TRUE(mvex.read.trackExtends.empty());
  EXPECT_EQ(mvex.position, 0);
}

TEST(BoxMVEX, KeepsItsChildrenInFileOrder) {
  MvexRead mvex(fixture::Mvex(FullBox("mehd", 0, 0, Bytes().Be32(70)) + fixture::Trex(2) +
                              fixture::Trex(1) + FullBox("mehd", 0, 0, Bytes().Be32(80))));
  ASSERT_TRUE(mvex.ok);
  ASSERT_EQ(mvex.read.headers.size(), 2u);
  EXPECT_EQ(mvex.read.headers[0]->fragment_duration, 70u);
  EXPECT_EQ(mvex.read.headers[1]->fragment_duration, 80u);
  ASSERT_EQ(mvex.read.trackExtends.size(), 2u);
  EXPECT_EQ(mvex.read.trackExtends[0]->track_ID, 2u);
  EXPECT_EQ(mvex.read.trackExtends[1]->track_ID, 1u);
  EXPECT_EQ(mvex.position, 96);  // 16 + 32 + 32 + 16
}

TEST(BoxMVEX, RepeatedTrackIDsAreBothKept) {
  MvexRead mvex(fixture::Mvex(fixture::Trex(5, 10) + fixture::Trex(5, 20)));
  ASSERT_EQ(mvex.read.trackExtends.size(), 2u);
  EXPECT_EQ(mvex.read.trackExtends[0]->default_sample_duration, 10u);
  EXPECT_EQ(mvex.read.trackExtends[1]->default_sample_duration, 20u);
}

TEST(BoxMVEX, FindsTheFirstRecordOfATrack) {
  MvexRead mvex(fixture::Mvex(fixture::Trex(4) + fixture::Trex(5, 10) + fixture::Trex(5, 20)));
  EXPECT_EQ(mvex.read.FindTrackExtends(5), mvex.read.trackExtends[1].get());
  EXPECT_EQ(mvex.read.FindTrackExtends(6), nullptr);
}

TEST(BoxMVEX, FindsTheFirstRecordAmongMany) {
  Bytes children;
  for (std::uint32_t i = 0; i < 200; ++i) children.Append(fixture::Trex(1000 - i % 100, i));
  MvexRead mvex(fixture::Mvex(children));
  for (std::uint32_t i = 0; i < 100; ++i) {
    EXPECT_EQ(mvex.read.FindTrackExtends(1000 - i), mvex.read.trackExtends[i].get());
  }
  EXPECT_EQ(mvex.read.FindTrackExtends(900), nullptr);
  EXPECT_EQ(mvex.read.FindTrackExtends(1001), nullptr);
}

TEST(BoxMVEX, FindsNoRecordThatAHostTookAway) {
  for (const std::uint32_t count : {2u, 50u}) {
    Bytes children;
    for (std::uint32_t i = 0; i < count; ++i) children.Append(fixture::Trex(0));
    MvexRead mvex(fixture::Mvex(children));
    mvex.read.trackExtends[0].reset();
    EXPECT_EQ(mvex.read.FindTrackExtends(0), mvex.read.trackExtends[1].get());
  }
}

TEST(BoxMVEX, FindsRecordsThatASecondBoxBrought) {
  Bytes many;
  for (std::uint32_t i = 0; i < 50; ++i) many.Append(fixture::Trex(i + 1));
  MvexRead mvex(fixture::Mvex(many));
  EXPECT_EQ(mvex.read.FindTrackExtends(77), nullptr);
  const Bytes more = fixture::Trex(77) + fixture::Trex(1);
  mmBufReader reader(more.data(), more.size());
  ASSERT_TRUE(mvex.read.ReadData(&reader, 64, nullptr));
  EXPECT_EQ(mvex.read.FindTrackExtends(77), mvex.read.trackExtends[50].get());
  EXPECT_EQ(mvex.read.FindTrackExtends(1), mvex.read.trackExtends[0].get());
}

// The unknown child's size counts but its body is not passed over: the record inside it is read
// and uses up the size of the one behind it.
TEST(BoxMVEX, EntersAnUnknownChild) {
  MvexRead mvex(fixture::Mvex(Box("leva", fixture::Trex(3)) + fixture::Trex(4)));
  ASSERT_TRUE(mvex.ok);
  ASSERT_EQ(mvex.read.trackExtends.size(), 1u);
  EXPECT_EQ(mvex.read.trackExtends[0]->track_ID, 3u);
  EXPECT_EQ(mvex.position, 40);  // 72 counted of 72, 40 read
}

TEST(BoxMVEX, ReadsTheBodyOfAnUnknownChildAsTheNextHeader) {
  // The body of "leva" reads as a header of size 40, which ends the box.
  const Bytes children =
      fixture::Trex(1) + Box("leva", Bytes().Be32(40).Text("????")) + fixture::Trex(2);
  MvexRead mvex(fixture::Mvex(children));
  ASSERT_TRUE(mvex.ok);
  ASSERT_EQ(mvex.read.trackExtends.size(), 1u);
  EXPECT_EQ(mvex.read.trackExtends[0]->track_ID, 1u);
  // Three headers and the first record's 24 bytes were read (48); 32 + 16 + 40 = 88 were counted
  // of 80, so the final skip is -8.
  EXPECT_EQ(mvex.position, 40);
}

TEST(BoxMVEX, AChildOfSizeZeroExtendsToTheEnd) {
  MvexRead mvex(fixture::Mvex(SizedBox(0, "trex", fixture::Be32s({0, 8, 1, 2, 3, 4, 99, 99}))));
  ASSERT_TRUE(mvex.ok);
  ASSERT_EQ(mvex.read.trackExtends.size(), 1u);
  EXPECT_EQ(mvex.read.trackExtends[0]->track_ID, 8u);
  EXPECT_EQ(mvex.position, 40);
}

TEST(BoxMVEX, AFailingChildIsDroppedAndFailsTheBox) {
  // Size 7 makes the payload -1.
  MvexRead mvex(
      fixture::Mvex(fixture::Trex(1) + SizedBox(7, "trex", Bytes().Fill(24)) + fixture::Trex(2)));
  EXPECT_FALSE(mvex.ok);
  ASSERT_EQ(mvex.read.trackExtends.size(), 1u);
  EXPECT_EQ(mvex.read.trackExtends[0]->track_ID, 1u);
  EXPECT_EQ(mvex.position, 40);  // right behind the failing child's header: no final skip
}

TEST(BoxMVEX, AFailingHeaderFailsTheBox) {
  MvexRead mvex(fixture::Mvex(SizedBox(7, "mehd", Bytes().Fill(8))));
  EXPECT_FALSE(mvex.ok);
  EXPECT_TRUE(mvex.read.headers.empty());
}

TEST(BoxMVEX, AChildThatOverrunsMakesTheFinalSkipNegative) {
  MvexRead mvex(fixture::Mvex(SizedBox(100, "trex", Bytes().Fill(24))));
  EXPECT_TRUE(mvex.ok);
  EXPECT_EQ(mvex.position, 32);
}

TEST(BoxMVEX, FailsWithoutReaderOrWithNegativeSize) {
  BoxMVEX box;
  mmBufReader reader;
  EXPECT_FALSE(box.ReadData(nullptr, 8, nullptr));
  EXPECT_FALSE(box.ReadData(&reader, -1, nullptr));
  EXPECT_EQ(reader.GetPos(), 0);
}

TEST(BoxMVEX, RecordsAreChargedToTheOpening) {
  mp4::ScanControl scan(0);
  const std::int64_t affordable = mp4::limits::kSpareMemory / 128;
  ASSERT_TRUE(scan.TakeMemory(128 * (affordable - 1)));
  MvexRead mvex(fixture::Mvex(fixture::Trex(1) + fixture::Trex(2)), &scan);
  EXPECT_FALSE(mvex.ok);
  EXPECT_EQ(mvex.read.trackExtends.size(), 1u);
}

}  // namespace
