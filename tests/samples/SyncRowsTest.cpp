#include <gtest/gtest.h>

#include "samples/SyncRows.h"
#include "tests/TreeFixtures.h"
#include "tests/samples/SampleFixtures.h"

namespace {

using namespace fixture;

struct Sync {
  explicit Sync(const Words& numbers) : over(Stss(numbers)) {
    rows.Load(&over.tree, over.At("stss"), &problems);
  }

  TreeOver over;
  mp4::SampleProblems problems;
  mp4::SyncRows rows;
};

/// Numbers that a cursor meets from one on.
Numbers From(const mp4::SyncRows& rows, std::uint64_t number) {
  Numbers met;
  mp4::SyncCursor cursor = mp4::CursorAt(rows, number);
  for (; cursor.number != ~std::uint64_t{0}; cursor.Advance()) met.push_back(cursor.number);
  return met;
}

}  // namespace

TEST(SyncRows, WithoutABoxThereAreNone) {
  const mp4::SyncRows rows;
  EXPECT_FALSE(rows.IsThere());
  EXPECT_EQ(0U, rows.RowsUpTo(100));
  EXPECT_FALSE(rows.Names(1));
}

TEST(SyncRows, AnEmptyBoxNamesNoSample) {
  const Sync sync({});
  EXPECT_TRUE(sync.rows.IsThere());
  EXPECT_FALSE(sync.rows.Names(1));
  EXPECT_EQ(Numbers{}, From(sync.rows, 0));
}

TEST(SyncRows, RowsUpToANumberAreCounted) {
  const Sync sync({3, 10, 11, 4000000000});
  EXPECT_EQ(0U, sync.rows.RowsUpTo(2));
  EXPECT_EQ(1U, sync.rows.RowsUpTo(3));
  EXPECT_EQ(1U, sync.rows.RowsUpTo(9));
  EXPECT_EQ(3U, sync.rows.RowsUpTo(11));
  EXPECT_EQ(3U, sync.rows.RowsUpTo(3999999999));
  EXPECT_EQ(4U, sync.rows.RowsUpTo(UINT64_MAX));
  EXPECT_TRUE(sync.rows.Names(10));
  EXPECT_FALSE(sync.rows.Names(9));
}

TEST(SyncRows, NumbersOutOfOrderAreSortedAndKeptOnce) {
  const Sync sync({9, 2, 9, 5, 2});
  EXPECT_EQ(3U, sync.rows.Rows());
  EXPECT_EQ(2U, sync.rows.NumberAt(0));
  EXPECT_EQ(9U, sync.rows.NumberAt(2));
  EXPECT_TRUE(sync.problems.Kept().empty());
  const Sync twice({2, 5, 5});
  EXPECT_EQ(2U, twice.rows.Rows());
}

TEST(SyncRows, ACursorBeginsAtTheFirstNumberNotBelow) {
  const Sync sync({3, 10, 11});
  EXPECT_EQ((Numbers{3, 10, 11}), From(sync.rows, 0));
  EXPECT_EQ((Numbers{3, 10, 11}), From(sync.rows, 3));
  EXPECT_EQ((Numbers{10, 11}), From(sync.rows, 4));
  EXPECT_EQ((Numbers{11}), From(sync.rows, 11));
  EXPECT_EQ(Numbers{}, From(sync.rows, 12));
}
