#include <gtest/gtest.h>

#include "io/RangeSource.h"
#include "tests/SourceFixtures.h"

TEST(RangeSource, NamesTheBytesItNeeds) {
  const Bytes bytes = CountingFromZero(100000);
  mp4::RangeSource source(bytes.size());
  unsigned char got[100];
  EXPECT_EQ(source.ReadAt(0, got, 8), 0u);
  EXPECT_EQ(source.Trouble().fault, mp4::SourceFault::kBytesNeeded);
  EXPECT_EQ(source.Trouble().offset, 0u);
  EXPECT_EQ(source.Trouble().size, 68u * 1024);
  source.Add(0, bytes.data(), 50);
  source.StartOver();
  EXPECT_EQ(source.ReadAt(40, got, 20), 10u);
  EXPECT_EQ(source.Trouble().offset, 50u);
  EXPECT_EQ(source.Trouble().size, 16u * 1024);
}

TEST(RangeSource, NeedsNoBytesBehindTheEnd) {
  mp4::RangeSource source(100);
  unsigned char got[100];
  EXPECT_EQ(source.ReadAt(90, got, 100), 0u);
  EXPECT_EQ(source.Trouble().size, 10u);
}

TEST(RangeSource, JoinsRangesAndKeepsWhatWasFirst) {
  const Bytes bytes = CountingFromZero(100);
  const Bytes other = Bytes().Fill(100, 0xEE);
  mp4::RangeSource source(100);
  source.Add(20, bytes.data() + 20, 10);
  source.Add(50, bytes.data() + 50, 10);
  source.Add(10, other.data(), 60);  // fills 10-19, 30-49 and 60-69
  source.Add(95, other.data(), 60);  // only 5 of them exist
  unsigned char got[100];
  EXPECT_EQ(source.ReadAt(10, got, 60), 60u);
  EXPECT_FALSE(source.Failed());
  EXPECT_EQ(got[9], 0xEE);
  EXPECT_EQ(got[10], 20);
  EXPECT_EQ(got[19], 29);
  EXPECT_EQ(got[20], 0xEE);
  EXPECT_EQ(got[39], 0xEE);
  EXPECT_EQ(got[40], 50);
  EXPECT_EQ(got[59], 0xEE);
  EXPECT_EQ(source.ReadAt(95, got, 60), 5u);
  EXPECT_FALSE(source.Failed());
  EXPECT_EQ(source.InMemory(20, 11), nullptr);
  EXPECT_NE(source.InMemory(20, 10), nullptr);
}
