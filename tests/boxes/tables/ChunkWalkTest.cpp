#include <gtest/gtest.h>

#include <array>

#include "boxes/tables/ChunkWalk.h"
#include "tests/Bytes.h"

namespace {

using mp4::ChunkCursor;
using mp4::ChunkMarks;
using mp4::ChunkWalk;

/// Rows of first chunk and samples per chunk; the walk borrows them.
class Table {
 public:
  explicit Table(const std::vector<std::array<std::uint32_t, 2>>& rows) {
    for (const auto& [first, samples] : rows) {
      entries_.AppendBe32(first);
      entries_.AppendBe32(samples);
      entries_.AppendBe32(1);
    }
    count_ = static_cast<std::int32_t>(rows.size());
  }
  ChunkWalk Walk(std::int32_t divisor = 1) const { return {&entries_, count_, divisor}; }

 private:
  mmBuffer entries_;
  std::int32_t count_;
};

/// Chunks 0 and 1 have two samples each, 2 and 3 one, all from 4 on three:
///   chunk   0    1    2  3  4      5
///   sample  0 1  2 3  4  5  6 7 8  9 10 11
Table Mixed() { return Table({{1, 2}, {3, 1}, {5, 3}}); }

/// As many entries, each of one chunk of one sample: sample, chunk and entry are the same.
Table Singles(std::uint32_t n) {
  std::vector<std::array<std::uint32_t, 2>> rows;
  for (std::uint32_t i = 0; i < n; ++i) rows.push_back({i + 1, 1});
  return Table(rows);
}

/// Takes all steps, which one call may leave at the beginning of a chunk or of an entry.
void AdvanceAll(const ChunkWalk& walk, ChunkCursor* at, std::uint32_t steps) {
  for (int calls = 0; steps > 0 && calls < 100; ++calls) steps = walk.Advance(at, steps);
  EXPECT_EQ(steps, 0u);
}

void ExpectAt(const ChunkCursor& at, std::int32_t entry, std::uint32_t chunk, std::uint32_t sample,
              std::uint32_t first) {
  EXPECT_EQ(at.entry, entry);
  EXPECT_EQ(at.chunk, chunk);
  EXPECT_EQ(at.sample, sample);
  EXPECT_EQ(at.firstSample, first);
}

}  // namespace

TEST(ChunkWalk, StartsAtTheFirstSample) {
  const Table table = Mixed();
  const ChunkCursor at = table.Walk().Start();
  ExpectAt(at, 0, 0, 0, 0);
  EXPECT_EQ(at.samplesInChunk, 2);
  EXPECT_EQ(at.nextRunChunk, 2u);
}

TEST(ChunkWalk, StepsInsideAChunk) {
  const Table table = Mixed();
  ChunkCursor at = table.Walk().Start();
  EXPECT_EQ(table.Walk().Advance(&at, 0), 0u);
  ExpectAt(at, 0, 0, 0, 0);
  EXPECT_EQ(table.Walk().Advance(&at, 1), 0u);
  ExpectAt(at, 0, 0, 1, 0);
}

TEST(ChunkWalk, StepsOverChunksOfOneEntry) {
  const Table table = Mixed();
  for (const std::uint32_t steps : {2u, 3u}) {
    ChunkCursor at = table.Walk().Start();
    AdvanceAll(table.Walk(), &at, steps);
    ExpectAt(at, 0, 1, steps, 2);
  }
}

TEST(ChunkWalk, StopsWhereTheNextEntryBegins) {
  const Table table = Mixed();
  ChunkCursor at = table.Walk().Start();
  EXPECT_EQ(table.Walk().Advance(&at, 4), 0u);
  ExpectAt(at, 1, 2, 4, 4);
  at = table.Walk().Start();
  EXPECT_EQ(table.Walk().Advance(&at, 7), 3u);
  ExpectAt(at, 1, 2, 4, 4);
  EXPECT_EQ(at.samplesInChunk, 1);
  EXPECT_EQ(table.Walk().Advance(&at, 3), 1u);
  ExpectAt(at, 2, 4, 6, 6);
  EXPECT_EQ(table.Walk().Advance(&at, 1), 0u);
  ExpectAt(at, 2, 4, 7, 6);
}

