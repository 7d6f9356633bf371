#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <vector>

#include "io/PageMemory.h"

namespace {

using mp4::PageMemory;

constexpr std::size_t kHuge = std::size_t{2} << 20;

TEST(PageMemory, SystemsPagesAreThoseTheSystemNames) {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  EXPECT_EQ(PageMemory::System().WholePages(1), page);
  EXPECT_EQ(PageMemory::System().WholePages(page), page);
  EXPECT_EQ(PageMemory::System().WholePages(page + 1), 2 * page);
}

TEST(PageMemory, WholePagesOf4KiB) {
  const PageMemory pages(4096);
  EXPECT_EQ(pages.WholePages(0), 0u);
  EXPECT_EQ(pages.WholePages(1), 4096u);
  EXPECT_EQ(pages.WholePages(4096), 4096u);
  EXPECT_EQ(pages.WholePages(4097), 8192u);
}

TEST(PageMemory, WholePagesOf64KiB) {
  const PageMemory pages(65536);
  EXPECT_EQ(pages.WholePages(0), 0u);
  EXPECT_EQ(pages.WholePages(1), 65536u);
  EXPECT_EQ(pages.WholePages(65536), 65536u);
  EXPECT_EQ(pages.WholePages(65537), 131072u);
}

TEST(PageMemory, MappedZerosCostNoMemoryUntilWritten) {
  constexpr std::size_t kBytes = std::size_t{1} << 34;
  auto* const block = static_cast<unsigned char*>(PageMemory::MapZeros(kBytes));
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(block[kBytes - 1], 0);
  block[0] = 7;
  EXPECT_EQ(block[0], 7);
  PageMemory::Unmap(block, kBytes);
}

TEST(PageMemory, MappingFailsWhereThereIsNoAddressSpace) {
  std::size_t mapped = 0;
  EXPECT_EQ(PageMemory::MapZeros(std::size_t{1} << 60), nullptr);
  EXPECT_EQ(PageMemory::System().MapHugePages(std::size_t{1} << 60, &mapped), nullptr);
  EXPECT_EQ(PageMemory::System().MapHugePages(SIZE_MAX, &mapped), nullptr);
  EXPECT_EQ(PageMemory::System().MapHugePages(SIZE_MAX - 2 * kHuge + 1, &mapped), nullptr);
}

/// Bytes mapped for so many; the block is written from end to end and released.
std::size_t MappedFor(const PageMemory& pages, std::size_t bytes) {
  std::size_t mapped = 0;
  auto* const block = static_cast<unsigned char*>(pages.MapHugePages(bytes, &mapped));
  EXPECT_NE(block, nullptr) << bytes;
  if (block == nullptr) return 0;
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % kHuge, 0u) << bytes;
  block[0] = 1;
  block[bytes - 1] = 2;
  EXPECT_EQ(block[0], 1);
  PageMemory::Unmap(block, mapped);
  return mapped;
}

TEST(PageMemory, LastHugePageIsWholeUnlessThatTakesHalfAsMuchAgain) {
  const PageMemory pages(4096);
  EXPECT_EQ(MappedFor(pages, kHuge * 3 / 4), kHuge);
  EXPECT_EQ(MappedFor(pages, kHuge), kHuge);
  EXPECT_EQ(MappedFor(pages, kHuge + 4097), kHuge + 8192);
  EXPECT_EQ(MappedFor(pages, 2 * kHuge - 4096), 2 * kHuge);
  EXPECT_EQ(MappedFor(pages, 2 * kHuge + 4097), 3 * kHuge);
}

TEST(PageMemory, HugePagesEndAtWholePagesOf64KiB) {
  const PageMemory pages(65536);
  EXPECT_EQ(MappedFor(pages, kHuge * 3 / 4), kHuge);
  EXPECT_EQ(MappedFor(pages, kHuge + 4097), kHuge + 65536);
  EXPECT_EQ(MappedFor(pages, kHuge + 65537), kHuge + 131072);
  EXPECT_EQ(MappedFor(pages, 2 * kHuge + 4097), 3 * kHuge);
}

TEST(PageMemory, PreferringHugePagesKeepsTheBytes) {
  std::vector<unsigned char> bytes(std::size_t{9} << 20, 0x5A);
  PageMemory::PreferHugePages(bytes.data(), bytes.size());
  PageMemory::PreferHugePages(bytes.data() + 1, 3);
  PageMemory::PreferHugePages(nullptr, 0);
  for (const unsigned char byte : bytes) ASSERT_EQ(byte, 0x5A);
}

}  // namespace
