#include <gtest/gtest.h>

#include "io/FourCC.h"
#include "samples/RunRows.h"
#include "tests/samples/PlainTables.h"

namespace {

using namespace fixture;
using mp4::RunRows;

/// A table of its own.
struct Loaded {
  explicit Loaded(const std::vector<PlainTables::Run>& runs) {
    Bytes body = Bytes().Be32(static_cast<std::uint32_t>(runs.size()));
    for (const PlainTables::Run& run : runs) body.Be32(run.count).Be32(run.value);
    bytes = FullBox("stts", 0, 0, body);
    source = std::make_unique<mp4::MemorySource>(bytes.data(), bytes.size());
    cached = std::make_unique<mp4::CachedSource>(source.get());
    tree = std::make_unique<mp4::BoxTree>(cached.get());
    rows.Load(tree.get(), tree->Child(mp4::kRootBox, mp4::FourCC("stts")), &problems);
  }
  Bytes bytes;
  std::unique_ptr<mp4::MemorySource> source;
  std::unique_ptr<mp4::CachedSource> cached;
  std::unique_ptr<mp4::BoxTree> tree;
  mp4::SampleProblems problems;
  RunRows rows;
};

/// The row of every sample, and what stands in front of it, counted one by one.
void ExpectEveryPlace(const std::vector<PlainTables::Run>& runs) {
  Loaded loaded(runs);
  RunRows& rows = loaded.rows;
  std::uint64_t first = 0;
  std::uint64_t total = 0;
  for (std::size_t row = 0; row < runs.size(); ++row) {
    for (std::uint64_t index = first; index < first + runs[row].count; ++index) {
      ASSERT_EQ(rows.FindWithoutTotal(index).row, row) << index;
      ASSERT_EQ(rows.FindWithoutTotal(index).first, first) << index;
      ASSERT_EQ(rows.Find(index).row, row) << index;
      ASSERT_EQ(rows.Find(index).first, first) << index;
      ASSERT_EQ(rows.Find(index).total, total) << index;
    }
    first += runs[row].count;
    total += std::uint64_t{runs[row].count} * runs[row].value;
  }
  EXPECT_EQ(rows.Find(first).row, runs.size());
  EXPECT_EQ(rows.Find(first + 1000).total, total);
  EXPECT_EQ(rows.End().first, first);
}

TEST(RunRows, FindsTheRowOfEverySampleWhereAllRowsCountTheSame) {
  for (const std::uint32_t count : {1u, 2u, 7u}) {
    for (const std::size_t n : {1u, 2u, 15u, 16u, 17u, 32u, 33u, 100u}) {
      SCOPED_TRACE(n);
      ExpectEveryPlace(std::vector<PlainTables::Run>(n, {count, 3}));
    }
  }
}

TEST(RunRows, FindsTheRowWhereOneRowOfAMarkDiffers) {
  for (std::size_t odd = 0; odd < 48; ++odd) {
    SCOPED_TRACE(odd);
    for (const std::uint32_t count : {0u, 1u, 3u}) {
      std::vector<PlainTables::Run> runs(48, {2, 5});
      runs[odd] = {count, 9};
      ExpectEveryPlace(runs);
    }
  }
}

TEST(RunRows, FindsTheRowsOfRandomTables) {
  for (std::uint32_t seed = 1; seed <= 100; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    ExpectEveryPlace(RandomRuns(&random, 500, 50, 0));
  }
}

/// The last row with samples that begins at or below a total; behind the last one when all do.
void ExpectEveryTotal(const std::vector<PlainTables::Run>& runs, std::uint64_t most) {
  Loaded loaded(runs);
  for (std::uint64_t total = 0; total <= most; ++total) {
    std::uint64_t before = 0;
    std::size_t found = 0;
    for (std::size_t row = 0; row < runs.size(); ++row) {
      if (runs[row].count == 0) continue;
      if (before <= total) found = row;
      before += std::uint64_t{runs[row].count} * runs[row].value;
    }
    if (before <= total) found = runs.size();
    const RunRows::Place place = loaded.rows.FindTotal(total);
    ASSERT_EQ(place.row, found) << total;
    // What is remembered of it changes no other answer.
    ASSERT_EQ(loaded.rows.Find(place.first).first, place.first) << total;
    ASSERT_EQ(loaded.rows.Find(0).first, 0u) << total;
  }
}

TEST(RunRows, FindsTheRowInWhichATotalIsPassed) {
  ExpectEveryTotal({{2, 10}, {3, 5}}, 50);
  ExpectEveryTotal({{4, 10}}, 50);
  ExpectEveryTotal(std::vector<PlainTables::Run>(50, {1, 3}), 200);
  ExpectEveryTotal({{1, 10}, {0, 7}, {5, 0}, {1, 10}}, 30);
}

TEST(RunRows, WithoutRowsEverythingIsBehindThem) {
  Loaded loaded({});
  EXPECT_EQ(loaded.rows.Find(0).row, 0u);
  EXPECT_EQ(loaded.rows.Rows(), 0u);
  EXPECT_EQ(loaded.rows.LastValue(), 0u);
}

TEST(RunRows, ATotalIsFoundInFrontOfRowsThatLeave64Bits) {
  std::vector<PlainTables::Run> runs{{1, 3000}, {1, 5999}};
  runs.resize(100, {0xFFFFFFFF, 0xFFFFFFFF});
  Loaded loaded(runs);
  EXPECT_EQ(loaded.rows.FindTotal(2999).row, 0U);
  EXPECT_EQ(loaded.rows.FindTotal(3000).row, 1U);
  EXPECT_EQ(loaded.rows.FindTotal(8999).row, 2U);
  EXPECT_EQ(loaded.rows.FindTotal(std::uint64_t{1} << 60).row, 2U);
}

TEST(RunRows, WithoutATableEverythingIsBehindIt) {
  RunRows rows;
  EXPECT_EQ(rows.FindTotal(0).row, 0U);
  rows.Foresee(1000);
  EXPECT_EQ(rows.Find(1000).first, 0U);
}

TEST(RunRows, TheLastValueIsThatOfARowWithSamples) {
  EXPECT_EQ(Loaded({{1, 10}, {2, 20}, {0, 30}}).rows.LastValue(), 20u);
}

}  // namespace
