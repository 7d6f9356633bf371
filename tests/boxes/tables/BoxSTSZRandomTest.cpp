#include <gtest/gtest.h>

#include "boxes/tables/BoxSTSZ.h"
#include "tests/RandomTables.h"

using namespace fixture;

namespace {

/// One random table in a box and in the reference. Constant counts stay small: the reference holds
/// every sample.
class Pair {
 public:
  explicit Pair(std::uint32_t seed) : dice(seed), mood(RandomMood(&dice)), track(&dice) {
    const std::uint32_t rows = dice.OneIn(5) ? 0 : dice.Below(dice.OneIn(3) ? 1500 : 200);
    std::vector<std::uint32_t> held;
    for (std::uint32_t i = 0; i < rows; ++i) held.push_back(Number(&dice, mood));
    const std::uint32_t constant = dice.OneIn(3) ? Number(&dice, mood) : 0;
    const std::uint32_t declared = dice.OneIn(4) ? dice.Below(rows + 9) : rows;
    Bytes payload = Bytes().Be32(0).Be32(constant).Be32(declared);
    for (const std::uint32_t size : held) payload.Be32(size);
    payload.Fill(dice.Below(4), 0x5A);
    const bool alone = dice.OneIn(5);
    EXPECT_TRUE(ReadPayload(&box, payload, alone ? nullptr : &track.movie.context));
    twin.Read(constant, declared, held, alone ? nullptr : &track.twin);
  }

  void Append() {
    if (dice.OneIn(3)) {
      AppendList();
    } else {
      AppendOne();
    }
  }

  void AppendList() {
    std::vector<std::uint32_t> sizes(dice.Below(dice.OneIn(4) ? 300 : 9));
    for (std::uint32_t& size : sizes) size = last = dice.OneIn(3) ? last : Number(&dice, mood);
    box.AppendEach(sizes.data(), sizes.size());
    for (const std::uint32_t size : sizes) twin.AppendSize(size);
  }

  void AppendOne() {
    const bool repeat = dice.OneIn(3);
    const std::uint32_t size = repeat ? last : Number(&dice, mood);
    const std::uint32_t count = dice.OneIn(2) ? 1 : dice.Below(300);
    last = size;
    if (count == 1) {
      box.AppendSize(size);
    } else {
      box.AppendSizes(size, count);
    }
    for (std::uint32_t i = 0; i < count; ++i) twin.AppendSize(size);
  }

  void ExpectSameState() {
    EXPECT_EQ(box.GetSampleCount(), twin.count);
    EXPECT_EQ(box.GetConstantSize(), twin.constant);
    EXPECT_TRUE(track.Agrees());
    const std::vector<tagSTSZ>& table = track.movie.track->sampleSizeTable;
    ASSERT_EQ(table.size(), twin.published.size());
    for (std::size_t i = 0; i < table.size(); ++i) {
      ASSERT_EQ(table[i].sampleSize, twin.published[i]) << i;
    }
  }

  std::int32_t Index() {
    return static_cast<std::int32_t>(dice.Below(twin.count % 100000 + 40)) - 10;
  }

  void ExpectSameAnswers() {
    for (int n = 0; n < 40; ++n) {
      const auto i = dice.OneIn(5) ? static_cast<std::int32_t>(dice.Hostile()) : Index();
      ASSERT_EQ(box.GetSampleSize(i), twin.GetSampleSize(i)) << i;
    }
    for (int n = 0; n < 6; ++n) {
      const std::int32_t first = Index();
      const std::int32_t end = dice.OneIn(2) ? Index() : first + 5;
      ASSERT_EQ(box.SumSizes(first, end), twin.SumSizes(first, end)) << first << " to " << end;
    }
  }

  Dice dice;
  Mood mood;
  TwinTrack track;
  BoxSTSZ box;
  reference::SizeTable twin;
  std::uint32_t last = 0;
};

}  // namespace

TEST(BoxSTSZRandom, AgreesWithThePlainTable) {
  for (std::uint32_t seed = 1; seed <= 4000; ++seed) {
    SCOPED_TRACE(seed);
    Pair pair(seed);
    pair.ExpectSameState();
    for (int round = 0; round < 5 && !HasFailure(); ++round) {
      if (pair.dice.OneIn(2)) pair.ExpectSameAnswers();
      pair.Append();
      pair.ExpectSameState();
    }
    pair.ExpectSameAnswers();
    ASSERT_FALSE(HasFailure());
  }
}
