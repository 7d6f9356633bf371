#include <gtest/gtest.h>

#include "boxes/tables/BoxSTTS.h"
#include "tests/RandomTables.h"

using namespace fixture;

namespace {

/// One random table in a box and in the reference.
class Pair {
 public:
  explicit Pair(std::uint32_t seed) : dice(seed), mood(RandomMood(&dice)), track(&dice) {
    const std::uint32_t rows = dice.Below(dice.OneIn(4) ? 1000 : 150);
    std::vector<reference::TimeRow> held;
    for (std::uint32_t i = 0; i < rows; ++i) {
      held.push_back({Number(&dice, mood), Number(&dice, mood)});
    }
    std::uint32_t declared = rows;
    if (dice.OneIn(6)) declared = dice.OneIn(2) ? dice.Below(rows + 5) : ~dice.Below(3);
    Bytes payload = Bytes().Be32(0).Be32(declared);
    for (const reference::TimeRow& row : held) payload.Be32(row.count).Be32(row.delta);
    payload.Fill(dice.Below(8), 0x5A);
    const bool alone = dice.OneIn(5);
    EXPECT_TRUE(ReadPayload(&box, payload, alone ? nullptr : &track.movie.context));
    twin.Read(held, declared, alone ? nullptr : &track.twin);
  }

  void Append() {
    const std::uint32_t duration = Number(&dice, mood);
    const std::uint32_t count = dice.OneIn(2) ? 1 : dice.Below(200);
    if (count == 1) {
      box.AppendTime(duration);
    } else {
      box.AppendTimes(duration, count);
    }
    for (std::uint32_t i = 0; i < count; ++i) twin.AppendTime(duration);
    if (dice.OneIn(2)) {
      box.OptimizeAudio();
      twin.OptimizeAudio();
    }
  }

  void ExpectSameState() {
    EXPECT_EQ(box.GetTotalSamples(), twin.totalSamples);
    EXPECT_EQ(box.GetEntryCount(), twin.entryCount);
    EXPECT_TRUE(track.Agrees());
    const std::vector<tagSTTS>& table = track.movie.track->timeToSampleTable;
    ASSERT_EQ(table.size(), twin.published.size());
    for (std::size_t i = 0; i < table.size(); ++i) {
      ASSERT_EQ(table[i].sampleCount, twin.published[i].count) << i;
      ASSERT_EQ(table[i].sampleDelta, twin.published[i].delta) << i;
    }
  }

  void ExpectSameAnswers(std::int32_t i, std::int64_t time) {
    ASSERT_EQ(box.GetSampleDuration(i), twin.GetSampleDuration(i)) << i;
    ASSERT_EQ(box.GetPTS(i), twin.GetPTS(i)) << i;
    ASSERT_EQ(box.GetSampleIndexBefore(time), twin.GetSampleIndexBefore(time)) << time;
  }

  /// Samples and times in order, the way a track is played.
  void Walk() {
    const std::int32_t first = dice.OneIn(3) ? -3 : static_cast<std::int32_t>(dice.Below(2000));
    const std::int64_t step = dice.Below(7);
    std::int64_t time = dice.Below(50);
    for (std::int32_t i = first; i < first + 150 && !testing::Test::HasFatalFailure(); ++i) {
      ExpectSameAnswers(i, time += step);
    }
  }

  /// Samples and times in any order, near the table's own numbers or far from them.
  void Jump() {
    for (int n = 0; n < 40 && !testing::Test::HasFatalFailure(); ++n) {
      const std::uint32_t span = static_cast<std::uint32_t>(twin.totalSamples) % 100000 + 9;
      const std::uint32_t i = dice.OneIn(4) ? dice.Hostile() : dice.Below(span) - 4;
      const std::int64_t time = dice.OneIn(4) ? dice.Wide() : twin.GetPTS(dice.Below(span)) - 1;
      ExpectSameAnswers(static_cast<std::int32_t>(i), time + dice.Below(3));
    }
  }

  Dice dice;
  Mood mood;
  TwinTrack track;
  BoxSTTS box;
  reference::TimeTable twin;
};

}  // namespace

TEST(BoxSTTSRandom, AgreesWithThePlainWalk) {
  for (std::uint32_t seed = 1; seed <= 2500; ++seed) {
    SCOPED_TRACE(seed);
    Pair pair(seed);
    pair.ExpectSameState();
    for (int round = 0; round < 4 && !HasFailure(); ++round) {
      if (pair.dice.OneIn(2)) pair.Walk();
      if (pair.dice.OneIn(2)) pair.Jump();
      pair.Append();
      pair.ExpectSameState();
    }
    pair.Walk();
    pair.Jump();
    ASSERT_FALSE(HasFailure());
  }
}

TEST(BoxSTTSRandom, FragmentsGrowATableThatIsQueriedMeanwhile) {
  for (std::uint32_t seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE(seed);
    Pair pair(seed + 50000);
    for (int fragment = 0; fragment < 120 && !HasFailure(); ++fragment) {
      pair.Append();
      const auto i = static_cast<std::int32_t>(pair.dice.Below(20000));
      pair.ExpectSameAnswers(i, pair.dice.Below(1000000));
    }
    pair.ExpectSameState();
    pair.Walk();
    pair.Jump();
    ASSERT_FALSE(HasFailure());
  }
}
