#include <gtest/gtest.h>

#include <cstdint>

#include "io/LazyArray.h"

namespace {

TEST(LazyArray, SmallArraysAreZeroAndWritable) {
  auto small = mp4::MakeLazyArray<std::uint32_t>(255);
  ASSERT_NE(small, nullptr);
  EXPECT_EQ(small.get_deleter().mapped, 0u);
  EXPECT_EQ(small[254], 0u);
  small[254] = 7;
  EXPECT_EQ(small[254], 7u);
}

TEST(LazyArray, UntouchedZerosAreMappedFromOneKiB) {
  auto mapped = mp4::MakeLazyArray<std::uint32_t>(256);
  ASSERT_NE(mapped, nullptr);
  EXPECT_EQ(mapped.get_deleter().mapped, 1024u);
  EXPECT_EQ(mapped[255], 0u);
  mapped[0] = 7;
  EXPECT_EQ(mapped[0], 7u);
}

TEST(LazyArray, ElementsThatWillBeWrittenAreNotMapped) {
  EXPECT_EQ(mp4::MakeLazyArray<std::uint32_t>(100000, 99999).get_deleter().mapped, 0u);
  EXPECT_EQ(mp4::MakeLazyArray<std::uint32_t>(100000, 50000).get_deleter().mapped, 400000u);
}

TEST(LazyArray, HugeArraysCostNoMemoryUntilWritten) {
  auto huge = mp4::MakeLazyArray<unsigned char>(std::size_t{1} << 34);
  ASSERT_NE(huge, nullptr);
  EXPECT_EQ(huge[(std::size_t{1} << 34) - 1], 0);
}

TEST(LazyArray, AnOrdinaryArrayMayTakeItsPlace) {
  auto array = mp4::MakeLazyArray<std::uint32_t>(1000);
  array.reset(new std::uint32_t[2]{1, 2});
  EXPECT_EQ(array.get_deleter().mapped, 0u);
  array = std::make_unique<std::uint32_t[]>(3);
  EXPECT_EQ(array[2], 0u);
}

TEST(LazyArray, FailsWhereThereIsNoAddressSpace) {
  EXPECT_EQ(mp4::MakeLazyArray<unsigned char>(std::size_t{1} << 60), nullptr);
}

TEST(LazyArray, FailsWhereTheBytesCannotBeCounted) {
  EXPECT_EQ(mp4::MakeLazyArray<std::uint32_t>(SIZE_MAX), nullptr);
  EXPECT_EQ(mp4::MakeLazyArray<std::uint32_t>(SIZE_MAX / 4 + 1000), nullptr);
}

TEST(LazyArray, CostOfZeros) {
  EXPECT_EQ(mp4::CostOfZeros(0), 0u);
  EXPECT_EQ(mp4::CostOfZeros(1023), 1023u);
  EXPECT_EQ(mp4::CostOfZeros(1024), 1024u);
  EXPECT_EQ(mp4::CostOfZeros(std::size_t{1} << 30), (std::size_t{1} << 18) + 1024);
}

TEST(LazyArray, WholePages) {
  EXPECT_EQ(mp4::WholePages(0), 0u);
  EXPECT_EQ(mp4::WholePages(1), 4096u);
  EXPECT_EQ(mp4::WholePages(4096), 4096u);
  EXPECT_EQ(mp4::WholePages(4097), 8192u);
}

}  // namespace
