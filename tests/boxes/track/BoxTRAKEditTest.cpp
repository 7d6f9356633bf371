#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "boxes/track/BoxTRAK.h"
#include "tests/TrackFixtures.h"

using fixture::HandMadeTrack;

namespace {

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int32_t kLargest32 = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kSmallest32 = std::numeric_limits<std::int32_t>::min();

struct Got {
  bool ok;
  std::int64_t time;
  std::uint64_t offset;
};

Got Sample(BoxTRAK* trak) {
  BoxBase::SAMPLE sample{};
  const bool ok = trak->GetSampleInfo(&sample);
  return {ok, sample.time, sample.offset};
}

/// Four samples, each a second of ten units, at the offsets 1000 to 4000.
struct FourSeconds {
  Mp4Context context;
  BoxTRAK trak;
  bool ready;

  explicit FourSeconds(const std::vector<fixture::Edit>& edits) {
    fixture::Track track;
    track.timescale = 10;
    track.times = {{4, 10}};
    track.edits = edits;
    fixture::ReadBox(&trak, fixture::Trak(track), &context);
    ready = trak.ReadyToDemux();
  }
  std::int64_t mediaTime() { return trak.mediaBox->mediaInformationBox->sampleTableBox->curTime; }
  std::vector<std::pair<std::uint64_t, std::int64_t>> Walk() {
    std::vector<std::pair<std::uint64_t, std::int64_t>> all;
    for (int i = 0; i < 20; ++i) {
      const Got got = Sample(&trak);
      if (!got.ok) break;
      all.emplace_back(got.offset, got.time);
      if (!trak.Next()) break;
    }
    return all;
  }
};

using Walked = std::vector<std::pair<std::uint64_t, std::int64_t>>;

}  // namespace

// Sample times.

TEST(BoxTRAKEdit, SampleCarriesTrackAndFormat) {
  HandMadeTrack track(1000, 1000, {});
  track.trak.format = 0x31637661;  // "avc1"
  BoxBase::SAMPLE sample{};
  EXPECT_TRUE(track.trak.GetSampleInfo(&sample));
  EXPECT_EQ(sample.trackId, 7u);
  EXPECT_EQ(sample.format, 0x31637661u);
  EXPECT_EQ(sample.timescale, 1000u);
  EXPECT_EQ(sample.isVideo, 1);
}

TEST(BoxTRAKEdit, WithoutEditListTheTimeIsHandedOnAsItIs) {
  HandMadeTrack track(1000, 1000, {});
  EXPECT_EQ(Sample(&track.At(123)).time, 123);
  EXPECT_EQ(Sample(&track.At(-5)).time, -5);
}

TEST(BoxTRAKEdit, MissingLinkGivesNoSample) {
  for (const bool edited : {false, true}) {
    std::vector<tagElstItem> edits;
    if (edited) edits = {{1000, 5, 0}, {1000, 6, 0}};
    HandMadeTrack track(1000, 1000, edits);
    EXPECT_FALSE(track.trak.GetSampleInfo(nullptr));
    track.trak.mediaBox->mediaInformationBox->sampleTableBox.reset();
    EXPECT_FALSE(Sample(&track.trak).ok);
    EXPECT_FALSE(track.trak.Next());
    track.trak.mediaBox.reset();
    EXPECT_FALSE(Sample(&track.trak).ok);
    EXPECT_FALSE(track.trak.Next());
  }
}

TEST(BoxTRAKEdit, TimeCountsFromTheEditAndIsClampedAtZero) {
  HandMadeTrack track(1000, 1000, {{5000, 300, 0}});
  EXPECT_EQ(Sample(&track.At(1300)).time, 1000);
  EXPECT_EQ(Sample(&track.At(300)).time, 0);
  EXPECT_EQ(Sample(&track.At(100)).time, 0);
  EXPECT_EQ(track.trak.editIndex, 0);
}

TEST(BoxTRAKEdit, InitialEmptyEditShiftsEveryTime) {
  // 2000 movie units of 1/1000 s are 180,000 media units of 1/90000 s.
  HandMadeTrack track(90000, 1000, {{2000, -1, 0}, {10000, 0, 0}});
  EXPECT_EQ(Sample(&track.At(3000)).time, 183000);
  EXPECT_EQ(track.trak.editIndex, 1);
  EXPECT_EQ(Sample(&track.At(6000)).time, 186000);
}

TEST(BoxTRAKEdit, ShiftIsTruncatedTowardZero) {
  HandMadeTrack track(10, 1000, {{1999, -1, 0}, {10000, 0, 0}});
  EXPECT_EQ(Sample(&track.At(3)).time, 3 + 19);
}

