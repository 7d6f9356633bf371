#include <gtest/gtest.h>

#include "samples/SampleColumns.h"
#include "tests/samples/PlainTables.h"

namespace {

using namespace fixture;
using mp4::Sample;
using mp4::SampleCursor;

constexpr std::uint32_t kSeeds = 60;

/// The plain tables of a seed, a movie of them, and its samples one by one.
struct Twins {
  explicit Twins(std::uint32_t seed)
      : random(seed), tables(RandomPlainTables(&random)), open(tables.File()) {
    plain = tables.Samples(open.bytes.size());
  }
  std::mt19937 random;
  PlainTables tables;
  OpenMovie open;
  std::vector<Sample> plain;
};

void ExpectSamples(const std::vector<Sample>& found, const std::vector<Sample>& plain) {
  ASSERT_EQ(found.size(), plain.size());
  for (std::size_t i = 0; i < plain.size(); ++i) ASSERT_TRUE(found[i] == plain[i]) << i + 1;
}

TEST(SampleCursor, WalksAsThePlainRulesSay) {
  std::size_t samples = 0;
  for (std::uint32_t seed = 1; seed <= kSeeds; ++seed) {
    SCOPED_TRACE(seed);
    Twins twins(seed);
    samples += twins.plain.size();
    ASSERT_NO_FATAL_FAILURE(ExpectSamples(AllSamples(&twins.open.Only()), twins.plain));
  }
  EXPECT_GT(samples, 5000u);
}

TEST(SampleCursor, TakesAnyNumberAtOnce) {
  for (std::uint32_t seed = 1; seed <= kSeeds; ++seed) {
    SCOPED_TRACE(seed);
    Twins twins(seed);
    std::vector<Sample> found;
    SampleCursor cursor(&twins.open.Only());
    for (;;) {
      Sample some[300];
      Sample one;
      const std::size_t most = twins.random() % 300 + 1;
      const std::size_t n = cursor.Next(some, most);
      found.insert(found.end(), some, some + n);
      if (n < most || !cursor.Next(&one)) break;
      found.push_back(one);
    }
    ASSERT_NO_FATAL_FAILURE(ExpectSamples(found, twins.plain));
  }
}

TEST(SampleCursor, GoesOnFromWhereItSeeks) {
  for (std::uint32_t seed = 1; seed <= kSeeds; ++seed) {
    SCOPED_TRACE(seed);
    Twins twins(seed);
    SampleCursor cursor(&twins.open.Only());
    for (std::size_t first = 1; first <= twins.plain.size(); first += twins.random() % 9 + 1) {
      ASSERT_TRUE(cursor.Seek(first));
      Sample sample;
      for (std::size_t i = first - 1; i < std::min(first + 20, twins.plain.size()); ++i) {
        ASSERT_TRUE(cursor.Next(&sample));
        ASSERT_TRUE(sample == twins.plain[i]) << first << " to " << i + 1;
      }
    }
  }
}

TEST(SampleCursor, IsAtTheEndBehindASampleThatIsNotThere) {
  OpenMovie open(TableMovie{}.File());
  SampleCursor cursor(&open.Only());
  Sample sample;
  EXPECT_TRUE(cursor.Next(&sample));
  EXPECT_FALSE(cursor.Seek(5));
  EXPECT_FALSE(cursor.Next(&sample));
  EXPECT_FALSE(cursor.Seek(0));
  EXPECT_FALSE(cursor.Next(&sample));
  EXPECT_TRUE(cursor.Seek(4));
  EXPECT_TRUE(cursor.Next(&sample));
  EXPECT_EQ(sample.offset, 4000u);
}

TEST(SampleCursor, FillsColumnsAsThePlainRulesSay) {
  for (std::uint32_t seed = 1; seed <= kSeeds; ++seed) {
    SCOPED_TRACE(seed);
    Twins twins(seed);
    const std::size_t all = twins.plain.size();
    std::vector<std::uint64_t> offsets(all);
    std::vector<std::uint32_t> sizes(all), durations(all);
    std::vector<std::int64_t> decodeTimes(all), compositionTimes(all);
    mp4::SampleColumns columns;
    columns.offsets = offsets.data();
    columns.sizes = sizes.data();
    columns.decodeTimes = decodeTimes.data();
    columns.compositionTimes = compositionTimes.data();
    columns.durations = durations.data();
    ASSERT_EQ(mp4::FillColumns(&twins.open.Only(), 1, all, columns), all);
    for (std::size_t i = 0; i < all; ++i) {
      ASSERT_EQ(offsets[i], twins.plain[i].offset);
      ASSERT_EQ(sizes[i], twins.plain[i].size);
      ASSERT_EQ(decodeTimes[i], twins.plain[i].decodeTime);
      ASSERT_EQ(compositionTimes[i], twins.plain[i].compositionTime);
      ASSERT_EQ(durations[i], twins.plain[i].duration);
    }
  }
}

/// Sixteen samples are taken ahead: marks of one sample must not reach into the next take.
TEST(SampleCursor, MarksSamplesOnBothSidesOfATake) {
  TableMovie m;
  m.stsz = StszConstant(10, 40);
  m.stsc = Stsc({{1, 40}});
  m.stco = Stco({100});
  m.more = Stss({1, 16, 17, 33}) + BoxOf32("stps", {2, 16, 18});
  OpenMovie open(m.File());
  for (const Sample& sample : AllSamples(&open.Only())) {
    const std::uint64_t n = sample.number;
    EXPECT_EQ(sample.sync, n == 1 || n == 16 || n == 17 || n == 33 ? kYes : kNo) << n;
    EXPECT_EQ(sample.partialSync, n == 16 || n == 18) << n;
  }
}

TEST(SampleCursor, StaysOutsideOfTheSourceUntilTheNextChunk) {
  TableMovie m;
  const auto size = static_cast<std::uint32_t>(m.File().size());
  m.stco = Stco({size + 4 - 30, 1000});
  m.stsc = Stsc({{1, 3}, {2, 1}});  // 10 and 20 bytes fit exactly, 30 more do not
  OpenMovie open(m.File());
  EXPECT_EQ(open.bytes.size(), size + 4);  // one map row more, two chunks fewer
  EXPECT_EQ(Column(open.Only(), &Sample::outside), (std::vector<bool>{false, false, true, false}));
}

}  // namespace