TEST(ChunkWalk, LastEntryGoesOnForEver) {
  const Table table = Mixed();
  ChunkCursor at = table.Walk().Entering(2, 6, 4);
  ExpectAt(at, 2, 4, 6, 6);
  AdvanceAll(table.Walk(), &at, 100);
  ExpectAt(at, 2, 37, 106, 105);  // 33 chunks of three and one more
}

TEST(ChunkWalk, EnteringIsWhereTheWalkComesBy) {
  const Table table = Mixed();
  const ChunkCursor at = table.Walk().Entering(1, 4, 2);
  ExpectAt(at, 1, 2, 4, 4);
  EXPECT_EQ(at.samplesInChunk, 1);
  EXPECT_EQ(at.nextRunChunk, 4u);
  ChunkCursor walked = table.Walk().Start();
  table.Walk().Advance(&walked, 4);
  EXPECT_EQ(walked.readPos, at.readPos);
  EXPECT_EQ(walked.nextRunChunk, at.nextRunChunk);
}

TEST(ChunkWalk, CountsAreDivided) {
  const Table table({{1, 200}, {2, 0xFFFFFFF6}});
  EXPECT_EQ(table.Walk(64).Start().samplesInChunk, 3);
  EXPECT_EQ(table.Walk(0).Start().samplesInChunk, 200);
  EXPECT_EQ(table.Walk(-1).Entering(1, 0, 1).samplesInChunk, 10);
  EXPECT_EQ(mp4::DividedCount(7, 1), 7);
  EXPECT_EQ(mp4::DividedCount(7, 2), 3);
}

TEST(ChunkWalk, EmptyTableReadsAsAnEntryOfZeros) {
  const ChunkWalk walk(nullptr, 0, 1);
  ChunkCursor at = walk.Start();
  ExpectAt(at, 0, 0xFFFFFFFF, 0, 0);
  EXPECT_EQ(at.samplesInChunk, 0);
  EXPECT_EQ(walk.Advance(&at, 1000), 0u);
  ExpectAt(at, 0, 0xFFFFFFFF, 1000, 0);
}

TEST(ChunkMarks, BringACursorWithin32Entries) {
  const Table table = Singles(200);
  ChunkMarks marks;
  for (const auto& [target, reached] : std::vector<std::array<std::uint32_t, 2>>{
           {31, 0}, {32, 32}, {33, 32}, {63, 32}, {64, 64}, {199, 192}, {40, 32}, {5, 0}}) {
    ChunkCursor at = table.Walk().Start();
    marks.Approach(table.Walk(), target, &at);
    ExpectAt(at, static_cast<std::int32_t>(reached), reached, reached, reached);
  }
}

TEST(ChunkMarks, NeverLeadBack) {
  const Table table = Singles(200);
  ChunkMarks marks;
  ChunkCursor at = table.Walk().Entering(70, 70, 70);
  marks.Approach(table.Walk(), 80, &at);
  ExpectAt(at, 70, 70, 70, 70);
}

TEST(ChunkMarks, StayRightWhenEntriesAreAppended) {
  const Table few = Singles(40);
  ChunkMarks marks;
  ChunkCursor at = few.Walk().Start();
  marks.Approach(few.Walk(), 39, &at);
  marks.BeforeAppend(40);
  const Table more = Singles(80);
  at = more.Walk().Start();
  marks.Approach(more.Walk(), 79, &at);
  ExpectAt(at, 64, 64, 64, 64);
}

TEST(ChunkMarks, ForgottenMarksAreSetAnew) {
  const Table singles = Singles(40);
  ChunkMarks marks;
  ChunkCursor at = singles.Walk().Start();
  marks.Approach(singles.Walk(), 39, &at);
  marks.Forget();
  std::vector<std::array<std::uint32_t, 2>> rows;
  for (std::uint32_t i = 0; i < 40; ++i) rows.push_back({i + 1, 2});
  const Table pairs(rows);
  at = pairs.Walk().Start();
  marks.Approach(pairs.Walk(), 70, &at);
  ExpectAt(at, 32, 32, 64, 64);
}
