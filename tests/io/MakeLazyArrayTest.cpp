#include <gtest/gtest.h>

#include <cstdint>

#include "io/MakeLazyArray.h"

namespace {

using mp4::CostOfLazyArray;
using mp4::MakeLazyArray;
using mp4::PageMemory;

constexpr std::size_t kHuge = PageMemory::kHugePage;

TEST(MakeLazyArray, SmallArraysAreZeroAndWritable) {
  auto small = MakeLazyArray<std::uint32_t>(255);
  ASSERT_NE(small, nullptr);
  EXPECT_EQ(small.get_deleter().mapped, 0u);
  EXPECT_EQ(small[254], 0u);
  small[254] = 7;
  EXPECT_EQ(small[254], 7u);
}

TEST(MakeLazyArray, UntouchedZerosAreMappedFromOneKiB) {
  auto mapped = MakeLazyArray<std::uint32_t>(256);
  ASSERT_NE(mapped, nullptr);
  EXPECT_EQ(mapped.get_deleter().mapped, 1024u);
  EXPECT_EQ(mapped[255], 0u);
  mapped[0] = 7;
  EXPECT_EQ(mapped[0], 7u);
}

TEST(MakeLazyArray, ElementsThatWillBeWrittenAreNotMapped) {
  EXPECT_EQ(MakeLazyArray<std::uint32_t>(100000, 99999).get_deleter().mapped, 0u);
  EXPECT_EQ(MakeLazyArray<std::uint32_t>(100000, 50000).get_deleter().mapped, 400000u);
}

TEST(MakeLazyArray, HugeArraysCostNoMemoryUntilWritten) {
  auto huge = MakeLazyArray<unsigned char>(std::size_t{1} << 34);
  ASSERT_NE(huge, nullptr);
  EXPECT_EQ(huge[(std::size_t{1} << 34) - 1], 0);
}

TEST(MakeLazyArray, FailsWhereThereIsNoAddressSpace) {
  EXPECT_EQ(MakeLazyArray<unsigned char>(std::size_t{1} << 60), nullptr);
}

TEST(MakeLazyArray, FailsWhereTheBytesCannotBeCounted) {
  EXPECT_EQ(MakeLazyArray<std::uint32_t>(SIZE_MAX), nullptr);
  EXPECT_EQ(MakeLazyArray<std::uint32_t>(SIZE_MAX / 4 + 1000), nullptr);
}

TEST(MakeLazyArray, UntouchedZerosAreChargedAMappingAndAByteFor4KiB) {
  EXPECT_EQ(CostOfLazyArray(0, 0), 0);
  EXPECT_EQ(CostOfLazyArray(0, 1023), 1023);
  EXPECT_EQ(CostOfLazyArray(0, 1024), 1024);
  EXPECT_EQ(CostOfLazyArray(0, std::size_t{1} << 30), (1 << 18) + 1024);
}

TEST(MakeLazyArray, WrittenBytesAreChargedAsWholePagesWhereTheRestIsMapped) {
  const PageMemory pages(4096);
  EXPECT_EQ(CostOfLazyArray(16, 1008, pages), 1024);
  EXPECT_EQ(CostOfLazyArray(16, 1024, pages), 4096 + 1024);
  EXPECT_EQ(CostOfLazyArray(4096, 4096, pages), 4096 + 1024 + 1);
  EXPECT_EQ(CostOfLazyArray(4112, 1024, pages), 8192 + 1024);
}

TEST(MakeLazyArray, WrittenBytesAreChargedAsWholePagesOf64KiB) {
  const PageMemory pages(65536);
  EXPECT_EQ(CostOfLazyArray(16, 1008, pages), 1024);
  EXPECT_EQ(CostOfLazyArray(16, 1024, pages), 65536 + 1024);
  EXPECT_EQ(CostOfLazyArray(65552, 4096, pages), 131072 + 1024 + 1);
  EXPECT_EQ(CostOfLazyArray(0, std::size_t{1} << 30, pages), (1 << 18) + 1024);
}

TEST(NewBytes, LargeArraysStartAtAHugePage) {
  for (const std::size_t size : {kHuge * 3 / 4, kHuge, kHuge + 1, 3 * kHuge - 1}) {
    auto bytes = mp4::NewBytes(size);
    ASSERT_NE(bytes, nullptr) << size;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes.get()) % kHuge, 0u) << size;
    bytes[0] = 1;
    bytes[size - 1] = 2;
    EXPECT_EQ(bytes[0], 1);
  }
}

TEST(NewBytes, AreMappedFromThreeQuartersOfAHugePage) {
  EXPECT_EQ(mp4::NewBytes(kHuge * 3 / 4 - 1).get_deleter().mapped, 0u);
  EXPECT_EQ(mp4::NewBytes(kHuge * 3 / 4).get_deleter().mapped, kHuge);
}

TEST(NewBytes, AreMappedInThePagesOfTheSystem) {
  EXPECT_EQ(mp4::NewBytes(kHuge + 4097, PageMemory(4096)).get_deleter().mapped, kHuge + 8192);
  EXPECT_EQ(mp4::NewBytes(kHuge + 4097, PageMemory(65536)).get_deleter().mapped, kHuge + 65536);
}

TEST(NewBytes, FailWhereThereIsNoAddressSpace) {
  EXPECT_EQ(mp4::NewBytes(std::size_t{1} << 60), nullptr);
  EXPECT_EQ(mp4::NewBytes(SIZE_MAX), nullptr);
  EXPECT_EQ(mp4::NewBytes(SIZE_MAX - (std::size_t{4} << 20)), nullptr);
}

}  // namespace
