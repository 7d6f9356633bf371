#include <gtest/gtest.h>

#include "io/ScanControl.h"

namespace {

constexpr std::int64_t kMiB = 1024 * 1024;

}  // namespace

TEST(ScanControl, HeadersAreOnePerEightBytesAndASpareShare) {
  mp4::ScanControl scan(800);
  for (std::int64_t i = 0; i < 100 + 512 * 1024; ++i) ASSERT_TRUE(scan.TakeHeader());
  EXPECT_FALSE(scan.TakeHeader());
}

TEST(ScanControl, AllowancesGrowWithTheSource) {
  mp4::ScanControl scan(1000);
  EXPECT_TRUE(scan.TakeBytes(4000 + 16 * kMiB));
  EXPECT_FALSE(scan.TakeBytes(1));
  EXPECT_TRUE(scan.TakeMemory(6000 + 64 * kMiB));
  EXPECT_FALSE(scan.TakeMemory(1));
  EXPECT_TRUE(scan.TakeMerge(6000 + 64 * kMiB));
  EXPECT_FALSE(scan.TakeMerge(1));
  EXPECT_TRUE(scan.TakeInflated(16000 + 256 * kMiB));
  EXPECT_FALSE(scan.TakeInflated(1));
}

TEST(ScanControl, KnowsTheFirstTrackOfAnID) {
  mp4::ScanControl scan(0);
  EXPECT_EQ(scan.NoteTrack(7, 0), 0);
  EXPECT_EQ(scan.NoteTrack(8, 1), 1);
  EXPECT_EQ(scan.NoteTrack(7, 2), 0);
  mp4::ScanControl inner(0, &scan);
  EXPECT_EQ(inner.NoteTrack(8, 3), 1);
}

TEST(ScanControl, KnowsNoTrackWhenOneWasNotNoted) {
  mp4::ScanControl scan(0);
  EXPECT_EQ(scan.NoteTrack(7, 1), -1);
  EXPECT_EQ(scan.NoteTrack(7, 0), 0);
  EXPECT_EQ(scan.NoteTrack(7, 2), -1);
}

TEST(ScanControl, RefusedChargeSpendsTheRest) {
  mp4::ScanControl scan(0);
  EXPECT_TRUE(scan.TakeBytes(16 * kMiB - 1));
  EXPECT_FALSE(scan.TakeBytes(2));
  EXPECT_FALSE(scan.TakeBytes(1));
  EXPECT_TRUE(scan.TakeBytes(0));
}

TEST(ScanControl, InnerSourceDrawsOnTheOuterAccount) {
  mp4::ScanControl outer(0);
  mp4::ScanControl inner(1000, &outer);
  mp4::ScanControl innermost(1000, &inner);
  EXPECT_TRUE(innermost.TakeInflated(256 * kMiB));
  EXPECT_FALSE(inner.TakeInflated(1));
  EXPECT_FALSE(outer.TakeInflated(1));
  EXPECT_TRUE(innermost.TakeMemory(64 * kMiB));
  EXPECT_FALSE(outer.TakeMemory(1));
  EXPECT_TRUE(inner.TakeMerge(64 * kMiB));
  EXPECT_FALSE(outer.TakeMerge(1));
}

TEST(ScanControl, InnerSourceWidensWhatMayBeRead) {
  mp4::ScanControl outer(0);
  mp4::ScanControl inner(1000, &outer);
  EXPECT_EQ(inner.sourceSize, 1000);
  EXPECT_TRUE(inner.TakeBytes(16 * kMiB + 4000));
  EXPECT_FALSE(outer.TakeBytes(1));
  for (std::int64_t i = 0; i < 512 * 1024 + 3; ++i) ASSERT_TRUE(inner.TakeHeader());
  EXPECT_FALSE(outer.TakeHeader());
}

TEST(ScanControl, InnerSourceInheritsUnreadTables) {
  mp4::ScanControl outer(0);
  EXPECT_FALSE(mp4::ScanControl(10, &outer).tablesUnread);
  outer.tablesUnread = true;
  EXPECT_TRUE(mp4::ScanControl(10, &outer).tablesUnread);
}

TEST(ScanControl, SparseFileOfTheLargestSizeDoesNotOverflow) {
  mp4::ScanControl scan(INT64_MAX);
  EXPECT_EQ(scan.sourceSize, INT64_MAX);
  EXPECT_TRUE(scan.TakeBytes(std::int64_t{1} << 57));
  EXPECT_TRUE(scan.TakeMemory(std::int64_t{1} << 57));
  EXPECT_TRUE(scan.TakeInflated(std::int64_t{1} << 57));
  EXPECT_FALSE(scan.TakeBytes(INT64_MAX));
}
