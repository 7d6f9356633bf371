#include <gtest/gtest.h>

#include "io/FourCC.h"
#include "samples/ChunkRows.h"
#include "tests/TreeFixtures.h"
#include "tests/samples/SampleFixtures.h"

namespace {

using namespace fixture;
using mp4::ChunkRows;

/// A map over so many chunks, at 10, 20, 30 and so on, that holds `entries` entries.
struct Chunks {
  Chunks(const std::vector<ChunkRun>& map, std::uint32_t chunks, std::uint64_t entries,
         const ChunkRows::PackingOf& packing = nullptr)
      : over(Stsc(map) + Stco(Offsets(chunks))) {
    rows.LoadMap(&over.tree, over.At("stsc"), &problems);
    rows.LoadOffsets(&over.tree, over.At("stco"), &problems);
    rows.Count(entries, packing, &problems);
  }
  static Words Offsets(std::uint32_t n) {
    Words offsets;
    for (std::uint32_t i = 1; i <= n; ++i) offsets.push_back(10 * i);
    return offsets;
  }

  TreeOver over;
  mp4::SampleProblems problems;
  ChunkRows rows;
};

void ExpectRow(const ChunkRows::Row& row, std::size_t index, std::uint64_t firstChunk,
               std::uint64_t endChunk, std::uint64_t firstSample) {
  EXPECT_EQ(index, row.index);
  EXPECT_EQ(firstChunk, row.firstChunk);
  EXPECT_EQ(endChunk, row.endChunk);
  EXPECT_EQ(firstSample, row.firstSample);
}

}  // namespace

// Chunks 1 and 2 with three samples, chunk 3 with one, chunks 4 and 5 with two.
TEST(ChunkRows, ASampleIsInTheRowOfItsChunk) {
  const Chunks c({{1, 3}, {3, 1, 2}, {4, 2}}, 5, 11);
  EXPECT_EQ(11U, c.rows.Samples());
  EXPECT_EQ(5U, c.rows.Chunks());
  ExpectRow(c.rows.FindSample(0), 0, 0, 2, 0);
  ExpectRow(c.rows.FindSample(5), 0, 0, 2, 0);
  ExpectRow(c.rows.FindSample(6), 1, 2, 3, 6);
  EXPECT_EQ(2U, c.rows.FindSample(6).description);
  ExpectRow(c.rows.FindSample(7), 2, 3, 5, 7);
  ExpectRow(c.rows.FindSample(10), 2, 3, 5, 7);
  EXPECT_TRUE(c.problems.Kept().empty());
}

TEST(ChunkRows, RowsFollowOneAnother) {
  const Chunks c({{1, 3}, {3, 1}, {4, 2}}, 5, 11);
  ChunkRows::Row row = c.rows.First();
  ExpectRow(row, 0, 0, 2, 0);
  row = c.rows.Next(row);
  ExpectRow(row, 1, 2, 3, 6);
  row = c.rows.Next(c.rows.Next(row));
  EXPECT_EQ(c.rows.Rows(), row.index) << "behind the last";
}

TEST(ChunkRows, OffsetsAreOf32Or64Bits) {
  const Chunks narrow({{1, 1}}, 3, 3);
  EXPECT_EQ(30U, narrow.rows.OffsetOf(2));
  TreeOver over(Co64({5, 0x100000007}));
  mp4::SampleProblems problems;
  ChunkRows wide;
  wide.LoadOffsets(&over.tree, over.At("co64"), &problems);
  EXPECT_EQ(2U, wide.Chunks());
  EXPECT_EQ(0x100000007U, wide.OffsetOf(1));
}

TEST(ChunkRows, MoreSizesThanChunksHoldAreSaid) {
  const Chunks c({{1, 2}}, 3, 9);
  EXPECT_EQ(6U, c.rows.Samples());
  ASSERT_EQ(1U, c.problems.Kept().size());
  EXPECT_EQ(mp4::SampleFault::kFewerInChunks, c.problems.Kept()[0].fault);
  EXPECT_EQ(9U, c.problems.Kept()[0].says);
  EXPECT_EQ(6U, c.problems.Kept()[0].holds);
}

TEST(ChunkRows, FewerSizesThanChunksHoldEndInsideAChunk) {
  const Chunks c({{1, 4}, {3, 5}}, 4, 11);
  EXPECT_EQ(11U, c.rows.Samples());
  EXPECT_EQ(11U, c.rows.Entries());
  EXPECT_TRUE(c.problems.Kept().empty());
}

