#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <vector>

#include "io/LazyArray.h"

namespace {

struct Record {
  std::uint64_t a;
  std::uint64_t b;
};

/// Pages of a block that are in memory.
std::size_t ResidentPages(const void* block, std::size_t bytes) {
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto start = reinterpret_cast<std::uintptr_t>(block) / page * page;
  const std::size_t length = reinterpret_cast<std::uintptr_t>(block) + bytes - start;
  std::vector<unsigned char> pages((length + page - 1) / page);
  if (mincore(reinterpret_cast<void*>(start), length, pages.data()) != 0) return SIZE_MAX;
  std::size_t resident = 0;
  for (const unsigned char p : pages) resident += p & 1;
  return resident;
}

}  // namespace

TEST(LazyArray, SmallAndLargeArraysAreZeroAndWritable) {
  for (const std::size_t count : {0u, 1u, 100u, 8190u, 8191u, 8192u, 100000u}) {
    const auto records = mp4::MakeLazyArray<Record>(count);
    ASSERT_NE(records, nullptr) << count;
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(records.get()) % alignof(std::max_align_t), 0u);
    for (std::size_t i = 0; i < count; ++i) {
      ASSERT_EQ(records[i].a | records[i].b, 0u);
      records[i] = {i, ~i};
    }
    for (std::size_t i = 0; i < count; ++i) ASSERT_EQ(records[i].b, ~i);
  }
}

TEST(LazyArray, UntouchedRecordsCostNoMemory) {
  constexpr std::size_t kCount = std::size_t{1} << 26;
  const auto records = mp4::MakeLazyArray<Record>(kCount);
  ASSERT_NE(records, nullptr);
  records[kCount - 1].a = 1;
  EXPECT_EQ(records[kCount / 2].b, 0u);
  // Two touched places and the block's own header; a page may be large.
  EXPECT_LT(ResidentPages(records.get(), kCount * sizeof(Record)), 4096u);
}

TEST(LazyArray, ImpossibleSizesGiveNull) {
  EXPECT_EQ(mp4::MakeLazyArray<Record>(SIZE_MAX), nullptr);
  EXPECT_EQ(mp4::MakeLazyArray<Record>(SIZE_MAX / sizeof(Record) + 2), nullptr);
  EXPECT_EQ(mp4::AllocateLazyZeros(SIZE_MAX), nullptr);
  mp4::FreeLazyZeros(nullptr);
}
