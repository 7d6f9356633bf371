#include <gtest/gtest.h>

#include "samples/SampleAt.h"
#include "tests/FragmentFixtures.h"
#include "tests/samples/PlainTables.h"

namespace {

using namespace fixture;
using mp4::Sample;
using mp4::SampleAt;

TEST(SampleAt, FindsEverySampleAsThePlainRulesSay) {
  for (std::uint32_t seed = 1; seed <= 60; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const PlainTables tables = RandomPlainTables(&random);
    OpenMovie open(tables.File());
    const std::vector<Sample> plain = tables.Samples(open.bytes.size());
    std::vector<std::size_t> order(plain.size());
    for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
    std::shuffle(order.begin(), order.end(), random);
    SampleAt at(&open.Only());
    for (const std::size_t i : order) {
      Sample sample;
      sample.partialSync = sample.elsewhere = sample.outside = true;  // nothing stays as it was
      sample.fragment = sample.description = 9;
      sample.depends = 9;
      ASSERT_TRUE(at.Find(i + 1, &sample));
      ASSERT_TRUE(sample == plain[i]) << i + 1;
    }
    Sample none;
    EXPECT_FALSE(at.Find(0, &none));
    EXPECT_FALSE(at.Find(plain.size() + 1, &none));
  }
}

/// Runs are cut into pieces of 128 rows.
TEST(SampleAt, FindsSamplesOnBothSidesOfEveryPieceOfARun) {
  Words rows;
  for (std::uint32_t i = 0; i < 300; ++i) rows.insert(rows.end(), {i + 1, i % 3});
  TableMovie m;
  m.mvex = Mvex(Trex(1));
  Words words{16};
  words.insert(words.end(), rows.begin(), rows.end());
  m.behind = Moof(Mfhd(1) + Traf(Tfhd(0x20008, 1, Bytes().Be32(7)) + Trun(0xA01, 300, words)));
  OpenMovie open(m.File());
  SampleAt at(&open.Only());
  std::uint64_t bytes = 0;
  Sample first;
  ASSERT_TRUE(at.Find(5, &first));
  for (std::uint32_t i = 0; i < 300; ++i) {
    Sample sample;
    ASSERT_TRUE(at.Find(5 + i, &sample));
    EXPECT_EQ(sample.offset, first.offset + bytes);
    EXPECT_EQ(sample.size, i + 1);
    EXPECT_EQ(sample.decodeTime, 400 + 7 * std::int64_t{i});
    EXPECT_EQ(sample.compositionTime, 400 + 7 * std::int64_t{i} + i % 3);
    EXPECT_EQ(sample.fragment, 1u);
    bytes += i + 1;
  }
}

TEST(SampleAt, SaysOfALongRunOfLargeSamplesThatItIsOutside) {
  TableMovie m;
  m.mvex = Mvex(Trex(1));
  // 0xFFFFFFFF samples of 0xFFFFFFFF bytes: their sum is just below 2^64.
  m.behind =
      Moof(Mfhd(1) + Traf(Tfhd(0x20018, 1, Be32s({1, 0xFFFFFFFF})) + Trun(0x1, 0xFFFFFFFF, {100})));
  OpenMovie open(m.File());
  Sample sample;
  ASSERT_TRUE(SampleAt(&open.Only()).Find(0xFFFFFFFF, &sample));
  EXPECT_TRUE(sample.outside);
  mp4::SampleCursor cursor(&open.Only());
  ASSERT_TRUE(cursor.Seek(0xFFFFFFFF));
  ASSERT_TRUE(cursor.Next(&sample));
  EXPECT_TRUE(sample.outside);
}

}  // namespace
