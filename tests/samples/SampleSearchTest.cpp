#include <gtest/gtest.h>

#include <random>

#include "samples/SampleColumns.h"
#include "samples/SampleSearch.h"
#include "samples/Search.h"
#include "tests/FragmentFixtures.h"
#include "tests/samples/SampleFixtures.h"

namespace {

using namespace fixture;
using mp4::Sample;

/// What the rules say, worked out over all samples.
std::uint64_t LastDecodedBy(const std::vector<Sample>& samples, std::int64_t time) {
  std::uint64_t found = 0;
  for (const Sample& sample : samples) {
    if (sample.decodeTime <= time) found = sample.number;
  }
  return found;
}
std::uint64_t LatestComposedBy(const std::vector<Sample>& samples, std::int64_t time) {
  const Sample* found = nullptr;
  for (const Sample& sample : samples) {
    if (sample.compositionTime > time) continue;
    if (found == nullptr || sample.compositionTime >= found->compositionTime) found = &sample;
  }
  return found != nullptr ? found->number : 0;
}

void ExpectSame(const Sample& a, const Sample& b) {
  EXPECT_EQ(a.number, b.number);
  EXPECT_EQ(a.offset, b.offset);
  EXPECT_EQ(a.size, b.size);
  EXPECT_EQ(a.decodeTime, b.decodeTime);
  EXPECT_EQ(a.compositionTime, b.compositionTime);
  EXPECT_EQ(a.duration, b.duration);
  EXPECT_EQ(a.description, b.description);
  EXPECT_EQ(a.fragment, b.fragment);
  EXPECT_EQ(a.sync, b.sync);
  EXPECT_EQ(a.isProtected, b.isProtected);
  EXPECT_EQ(a.depends, b.depends);
  EXPECT_EQ(a.outside, b.outside);
  EXPECT_EQ(a.partialSync, b.partialSync);
}

/// Every look-up against the walk.
void ExpectLookUpsMatchTheWalk(mp4::Track* track) {
  const std::vector<Sample> samples = AllSamples(track);
  ASSERT_EQ(track->SampleCount(), samples.size());
  std::uint64_t sync = 0;
  for (std::size_t i = samples.size(); i > 0; --i) {
    Sample found;
    ASSERT_TRUE(track->At(i, &found));
    ExpectSame(found, samples[i - 1]);
  }
  std::vector<std::int64_t> times{-1, 0, 1, 1 << 30};
  for (const Sample& sample : samples) {
    if (sample.sync == kYes) sync = sample.number;
    ASSERT_EQ(track->SyncAtOrBefore(sample.number), sync);
    for (const std::int64_t near : {-1, 0, 1}) {
      times.push_back(sample.decodeTime + near);
      times.push_back(sample.compositionTime + near);
    }
  }
  for (const std::int64_t time : times) {
    ASSERT_EQ(track->NumberAtDecodeTime(time), LastDecodedBy(samples, time)) << time;
    ASSERT_EQ(track->NumberAtCompositionTime(time), LatestComposedBy(samples, time)) << time;
  }
  Sample none;
  EXPECT_FALSE(track->At(0, &none));
  EXPECT_FALSE(track->At(samples.size() + 1, &none));
}

TEST(SampleSearch, FindsBetweenSamplesAndAtTheirEdges) {
  OpenMovie open(TableMovie{}.File());
  mp4::Track& track = open.Only();
  EXPECT_EQ(track.NumberAtDecodeTime(-1), 0u);
  EXPECT_EQ(track.NumberAtDecodeTime(0), 1u);
  EXPECT_EQ(track.NumberAtDecodeTime(99), 1u);
  EXPECT_EQ(track.NumberAtDecodeTime(100), 2u);
  EXPECT_EQ(track.NumberAtDecodeTime(1000000), 4u);
}

TEST(SampleSearch, FindsTheFrameShownWhenFramesAreReordered) {
  TableMovie m;  // shown in the order 1 3 4 2
  m.more =
      FullBox("ctts", 0, 0, Bytes().Be32(4) + Be32s({1, 0, 1, 200, 1, 0xFFFFFF9C, 1, 0xFFFFFF9C}));
  OpenMovie open(m.File());
  mp4::Track& track = open.Only();
  EXPECT_EQ(track.NumberAtCompositionTime(0), 1u);
  EXPECT_EQ(track.NumberAtCompositionTime(150), 3u);
  EXPECT_EQ(track.NumberAtCompositionTime(250), 4u);
  EXPECT_EQ(track.NumberAtCompositionTime(300), 2u);
}

/// Run rows that fill `samples`, now and then too few, too many or empty.
Words RandomRows(std::mt19937* random, std::uint32_t samples, std::uint32_t values,
                 std::int32_t least) {
  Words rows;
  std::uint32_t filled = 0;
  while (filled < samples) {
    const std::uint32_t count = (*random)() % 9 == 0 ? 0 : (*random)() % 5 + 1;
    rows.push_back(count);
    rows.push_back((*random)() % values + static_cast<std::uint32_t>(least));
    filled += count;
    if ((*random)() % 60 == 0) break;
  }
  return rows;
}

Bytes Rows(std::string_view type, std::size_t width, const Words& words) {
  return FullBox(type, 0, 0,
                 Bytes().Be32(static_cast<std::uint32_t>(words.size() / width)) + Be32s(words));
}

TableMovie RandomTables(std::mt19937* random) {
  TableMovie m;
  const std::uint32_t n = (*random)() % 300;
  Words sizes, offsets, chunks;
  for (std::uint32_t i = 0; i < n; ++i) sizes.push_back((*random)() % 50);
  m.stsz = (*random)() % 5 == 0 ? StszConstant((*random)() % 3 + 1, n) : Stsz(sizes);
  const std::uint32_t chunkCount = (*random)() % 40 + 1;
  for (std::uint32_t i = 0; i < chunkCount; ++i) offsets.push_back((*random)() % 12000);
  m.stco = Stco(offsets);
  for (std::uint32_t first = 1; first <= chunkCount; first += (*random)() % 6 + 1) {
    chunks.insert(chunks.end(), {first, static_cast<unsigned>((*random)() % 12),
                                 static_cast<unsigned>((*random)() % 2 + 1)});
  }
  m.stsc = Rows("stsc", 3, chunks);
  m.stts = Rows("stts", 2, RandomRows(random, n, (*random)() % 2 == 0 ? 3 : 100, 0));
  m.more = Bytes();
  if ((*random)() % 3 != 0) m.more.Append(Rows("ctts", 2, RandomRows(random, n, 200, -100)));
  if ((*random)() % 3 != 0) {
    Words sync;
    for (std::uint32_t i = 1; i <= n; ++i) {
      if ((*random)() % 7 == 0) sync.push_back(i);
    }
    m.more.Append(Stss(sync));
  }
  if ((*random)() % 4 == 0) m.more.Append(FullBox("sdtp", 0, 0, Bytes().Fill(n, 0x24)));
  return m;
}

/// Random fragments with every kind of run.
Bytes RandomFragments(std::mt19937* random) {
  Bytes moofs;
  const std::uint32_t count = (*random)() % 6;
  for (std::uint32_t i = 0; i < count; ++i) {
    Bytes runs;
    for (std::uint32_t r = (*random)() % 3; r > 0; --r) {
      const std::uint32_t fields = (*random)() % 16;
      const std::uint32_t samples = (*random)() % 200;
      const bool first = (*random)() % 2 == 0;
      Words words{static_cast<unsigned>((*random)() % 9000)};
      if (first) words.push_back(0);
      for (std::uint32_t s = 0; s < samples; ++s) {
        if ((fields & 1) != 0) words.push_back((*random)() % 60);
        if ((fields & 2) != 0) words.push_back((*random)() % 60);
        if ((fields & 4) != 0) words.push_back((*random)() % 9 == 0 ? 0 : 0x10000);
        if ((fields & 8) != 0) words.push_back((*random)() % 100 - 50);
      }
      runs.Append(Trun(0x1 | (first ? 0x4 : 0) | fields << 8, samples, words));
    }
    Bytes tfdt;
    if ((*random)() % 3 == 0) tfdt = FullBox("tfdt", 0, 0, Bytes().Be32((*random)() % 20000));
    moofs.Append(
        Moof(Mfhd(i + 1) + Traf(Tfhd(0x20008, 1, Bytes().Be32((*random)() % 40)) + tfdt + runs)));
  }
  return moofs;
}

TEST(SampleSearch, AgreesWithAWalkOverRandomTables) {
  for (std::uint32_t seed = 1; seed <= 150; ++seed) {
    std::mt19937 random(seed);
    OpenMovie open(RandomTables(&random).File());
    SCOPED_TRACE(seed);
    ExpectLookUpsMatchTheWalk(&open.Only());
    if (testing::Test::HasFailure()) return;
  }
}

TEST(SampleSearch, AgreesWithAWalkOverRandomFragments) {
  for (std::uint32_t seed = 1; seed <= 150; ++seed) {
    std::mt19937 random(seed);
    TableMovie m = RandomTables(&random);
    m.mvex = Mvex(Trex(1));
    m.behind = RandomFragments(&random);
    OpenMovie open(m.File());
    SCOPED_TRACE(seed);
    ExpectLookUpsMatchTheWalk(&open.Only());
    if (testing::Test::HasFailure()) return;
  }
}

TEST(SampleSearch, ColumnsHoldWhatTheWalkGives) {
  for (std::uint32_t seed = 1; seed <= 20; ++seed) {
    std::mt19937 random(seed);
    TableMovie m = RandomTables(&random);
    m.behind = RandomFragments(&random);
    m.mvex = Mvex(Trex(1));
    OpenMovie open(m.File());
    const std::vector<Sample> samples = AllSamples(&open.Only());
    for (const std::size_t first : {std::size_t{1}, samples.size() / 2 + 1}) {
      std::vector<std::uint64_t> offsets(samples.size() + 1, 99);
      std::vector<std::uint8_t> flags(samples.size() + 1, 99);
      std::vector<std::int64_t> times(samples.size() + 1, 99);
      mp4::SampleColumns columns;
      columns.offsets = offsets.data();
      columns.flags = flags.data();
      columns.compositionTimes = times.data();
      const std::size_t n = mp4::FillColumns(&open.Only(), first, samples.size(), columns);
      ASSERT_EQ(n, first <= samples.size() ? samples.size() - first + 1 : 0);
      for (std::size_t i = 0; i < n; ++i) {
        const Sample& sample = samples[first - 1 + i];
        EXPECT_EQ(offsets[i], sample.offset);
        EXPECT_EQ(times[i], sample.compositionTime);
        EXPECT_EQ((flags[i] & mp4::SampleColumns::kSync) != 0, sample.sync == kYes);
        EXPECT_EQ((flags[i] & mp4::SampleColumns::kOutside) != 0, sample.outside);
      }
      EXPECT_EQ(offsets[n], 99u);
      EXPECT_EQ(flags[n], 99u);
    }
  }
}

TEST(SampleSearch, TheLastKeyNotAboveIsFoundFromAnyGuess) {
  for (std::size_t n = 1; n < 40; ++n) {
    std::vector<std::uint64_t> keys;
    for (std::size_t i = 0; i < n; ++i) keys.push_back(i / 2 * 3);
    for (std::uint64_t value = 0; value < 70; ++value) {
      std::size_t expected = 0;
      for (std::size_t i = 0; i < n; ++i) {
        if (keys[i] <= value) expected = i;
      }
      for (std::size_t guess = 0; guess <= n; ++guess) {
        ASSERT_EQ(mp4::LastNotAbove(n, guess, value, [&](std::size_t i) { return keys[i]; }),
                  expected);
      }
    }
  }
}

}  // namespace
