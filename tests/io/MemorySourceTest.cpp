#include <gtest/gtest.h>

#include "io/MemorySource.h"
#include "tests/SourceFixtures.h"

TEST(MemorySource, DeliversWhatLiesInsideAndNoMore) {
  const Bytes bytes = CountingFromZero(10);
  mp4::MemorySource source(bytes.data(), bytes.size());
  unsigned char got[4] = {9, 9, 9, 9};
  EXPECT_EQ(source.Size(), 10u);
  EXPECT_EQ(source.ReadAt(6, got, 4), 4u);
  EXPECT_EQ(got[3], 9);
  EXPECT_EQ(source.ReadAt(7, got, 4), 3u);
  EXPECT_EQ(source.ReadAt(10, got, 4), 0u);
  EXPECT_EQ(source.ReadAt(UINT64_MAX, got, 4), 0u);
  EXPECT_FALSE(source.Failed());
}

TEST(MemorySource, NullIsEmpty) {
  mp4::MemorySource source(nullptr, 10);
  EXPECT_EQ(source.Size(), 0u);
  EXPECT_EQ(source.InMemory(0, 0), nullptr);
}

TEST(MemorySource, ShowsItsBytesInPlace) {
  const Bytes bytes = CountingFromZero(10);
  mp4::MemorySource source(bytes.data(), bytes.size());
  EXPECT_EQ(source.InMemory(3, 7), bytes.data() + 3);
  EXPECT_EQ(source.InMemory(3, 8), nullptr);
  EXPECT_EQ(source.InMemory(UINT64_MAX, 2), nullptr);
}
