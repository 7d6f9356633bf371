#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

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

TEST(LazyArray, HugePagesKeepTheBytes) {
  std::vector<unsigned char> bytes(std::size_t{9} << 20, 0x5A);
  mp4::PreferHugePages(bytes.data(), bytes.size());
  mp4::PreferHugePages(bytes.data() + 1, 3);
  mp4::PreferHugePages(nullptr, 0);
  for (const unsigned char byte : bytes) ASSERT_EQ(byte, 0x5A);
}

TEST(LazyArray, LargeArraysOfBytesStartAtAHugePage) {
  constexpr std::size_t kHuge = std::size_t{2} << 20;
  for (const std::size_t size : {kHuge * 3 / 4, kHuge, kHuge + 1, 3 * kHuge - 1}) {
    auto bytes = mp4::NewBytes(size);
    ASSERT_NE(bytes, nullptr) << size;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes.get()) % kHuge, 0u) << size;
    bytes[0] = 1;
    bytes[size - 1] = 2;
    EXPECT_EQ(bytes[0], 1);
  }
}

TEST(LazyArray, LastHugePageOfBytesIsWholeUnlessThatTakesHalfAsMuchAgain) {
  constexpr std::size_t kHuge = std::size_t{2} << 20;
  EXPECT_EQ(mp4::NewBytes(kHuge * 3 / 4 - 1).get_deleter().mapped, 0u);
  EXPECT_EQ(mp4::NewBytes(kHuge * 3 / 4).get_deleter().mapped, kHuge);
  EXPECT_EQ(mp4::NewBytes(kHuge + 4097).get_deleter().mapped, kHuge + 8192);
  EXPECT_EQ(mp4::NewBytes(2 * kHuge + 4097).get_deleter().mapped, 3 * kHuge);
  EXPECT_EQ(mp4::NewBytes(2 * kHuge - 4096).get_deleter().mapped, 2 * kHuge);
}

TEST(LazyArray, BytesFailWhereThereIsNoAddressSpace) {
  EXPECT_EQ(mp4::NewBytes(std::size_t{1} << 60), nullptr);
  EXPECT_EQ(mp4::NewBytes(SIZE_MAX), nullptr);
  EXPECT_EQ(mp4::NewBytes(SIZE_MAX - (std::size_t{4} << 20)), nullptr);
}

TEST(LazyArray, MovedFromPointersTakeOrdinaryArrays) {
  auto bytes = mp4::NewBytes(std::size_t{2} << 20);
  auto owner = std::move(bytes);
  bytes.reset(new unsigned char[8]);
  EXPECT_EQ(bytes.get_deleter().mapped, 0u);
  EXPECT_NE(owner.get_deleter().mapped, 0u);
  owner = std::make_unique<unsigned char[]>(8);
  EXPECT_EQ(owner.get_deleter().mapped, 0u);
}

TEST(LazyArray, FillFromMakesTheElementsFromThereOn) {
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

TEST(LazyArray, FillFromOneByOneIsAmortised) {
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
