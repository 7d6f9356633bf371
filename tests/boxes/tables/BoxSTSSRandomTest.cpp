#include <gtest/gtest.h>

#include "boxes/tables/BoxSTSS.h"
#include "tests/RandomTables.h"

using namespace fixture;

namespace {

/// One random table in a box and in the reference.
class Pair {
 public:
  explicit Pair(std::uint32_t seed) : dice(seed), mood(RandomMood(&dice)) {
    const std::uint32_t rows = dice.OneIn(6) ? 0 : dice.Below(dice.OneIn(3) ? 1500 : 200);
    std::vector<std::uint32_t> held;
    for (std::uint32_t i = 0; i < rows; ++i) held.push_back(Next());
    const std::uint32_t declared = rows + (dice.OneIn(4) && rows > 0 ? dice.Below(50) : 0);
    Bytes payload = Bytes().Be32(0).Be32(declared);
    for (const std::uint32_t number : held) payload.Be32(number);
    EXPECT_TRUE(ReadPayload(&box, payload));
    twin.Read(held);
  }

  /// Mostly ascending, with the odd hostile number.
  std::uint32_t Next() {
    if (mood.hostileOneIn != 0 && dice.OneIn(mood.hostileOneIn * 30)) return dice.Hostile();
    if (dice.OneIn(200)) number -= dice.Below(30);
    return number += dice.Below(12);
  }

  void ExpectSameAnswer(std::int32_t i) {
    ASSERT_EQ(box.GetSampleIndexBeforeThis(i), twin.GetSampleIndexBeforeThis(i)) << i;
    ASSERT_EQ(box.GetSampleIndex(i), twin.GetSampleIndex(i)) << i;
  }

  void ExpectSameAnswers() {
    const auto first = static_cast<std::int32_t>(dice.Below(number % 100000 + 1)) - 5;
    for (std::int32_t i = first; i < first + 100 && !testing::Test::HasFatalFailure(); ++i) {
      ExpectSameAnswer(i);
    }
    for (int n = 0; n < 60 && !testing::Test::HasFatalFailure(); ++n) {
      const std::uint32_t i = dice.OneIn(5) ? dice.Hostile() : dice.Below(number % 100000 + 20);
      ExpectSameAnswer(static_cast<std::int32_t>(i));
    }
  }

  void Append() {
    for (std::uint32_t n = dice.Below(100); n > 0; --n) {
      const std::uint32_t added = Next();
      const unsigned held = box.AppendRAP(added);
      twin.AppendRAP(added);
      ASSERT_EQ(held, twin.held.size() * 4);
    }
  }

  Dice dice;
  Mood mood;
  BoxSTSS box;
  reference::SyncTable twin;
  std::uint32_t number = 1;
};

}  // namespace

TEST(BoxSTSSRandom, AgreesWithThePlainWalk) {
  for (std::uint32_t seed = 1; seed <= 3000; ++seed) {
    SCOPED_TRACE(seed);
    Pair pair(seed);
    for (int round = 0; round < 3 && !HasFailure(); ++round) {
      pair.ExpectSameAnswers();
      pair.Append();
      EXPECT_EQ(pair.box.GetEntryCount(), pair.twin.entryCount);
    }
    pair.ExpectSameAnswers();
    ASSERT_FALSE(HasFailure());
  }
}
