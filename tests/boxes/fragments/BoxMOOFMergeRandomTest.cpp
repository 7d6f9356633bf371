#include <gtest/gtest.h>

#include <random>

#include "tests/FragmentFixtures.h"

namespace {

using fixture::FragmentedMovie;
using fixture::Words;

/// The merge as it is defined: sample by sample, each value looked up for each sample.
namespace reference {

struct Sample {
  std::uint32_t duration, size, flags;
};

Sample Look(const BoxTFHD& tfhd, const BoxTRUN& trun, const BoxTREX& trex, std::uint32_t i) {
  Sample s{};
  s.duration =
      (tfhd.tf_flags & 0x08) != 0 ? tfhd.default_sample_duration : trex.default_sample_duration;
  s.size = (tfhd.tf_flags & 0x10) != 0 ? tfhd.default_sample_size : trex.default_sample_size;
  s.flags = (tfhd.tf_flags & 0x20) != 0 ? tfhd.default_sample_flags : trex.default_sample_flags;
  if (i == 0 && (trun.tr_flags & 0x004) != 0) s.flags = trun.first_sample_flags;
  if ((trun.tr_flags & 0x100) != 0) s.duration = trun.entries[i].duration;
  if ((trun.tr_flags & 0x200) != 0) s.size = trun.entries[i].size;
  if ((trun.tr_flags & 0x400) != 0) s.flags = trun.entries[i].flags;
  return s;
}

void AppendChunk(BoxSTBL* tables, const BoxTFHD& tfhd, const BoxTRUN& trun, const BoxTREX& trex,
                 std::uint32_t bytes) {
  std::uint64_t offset = (tfhd.tf_flags & 0x01) != 0 ? tfhd.base_data_offset : bytes;
  if ((trun.tr_flags & 0x001) != 0) {
    const std::uint64_t upper = (trun.data_offset & 0x80000000) != 0 ? 0xFFFFFFFF00000000 : 0;
    offset += upper | trun.data_offset;
  }
  if (tables->chunkOffsetBox != nullptr) tables->chunkOffsetBox->AppendChunk(offset);
  if (tables->sampleToChunkBox == nullptr) return;
  tables->sampleToChunkBox->AppendSampleToChunk((tfhd.tf_flags & 0x02) != 0
                                                    ? tfhd.sample_description_index
                                                    : trex.default_sample_description_index,
                                                trun.sample_count);
}

void MergeTrack(BoxSTBL* tables, const BoxTRAF& traf, const BoxTREX& trex) {
  std::uint32_t bytes = 0;
  for (const auto& trun : traf.runs) {
    for (std::uint32_t i = 0; i < trun->sample_count; ++i) {
      const Sample s = Look(*traf.header, *trun, trex, i);
      if (tables->sampleSizeBox != nullptr) tables->sampleSizeBox->AppendSize(s.size);
      if (tables->timeToSampleBox != nullptr) {
        tables->timeToSampleBox->AppendTime(s.duration);
        if (i + 1 == trun->sample_count) tables->timeToSampleBox->OptimizeAudio();
      }
      if (i == 0) AppendChunk(tables, *traf.header, *trun, trex, bytes);
      const bool sync = (s.flags & 0x10000) == 0;
      if (tables->sampleSizeBox != nullptr && tables->syncSampleBox != nullptr && sync) {
        tables->syncSampleBox->AppendRAP(tables->sampleSizeBox->GetSampleCount());
      }
      bytes += s.size;
    }
  }
}

}  // namespace reference

class Dice {
 public:
  explicit Dice(unsigned seed) : engine(seed) {}
  std::uint32_t Word() { return static_cast<std::uint32_t>(engine()); }
  std::uint32_t Below(std::uint32_t n) { return Word() % n; }
  bool OneIn(std::uint32_t n) { return Below(n) == 0; }
  /// Mostly one of a few values, so that neighbours are often equal; sometimes any.
  std::uint32_t Value() {
    constexpr std::uint32_t kUsual[] = {0, 1, 200, 1024, 0x10000, 0x10001};
    return OneIn(12) ? Word() : kUsual[Below(6)];
  }

 private:
  std::mt19937 engine;
};

Bytes Header(Dice* dice) {
  const std::uint32_t flags = dice->Word() & 0x03003B;
  Bytes fields;
  if ((flags & 0x01) != 0) fields.Be64(dice->Word());
  for (const std::uint32_t bit : {0x02, 0x08, 0x10, 0x20}) {
    if ((flags & bit) != 0) fields.Be32(dice->Value());
  }
  return fixture::Tfhd(flags, 1, fields);
}

/// A run, one in three of which claims more entries than it holds.
Bytes Run(Dice* dice) {
  const std::uint32_t flags = dice->Word() & (dice->OneIn(3) ? 0x005 : 0xF05);
  const std::uint32_t count = dice->OneIn(4) ? dice->Below(300) : dice->Below(6);
  std::uint32_t width = 0;
  for (std::uint32_t bit = 0x100; bit <= 0x800; bit <<= 1) width += (flags & bit) != 0 ? 1 : 0;
  std::uint32_t words = width * count;
  if (dice->OneIn(3)) words = dice->Below(words + 1);
  for (const std::uint32_t bit : {0x01, 0x04}) words += (flags & bit) != 0 ? 1 : 0;
  Words values;
  for (std::uint32_t i = 0; i < words; ++i) values.push_back(dice->Value());
  return fixture::Trun(flags, count, values);
}

/// One track fragment read from its own bytes, so that entries may be missing at their end.
Bytes Fragment(Dice* dice) {
  Bytes children = Header(dice);
  const std::uint32_t runs = dice->Below(4);
  for (std::uint32_t i = 0; i < runs; ++i) children.Append(Run(dice));
  return fixture::Traf(children);
}

/// A movie of one track, equal for equal seeds.
struct TwinMovie {
  explicit TwinMovie(unsigned seed) {
    Dice dice(seed);
    if (dice.OneIn(2)) movie.context.SetMovMode();
    constexpr char kHandlers[3][5] = {"vide", "soun", "text"};
    tables = &movie.AddTrack(1, kHandlers[dice.Below(3)]);
    movie.record->samplesPerPacket = dice.Below(4);
    movie.record->channels = dice.Below(3);
    movie.record->compressionId = dice.OneIn(2) ? -2 : 0;
    if (dice.OneIn(3)) movie.record->bitsPerSample = 16;
    LoadTables(&dice);
    DropTables(&dice);
    movie.Extend(fixture::Trex(1, dice.Value(), dice.Value(), dice.Value(), dice.Below(3)));
    trex = movie.moov.movieExtendsBox->trackExtends[0].get();
  }