TEST(BoxTRAKEdit, SampleBelongsToAnEditByWholeSeconds) {
  // An edit of 1.5 s holds whatever starts before 2 s.
  HandMadeTrack track(1000, 1000, {{1500, 0, 0}});
  EXPECT_TRUE(Sample(&track.At(1999)).ok);
  EXPECT_FALSE(Sample(&track.At(2000)).ok);
}

TEST(BoxTRAKEdit, WholeSecondsAreTruncatedTowardZeroOnBothSides) {
  // -0.9 s and -1.9 s truncate to 0 and -1; the edit of -1.5 s lasts -1 s.
  HandMadeTrack track(1000, 1000, {{-1500, 10000, 0}});
  EXPECT_TRUE(Sample(&track.At(8100)).ok);
  track.trak.editIndex = 0;
  EXPECT_FALSE(Sample(&track.At(9100)).ok);
}

TEST(BoxTRAKEdit, ExhaustedEditListStaysExhausted) {
  HandMadeTrack track(1000, 1000, {{0, 0, 0}, {0, 0, 0}});
  EXPECT_FALSE(Sample(&track.At(5000)).ok);
  EXPECT_EQ(track.trak.editIndex, 2);
  EXPECT_FALSE(Sample(&track.At(0)).ok);
  EXPECT_EQ(track.trak.editIndex, 2);
}

TEST(BoxTRAKEdit, EmptyEditsAtTheEndGiveNoSample) {
  HandMadeTrack track(1000, 1000, {{5000, -1, 0}, {5000, -1, 0}});
  EXPECT_FALSE(Sample(&track.At(0)).ok);
  EXPECT_EQ(track.trak.editIndex, 2);
}

TEST(BoxTRAKEdit, IndexOutsideTheListGivesNoSample) {
  HandMadeTrack track(1000, 1000, {{5000, 1, 0}});
  track.trak.editIndex = -1;
  EXPECT_FALSE(Sample(&track.trak).ok);
  track.trak.editIndex = kLargest32;
  EXPECT_FALSE(Sample(&track.trak).ok);
  track.trak.editIndex = 0;
  track.trak.editList.clear();
  EXPECT_FALSE(Sample(&track.trak).ok);
}

TEST(BoxTRAKEdit, TimescalesOfZeroCountAsOne) {
  HandMadeTrack track(0, 0, {{2, -1, 0}, {10, 0, 0}});
  EXPECT_EQ(Sample(&track.At(3)).time, 5);
  EXPECT_TRUE(Sample(&track.At(10)).ok);
  EXPECT_FALSE(Sample(&track.At(11)).ok);
}

TEST(BoxTRAKEdit, MediaTimescaleIsSigned) {
  HandMadeTrack track(0xFFFFFFFF, 1, {{5, -1, 0}, {10, 0, 0}});
  EXPECT_EQ(Sample(&track.At(3)).time, 3 - 5);
}

