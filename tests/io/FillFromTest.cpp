#include <gtest/gtest.h>

#include <cstddef>
#include <vector>

#include "io/FillFrom.h"

namespace {

TEST(FillFrom, MakesTheElementsFromThereOn) {
  const auto triple = [](std::size_t from, std::size_t n, std::size_t* out) {
    for (std::size_t i = 0; i < n; ++i) out[i] = 3 * (from + i);
  };
  std::vector<std::size_t> records = {1, 2};
  mp4::FillFrom(&records, 1, 3000, triple);
  ASSERT_EQ(records.size(), 3000u);
  EXPECT_EQ(records[0], 1u);
  EXPECT_EQ(records[1], 3u);
  EXPECT_EQ(records[1024], 3072u);
  EXPECT_EQ(records[2999], 8997u);
  mp4::FillFrom(&records, 1, 2, triple);
  EXPECT_EQ(records, (std::vector<std::size_t>{1, 3}));
  mp4::FillFrom(&records, 0, 0, triple);
  EXPECT_TRUE(records.empty());
}

TEST(FillFrom, OneByOneIsAmortised) {
  std::vector<int> records;
  int moves = 0;
  for (std::size_t n = 1; n <= 100000; ++n) {
    const int* const before = records.data();
    mp4::FillFrom(&records, n - 1, n,
                  [](std::size_t from, std::size_t, int* out) { *out = static_cast<int>(from); });
    moves += records.data() != before ? 1 : 0;
  }
  EXPECT_LT(moves, 40);
  EXPECT_EQ(records[99999], 99999);
}

}  // namespace