TEST(ChunkRows, RowsThatDoNotRiseArePassedOver) {
  const Chunks c({{1, 1}, {3, 2}, {3, 9}, {2, 9}, {4, 3}}, 4, 7);
  EXPECT_EQ(3U, c.rows.Rows());
  EXPECT_EQ(7U, c.rows.Samples()) << "1, 1, 2 and 3";
  ASSERT_EQ(1U, c.problems.Kept().size());
  EXPECT_EQ(mp4::SampleFault::kRowsDoNotRise, c.problems.Kept()[0].fault);
  EXPECT_EQ(5U, c.problems.Kept()[0].says);
  EXPECT_EQ(3U, c.problems.Kept()[0].holds);
}

TEST(ChunkRows, AFirstChunkOfZeroIsTheFirst) {
  const Chunks c({{0, 2}, {2, 1}}, 2, 3);
  ExpectRow(c.rows.First(), 0, 0, 1, 0);
  EXPECT_EQ(3U, c.rows.Samples());
  EXPECT_TRUE(Has(c.problems, mp4::SampleFault::kFirstChunksUnnamed, mp4::FourCC("stsc")));
}

TEST(ChunkRows, RowsBehindTheLastChunkHoldNothing) {
  const Chunks c({{1, 2}, {3, 2}, {9, 2}}, 4, 8);
  EXPECT_EQ(8U, c.rows.Samples());
  ExpectRow(c.rows.FindSample(7), 1, 2, 4, 4);
}

// Many rows have marks to begin from; row i has i % 3 + 1 samples in its only chunk.
TEST(ChunkRows, ManyRowsAreFoundLikeByWalking) {
  std::vector<ChunkRun> map;
  for (std::uint32_t i = 0; i < 200; ++i) map.push_back({i + 1, i % 3 + 1});
  const Chunks c(map, 200, 399);
  ASSERT_EQ(399U, c.rows.Samples()) << "66 times 1 + 2 + 3, then 1 and 2";
  std::uint64_t sample = 0;
  for (std::uint32_t i = 0; i < 200; ++i) {
    for (std::uint32_t k = 0; k < i % 3 + 1; ++k) {
      ExpectRow(c.rows.FindSample(sample + k), i, i, i + 1, sample);
      EXPECT_EQ(i, c.rows.FindEntry(sample + k).index);
    }
    sample += i % 3 + 1;
  }
}

// Ten entries a chunk, four of which are a packet: packets of 4, 4 and 2 entries.
TEST(ChunkRows, PacketsTakeSeveralEntries) {
  const Chunks c({{1, 10}}, 3, 30, [](std::uint32_t) { return mp4::Packing{4, 8}; });
  EXPECT_TRUE(c.rows.Packs());
  EXPECT_EQ(30U, c.rows.Entries());
  EXPECT_EQ(9U, c.rows.Samples());
  const std::uint64_t sampleOf[] = {0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 3, 3};
  for (std::uint64_t entry = 0; entry < 12; ++entry) {
    EXPECT_EQ(sampleOf[entry], c.rows.SampleOf(entry)) << entry;
  }
  const std::uint64_t entryOf[] = {0, 4, 8, 10, 14, 18, 20};
  for (std::uint64_t sample = 0; sample < 7; ++sample) {
    EXPECT_EQ(entryOf[sample], c.rows.EntryOf(sample)) << sample;
  }
}

TEST(ChunkRows, PacketsDependOnTheDescription) {
  const Chunks c({{1, 4, 1}, {2, 4, 2}}, 2, 7, [](std::uint32_t description) {
    return mp4::Packing{description == 1 ? 1U : 2U, 0};
  });
  EXPECT_EQ(6U, c.rows.Samples()) << "four, and 3 entries in packets of two";
  EXPECT_EQ(4U, c.rows.EntryOf(4));
  EXPECT_EQ(6U, c.rows.EntryOf(5));
  EXPECT_EQ(5U, c.rows.SampleOf(6));
}

TEST(ChunkRows, WithoutPacketsAnEntryIsASample) {
  const Chunks c({{1, 2}}, 2, 4);
  EXPECT_FALSE(c.rows.Packs());
  EXPECT_EQ(3U, c.rows.SampleOf(3));
  EXPECT_EQ(3U, c.rows.EntryOf(3));
}