  void LoadTables(Dice* dice) {
    if (dice->OneIn(3)) return;
    const std::uint32_t n = dice->Below(5);
    const Bytes sizes =
        dice->OneIn(2) ? fixture::StszConstant(200, n) : fixture::Stsz(Words(n, dice->Value()));
    movie.Load(*tables, fixture::Stts({{n, dice->Value()}}), fixture::Stsc({{1, n}}), sizes,
               fixture::Stco({7}), fixture::Stss({1}));
  }

  void DropTables(Dice* dice) {
    if (dice->OneIn(12)) tables->sampleSizeBox.reset();
    if (dice->OneIn(12)) tables->timeToSampleBox.reset();
    if (dice->OneIn(12)) tables->chunkOffsetBox.reset();
    if (dice->OneIn(12)) tables->sampleToChunkBox.reset();
    if (dice->OneIn(3)) tables->syncSampleBox.reset();
  }

  FragmentedMovie movie;
  BoxSTBL* tables = nullptr;
  BoxTREX* trex = nullptr;
};

void ExpectSameTables(BoxSTBL& a, BoxSTBL& b) {
  if (a.sampleSizeBox != nullptr) {
    EXPECT_EQ(fixture::Sizes(a), fixture::Sizes(b));
  }
  if (a.timeToSampleBox != nullptr) {
    EXPECT_EQ(a.timeToSampleBox->GetTotalSamples(), b.timeToSampleBox->GetTotalSamples());
    for (int i = 0; i <= a.timeToSampleBox->GetTotalSamples() + 2; ++i) {
      ASSERT_EQ(a.timeToSampleBox->GetPTS(i), b.timeToSampleBox->GetPTS(i));
      ASSERT_EQ(a.timeToSampleBox->GetSampleDuration(i), b.timeToSampleBox->GetSampleDuration(i));
    }
  }
  if (a.chunkOffsetBox != nullptr) {
    EXPECT_EQ(fixture::Offsets(a), fixture::Offsets(b));
  }
  if (a.syncSampleBox != nullptr) {
    EXPECT_EQ(a.syncSampleBox->GetEntryCount(), b.syncSampleBox->GetEntryCount());
    for (int i = -1; i < 1000; ++i) {
      ASSERT_EQ(a.syncSampleBox->GetSampleIndexBeforeThis(i),
                b.syncSampleBox->GetSampleIndexBeforeThis(i));
    }
  }
  if (a.sampleToChunkBox == nullptr) return;
  a.sampleToChunkBox->ReadyToDemux();
  b.sampleToChunkBox->ReadyToDemux();
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(a.sampleToChunkBox->GetCurChunkIndex(), b.sampleToChunkBox->GetCurChunkIndex());
    ASSERT_EQ(a.sampleToChunkBox->NextSample(), b.sampleToChunkBox->NextSample());
  }
}

std::vector<std::int64_t> Numbers(const Mp4Context::TRACK& t) {
  std::vector<std::int64_t> n{
      t.numSamples,       t.duration,      t.frameRateNum,     t.frameRateDen,    t.bitRate,
      t.totalSampleBytes, t.maxSampleSize, t.constSampleCount, t.constSampleSize, t.syncTableState};
  for (const auto& e : t.timeToSampleTable) n.insert(n.end(), {e.sampleCount, e.sampleDelta});
  for (const auto& e : t.sampleSizeTable) n.push_back(e.sampleSize);
  for (const auto& e : t.chunkOffsetTable) n.push_back(static_cast<std::int64_t>(e.chunkOffset));
  for (const auto& e : t.sampleToChunkTable) {
    n.insert(n.end(), {e.firstChunk, e.samplesPerChunk, e.sampleDescriptionIndex});
  }
  return n;
}

TEST(BoxMOOFMergeRandom, MergingARunAtOnceAgreesWithSampleBySample) {
  for (unsigned seed = 0; seed < 1500 && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    TwinMovie merged(seed);
    TwinMovie plain(seed);
    Dice dice(seed + 1000000);
    for (std::uint32_t i = dice.Below(4); i > 0; --i) {
      fixture::PayloadRead<BoxTRAF> traf(Fragment(&dice));
      ASSERT_TRUE(traf.ok);
      if (traf.read.header == nullptr) continue;
      BoxMOOF().MergeTrack(merged.movie.moov.tracks[1].get(), &traf.read, merged.trex);
      reference::MergeTrack(plain.tables, traf.read, *plain.trex);
    }
    ExpectSameTables(*merged.tables, *plain.tables);
    EXPECT_EQ(Numbers(*merged.movie.record), Numbers(*plain.movie.record));
  }
}

}  // namespace
