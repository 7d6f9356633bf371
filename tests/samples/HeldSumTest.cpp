#include <gtest/gtest.h>

#include "samples/HeldSum.h"

namespace {

constexpr std::int64_t kLargest = 0x7FFFFFFFFFFFFFFF;
constexpr std::int64_t kSmallest = -kLargest - 1;

TEST(HeldSum, AddsWhatFits) {
  EXPECT_EQ(mp4::HeldSum(5, -7), -2);
  EXPECT_EQ(mp4::HeldSum(kLargest - 1, 1), kLargest);
  EXPECT_EQ(mp4::HeldSum(kSmallest + 1, -1), kSmallest);
}

TEST(HeldSum, StaysAtTheEndsOfTheRange) {
  EXPECT_EQ(mp4::HeldSum(kLargest, 1), kLargest);
  EXPECT_EQ(mp4::HeldSum(1, kLargest), kLargest);
  EXPECT_EQ(mp4::HeldSum(kSmallest, -1), kSmallest);
  EXPECT_EQ(mp4::HeldSum(-1, kSmallest), kSmallest);
}

}  // namespace
