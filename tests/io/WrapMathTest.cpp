#include <gtest/gtest.h>

#include "io/WrapMath.h"

namespace {

constexpr std::int64_t kMax = INT64_MAX;
constexpr std::int64_t kMin = INT64_MIN;
constexpr std::int32_t kMax32 = INT32_MAX;
constexpr std::int32_t kMin32 = INT32_MIN;

}  // namespace

TEST(WrapMath, SumsWrap) {
  EXPECT_EQ(mp4::WrapAdd(2, -5), -3);
  EXPECT_EQ(mp4::WrapAdd(kMax, 1), kMin);
  EXPECT_EQ(mp4::WrapAdd(kMin, -1), kMax);
  EXPECT_EQ(mp4::WrapAdd32(kMax32, 1), kMin32);
  EXPECT_EQ(mp4::WrapAdd32(kMin32, -1), kMax32);
}

TEST(WrapMath, DifferencesWrap) {
  EXPECT_EQ(mp4::WrapSub(2, 5), -3);
  EXPECT_EQ(mp4::WrapSub(kMin, 1), kMax);
  EXPECT_EQ(mp4::WrapSub(0, kMin), kMin);
  EXPECT_EQ(mp4::WrapSub32(kMin32, 1), kMax32);
}

TEST(WrapMath, ProductsWrap) {
  EXPECT_EQ(mp4::WrapMul(-3, 7), -21);
  EXPECT_EQ(mp4::WrapMul(kMax, 2), -2);
  EXPECT_EQ(mp4::WrapMul(kMin, -1), kMin);
  EXPECT_EQ(mp4::WrapMul32(kMax32, 2), -2);
  EXPECT_EQ(mp4::WrapMul32(0x10000, 0x10000), 0);
}

TEST(WrapMath, QuotientsTruncateTowardZero) {
  EXPECT_EQ(mp4::WrapDiv(7, 2), 3);
  EXPECT_EQ(mp4::WrapDiv(-7, 2), -3);
  EXPECT_EQ(mp4::WrapDiv32(-7, 2), -3);
}

TEST(WrapMath, DivisorZeroCountsAsOne) {
  EXPECT_EQ(mp4::WrapDiv(-7, 0), -7);
  EXPECT_EQ(mp4::WrapDiv32(-7, 0), -7);
}

TEST(WrapMath, DivisionByMinusOneNegatesWithWrap) {
  EXPECT_EQ(mp4::WrapDiv(7, -1), -7);
  EXPECT_EQ(mp4::WrapDiv(kMin, -1), kMin);
  EXPECT_EQ(mp4::WrapDiv32(kMin32, -1), kMin32);
}

TEST(WrapMath, TruncationKeepsTheLowerHalf) {
  EXPECT_EQ(mp4::Truncate32(0x100000005), 5);
  EXPECT_EQ(mp4::Truncate32(0x80000000), kMin32);
  EXPECT_EQ(mp4::Truncate32(-1), -1);
  EXPECT_EQ(mp4::Truncate32(kMin), 0);
}
