#include <gtest/gtest.h>

#include "samples/TrackTotals.h"
#include "tests/samples/SampleFixtures.h"

namespace {

using namespace fixture;

mp4::TrackTotals TotalsOfMovie(const TableMovie& movie, std::uint64_t most = 1000) {
  OpenMovie open(movie.File());
  return mp4::TotalsOf(&open.Only(), most);
}
/// Whether four samples with these runs of durations have a constant rate.
bool IsConstant(const std::vector<Run>& runs) {
  TableMovie movie;
  movie.stts = Stts(runs);
  return TotalsOfMovie(movie).constantRate;
}

}  // namespace

TEST(TrackTotals, AddUpAllSamples) {
  TableMovie movie;
  movie.stts = Stts({{1, 100}, {3, 50}});
  movie.more = Stss({1, 3});
  const mp4::TrackTotals totals = TotalsOfMovie(movie);
  EXPECT_EQ(4U, totals.samples);
  EXPECT_EQ(100U, totals.bytes);
  EXPECT_EQ(250U, totals.duration);
  EXPECT_EQ(2U, totals.syncSamples);
  EXPECT_EQ(100U, totals.usualDuration);
  EXPECT_TRUE(totals.whole);
}

TEST(TrackTotals, WithoutATableEverySampleIsASyncSample) {
  EXPECT_EQ(4U, TotalsOfMovie(TableMovie()).syncSamples);
}

TEST(TrackTotals, TheRateIsConstantWhateverTheLastSampleLasts) {
  EXPECT_TRUE(IsConstant({{4, 100}}));
  EXPECT_TRUE(IsConstant({{3, 100}, {1, 7}}));
  EXPECT_FALSE(IsConstant({{2, 100}, {2, 7}}));
  EXPECT_FALSE(IsConstant({{2, 100}, {1, 7}, {1, 100}}));
  EXPECT_FALSE(IsConstant({{1, 7}, {3, 100}}));
}

TEST(TrackTotals, OfMoreSamplesThanAreWalkedAreNotWhole) {
  const mp4::TrackTotals some = TotalsOfMovie(TableMovie(), 3);
  EXPECT_EQ(3U, some.samples);
  EXPECT_EQ(60U, some.bytes);
  EXPECT_FALSE(some.whole);
  EXPECT_TRUE(TotalsOfMovie(TableMovie(), 4).whole);
}

TEST(TrackTotals, OfNoSamplesAreNothing) {
  TableMovie movie;
  movie.stsz = Stsz({});
  const mp4::TrackTotals totals = TotalsOfMovie(movie);
  EXPECT_EQ(0U, totals.samples);
  EXPECT_EQ(0U, totals.usualDuration);
  EXPECT_TRUE(totals.whole);
}

TEST(TrackTotals, MoreSamplesAreWalkedOfLargerFiles) {
  EXPECT_EQ(4000000U, mp4::MostSamplesWalked(15));
  EXPECT_EQ(4000001U, mp4::MostSamplesWalked(16));
}
