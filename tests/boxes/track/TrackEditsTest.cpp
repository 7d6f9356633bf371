#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "boxes/track/TrackEdits.h"

namespace {

using mp4::EditSum;
using mp4::TrackEdits;
using Edits = std::vector<tagElstItem>;

TEST(TrackEdits, HoldsSamplesByWholeSeconds) {
  const Edits edits = {{1000, 500, 0}};  // one second of the media from 500 on
  const TrackEdits timeline(edits, 100, 1000);
  EXPECT_TRUE(timeline.Holds(0, 500));
  EXPECT_TRUE(timeline.Holds(0, 699));
  EXPECT_FALSE(timeline.Holds(0, 700));
  EXPECT_TRUE(timeline.Holds(0, 0));
}

TEST(TrackEdits, ConvertsFromMovieToMediaUnits) {
  const Edits edits;
  EXPECT_EQ(TrackEdits(edits, 90000, 1000).MediaUnits(500), 45000);
  EXPECT_EQ(TrackEdits(edits, 0, 1000).MediaUnits(5000), 5);
  EXPECT_EQ(TrackEdits(edits, 100, 0).MediaUnits(5), 500);
}

TEST(TrackEdits, EditAtIsTheFirstThatEndsBehindTheTarget) {
  const Edits edits = {{10, -1, 0}, {20, 0, 0}, {30, 7, 0}};
  const TrackEdits timeline(edits, 2, 1);
  const auto expect = [&](std::int64_t target, std::size_t edit, std::int64_t start) {
    EXPECT_EQ(timeline.EditAt(target).edit, edit) << target;
    EXPECT_EQ(timeline.EditAt(target).start, start) << target;
  };
  expect(-1, 0, 0);
  expect(19, 0, 0);
  expect(20, 1, 20);
  expect(59, 1, 20);
  expect(60, 2, 60);
  expect(1000000, 2, 60);
}

TEST(EditSum, SumsWhatTheEditsBeforeLast) {
  Edits edits;
  for (int i = 0; i < 200; ++i) edits.push_back({i, 0, 0});
  EditSum sum;
  EXPECT_EQ(sum.Before(edits, 0), 0);
  EXPECT_EQ(sum.Before(edits, 3), 3);
  EXPECT_EQ(sum.Before(edits, 199), 19701);
  EXPECT_EQ(sum.Before(edits, 65), 2080);
}

TEST(EditSum, NoticesAnotherList) {
  const Edits one(100, {1, 0, 0});
  const Edits other(100, {2, 0, 0});
  EditSum sum;
  EXPECT_EQ(sum.Before(one, 99), 99);
  EXPECT_EQ(sum.Before(other, 99), 198);
  const Edits shorter(other.begin(), other.begin() + 70);
  EXPECT_EQ(sum.Before(shorter, 69), 138);
}

TEST(EditSum, UpTo64EditsAreSummedAnew) {
  Edits edits(64, {1, 0, 0});
  EditSum sum;
  EXPECT_EQ(sum.Before(edits, 63), 63);
  edits[0].segmentDuration = 100;
  EXPECT_EQ(sum.Before(edits, 63), 162);
}

}  // namespace