// The second edit holds what lies at most -2^31 s into it (2^31 negated, wrapped), the third what
// lies at most -(2^31 - 1) s into it; the edits before them last -2^31 and -2^32 movie units of
// -1/s. All figures are worked out modulo 2^64.
TEST(BoxTRAKEdit, ExtremesWrap) {
  constexpr std::int64_t kSmallest = -kLargest - 1;
  constexpr std::int64_t kPower31 = 1LL << 31;
  struct Case {
    std::uint32_t timescale;
    std::int64_t mediaTime;
    bool ok;
    std::int64_t time;
    int edit;
    std::int64_t reached;
    int soughtEdit;
  };
  const Case cases[] = {
      {0x80000000u, kLargest, false, 0, 3, 0, 2},
      {0x80000000u, kSmallest, false, 0, 3, 0, 2},
      {0x80000000u, 0, false, 0, 3, -461'168'601'842, 2},  // -2^62 / 10^7
      {0xFFFFFFFFu, kLargest, false, 0, 3, 0, 0},
      {0xFFFFFFFFu, kSmallest, false, 0, 3, 0, 0},
      {0xFFFFFFFFu, 0, true, kPower31 - 2 * kPower31, 2, 214, 2},  // 2^31 / 10^7
      {0x7FFFFFFFu, kLargest, true, kPower31 * (kPower31 - 1), 1, 0, 0},
      {0x7FFFFFFFu, kSmallest, true, kPower31 * (kPower31 - 1), 1, 0, 0},
      {0x7FFFFFFFu, 0, false, 0, 3, 214, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.timescale << " " << c.mediaTime);
    HandMadeTrack track(c.timescale, -1,
                        {{kSmallest32, -1, 0}, {kSmallest32, -2, 0}, {kLargest32, kSmallest32, 0}});
    const Got got = Sample(&track.At(c.mediaTime));
    EXPECT_EQ(got.ok, c.ok);
    EXPECT_EQ(got.ok ? got.time : 0, c.time);
    EXPECT_EQ(track.trak.editIndex, c.edit);
    EXPECT_EQ(track.trak.Seek(c.mediaTime), c.reached);
    EXPECT_EQ(track.trak.editIndex, c.soughtEdit);
  }
}

TEST(BoxTRAKEdit, EarlierEditsAreSummedWhereverTheIndexIsSet) {
  std::vector<tagElstItem> edits;
  for (int i = 1; i <= 200; ++i) edits.push_back({i, 0, 0});
  HandMadeTrack track(1000, 1000, edits);
  // The edits before index n last 1 + 2 + ... + n = n (n + 1) / 2.
  for (const int n : {150, 151, 199, 130, 64, 63, 1, 128, 127, 0}) {
    track.trak.editIndex = n;
    EXPECT_EQ(Sample(&track.At(0)).time, n * (n + 1) / 2) << n;
  }
}

TEST(BoxTRAKEdit, ReplacedListIsSummedAnew) {
  std::vector<tagElstItem> edits;
  for (int i = 1; i <= 200; ++i) edits.push_back({i, 0, 0});
  HandMadeTrack track(1000, 1000, edits);
  track.trak.editIndex = 150;
  EXPECT_EQ(Sample(&track.trak).time, 150 * 151 / 2);
  track.trak.editList = std::vector<tagElstItem>(300, {2, 0, 0});
  EXPECT_EQ(Sample(&track.trak).time, 300);
}

TEST(BoxTRAKEdit, ShortListMayBeRewrittenInPlace) {
  HandMadeTrack track(1000, 1000, {{10, 0, 0}, {20, 0, 0}, {30, 0, 0}});
  track.trak.editIndex = 2;
  EXPECT_EQ(Sample(&track.trak).time, 30);
  track.trak.editList[0].segmentDuration = 70;
  EXPECT_EQ(Sample(&track.trak).time, 90);
}

TEST(BoxTRAKEdit, LongListRewrittenInPlaceIsSummedAnewAfterASeek) {
  HandMadeTrack track(1000, 1000, std::vector<tagElstItem>(200, {2, 0, 0}));
  track.trak.editIndex = 150;
  EXPECT_EQ(Sample(&track.trak).time, 300);
  track.trak.editList[0].segmentDuration = 102;
  track.trak.Seek(0);
  track.trak.editIndex = 150;
  EXPECT_EQ(Sample(&track.trak).time, 400);
}

// Seeking.

TEST(BoxTRAKEdit, SeekWithoutMediaIsMinusOne) {
  BoxTRAK trak;
  EXPECT_EQ(trak.Seek(0), -1);
  EXPECT_EQ(trak.Seek(10'000'000), -1);
}

TEST(BoxTRAKEdit, SeekWithoutEditListReturnsSeekUnits) {
  HandMadeTrack track(1000, 1000, {});
  EXPECT_EQ(track.At(2000).Seek(25'000'000), 20'000'000);
  // 7 / 3 s, truncated.
  HandMadeTrack thirds(3, 1000, {});
  EXPECT_EQ(thirds.At(7).Seek(0), 23'333'333);
}

TEST(BoxTRAKEdit, SeekWithEditListConvertsTheOtherWayRound) {
  // (100,000,100 - 100 + 1000) * 1000 / 10,000,000: not the 100 ns units the argument has.
  HandMadeTrack track(1000, 1000, {{1000, -1, 0}, {5000, 100, 0}});
  EXPECT_EQ(track.At(100'000'100).Seek(20'000'000), 10'000);
  EXPECT_EQ(track.trak.editIndex, 1);
}

TEST(BoxTRAKEdit, SeekResultCountsNothingBeforeTheEdit) {
  // Media time 0 lies before the edit's 100; what remains is the edit's start, 20 s.
  HandMadeTrack track(10'000'000, 1, {{20, -1, 0}, {5, 100, 0}});
  EXPECT_EQ(track.At(0).Seek(210'000'000), 200'000'000);
}

TEST(BoxTRAKEdit, SeekChoosesTheFirstEditThatEndsBehindTheTarget) {
  HandMadeTrack track(1000, 1000, {{1000, 0, 0}, {2000, 0, 0}, {3000, 0, 0}});
  const std::pair<long long, int> expected[] = {
      {-10'000'000, 0}, {0, 0},          {9'990'000, 0},  {9'999'999, 0},  {10'000'000, 1},
      {29'990'000, 1},  {30'000'000, 2}, {59'990'000, 2}, {900'000'000, 2}};
  for (const auto& [time, edit] : expected) {
    track.trak.editIndex = 2;
    track.trak.Seek(time);
    EXPECT_EQ(track.trak.editIndex, edit) << time;
  }
}

TEST(BoxTRAKEdit, SeekWithAnEmptiedListIsOneWithoutEditList) {
  HandMadeTrack track(1000, 1000, {{1000, 5, 0}});
  track.trak.editList.clear();
  EXPECT_EQ(track.At(2000).Seek(0), 20'000'000);
}

// Whole tracks.

TEST(BoxTRAKEdit, TrackWithoutEditsWalksItsMedia) {
  FourSeconds track({});
  ASSERT_TRUE(track.ready);
  EXPECT_EQ(track.Walk(), (Walked{{1000, 0}, {2000, 10}, {3000, 20}, {4000, 30}}));
}

TEST(BoxTRAKEdit, DroppedEditWalksTheMediaUncorrected) {
  FourSeconds track({{1000, 0}});
  ASSERT_TRUE(track.ready);
  EXPECT_EQ(track.Walk(), (Walked{{1000, 0}, {2000, 10}, {3000, 20}, {4000, 30}}));
}

TEST(BoxTRAKEdit, TrackBehindAnEmptyEditIsShifted) {
  FourSeconds track({{500, -1}, {4000, 0}});
  ASSERT_TRUE(track.ready);
  EXPECT_EQ(track.Walk(), (Walked{{1000, 5}, {2000, 15}, {3000, 25}, {4000, 35}}));
}

TEST(BoxTRAKEdit, FirstEditDoesNotSeekToItsStart) {
  FourSeconds track({{4000, 20}});
  ASSERT_TRUE(track.ready);
  EXPECT_EQ(track.Walk(), (Walked{{1000, 0}, {2000, 0}, {3000, 0}, {4000, 10}}));
}

TEST(BoxTRAKEdit, SampleBehindAnEditLeadsToTheStartOfTheNext) {
  // The first edit lasts no second: the sample a second behind its start is replaced by the first
  // of the second edit, which lasts one second and so holds two samples.
  FourSeconds track({{0, 20}, {1000, 0}});
  ASSERT_TRUE(track.ready);
  EXPECT_EQ(track.Walk(), (Walked{{1000, 0}, {2000, 0}, {3000, 0}, {1000, 0}, {2000, 10}}));
  EXPECT_EQ(track.trak.editIndex, 2);
}

TEST(BoxTRAKEdit, TimeOfALaterEditStartsWhereTheEarlierOnesEnd) {
  FourSeconds track({{1000, 0}, {500, -1}, {1000, 20}});
  ASSERT_TRUE(track.ready);
  // 1.5 s of edits are 15 media units.
  EXPECT_EQ(track.Walk(), (Walked{{1000, 0}, {2000, 10}, {3000, 15}, {4000, 25}}));
}

TEST(BoxTRAKEdit, SeekReachesTheSampleOfTheTarget) {
  FourSeconds track({});
  ASSERT_TRUE(track.ready);
  EXPECT_EQ(track.trak.Seek(25'000'000), 20'000'000);
  EXPECT_EQ(Sample(&track.trak).offset, 3000u);
}

TEST(BoxTRAKEdit, SeekIntoAnEditReachesItsMedia) {
  // Target 25, the edit starts at 10 and at media time 10: media time 25, sample at 20.
  FourSeconds track({{1000, -1}, {4000, 10}});
  ASSERT_TRUE(track.ready);
  EXPECT_EQ(track.trak.Seek(25'000'000), 0);  // 20 * 10 / 10,000,000
  EXPECT_EQ(track.trak.editIndex, 1);
  EXPECT_EQ(track.mediaTime(), 20);
  EXPECT_EQ(Sample(&track.trak).time, 20);
}

TEST(BoxTRAKEdit, SeekBeforeTheMediaReachesItsStart) {
  FourSeconds track({{4000, -20}});
  ASSERT_TRUE(track.ready);
  track.trak.Seek(35'000'000);
  EXPECT_EQ(track.mediaTime(), 10);  // 35 - 20 = 15
  track.trak.Seek(10'000'000);
  EXPECT_EQ(track.mediaTime(), 0);  // 10 - 20 < 0
}

TEST(BoxTRAKEdit, ReadyToDemuxKeepsTheEdit) {
  FourSeconds track({{1000, 0}, {1000, 0}});
  track.trak.Seek(10'000'000);
  EXPECT_EQ(track.trak.editIndex, 1);
  EXPECT_TRUE(track.trak.ReadyToDemux());
  EXPECT_EQ(track.trak.editIndex, 1);
}
