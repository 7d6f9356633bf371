#include <gtest/gtest.h>

#include "io/Limits.h"
#include "tests/FragmentFixtures.h"

namespace {

using fixture::DecodeTimes;
using fixture::FragmentedMovie;
using fixture::Moof;
using fixture::Offsets;
using fixture::Sizes;
using fixture::SyncSamples;
using fixture::Tfhd;
using fixture::Traf;
using fixture::Trex;
using fixture::Trun;
using fixture::Words;
using Times = std::vector<long long>;
using Places = std::vector<std::uint64_t>;

constexpr std::uint32_t kNotSync = 0x10000;

/// One video track of ID 1 with empty tables and the usual defaults: duration 1024, size 200, no
/// sync samples.
class BoxMOOFMerge : public ::testing::Test {
 protected:
  BoxMOOFMerge() : tables(movie.AddTrack(1, "vide")) { movie.Extend(Trex(1)); }

  /// Merges a fragment of track 1 whose header has the given flags and fields.
  void MergeRuns(const Bytes& runs, std::uint32_t flags = 0, const Bytes& fields = {}) {
    movie.Merge(Moof(Traf(Tfhd(flags, 1, fields) + runs)));
  }

  FragmentedMovie movie;
  BoxSTBL& tables;
};

// The values of a sample.

TEST_F(BoxMOOFMerge, ARunWithoutFieldsTakesTheTracksDefaults) {
  MergeRuns(Trun(0x001, 3, {40}));
  EXPECT_EQ(Sizes(tables), (Words{200, 200, 200}));
  EXPECT_EQ(DecodeTimes(tables), (Times{0, 1024, 2048, 3072}));
  EXPECT_EQ(Offsets(tables), (Places{40}));
  EXPECT_EQ(tables.syncSampleBox->GetEntryCount(), 0);
  tables.sampleToChunkBox->ReadyToDemux();
  EXPECT_EQ(tables.sampleToChunkBox->GetCurChunkIndex(), 0u);
  EXPECT_EQ(tables.sampleToChunkBox->NextSample(), 1u);
  EXPECT_EQ(tables.sampleToChunkBox->NextSample(), 2u);
  EXPECT_EQ(tables.sampleToChunkBox->GetCurChunkIndex(), 0u);
  tables.sampleToChunkBox->NextSample();
  EXPECT_EQ(tables.sampleToChunkBox->GetCurChunkIndex(), 1u);
}

TEST_F(BoxMOOFMerge, WithoutADataOffsetTheFirstChunkLiesAtZero) {
  MergeRuns(Trun(0, 3));
  EXPECT_EQ(Offsets(tables), (Places{0}));
}

TEST_F(BoxMOOFMerge, TheHeadersDefaultsWinOverTheTracks) {
  MergeRuns(Trun(0, 2), 0x38, Bytes().Be32(500).Be32(60).Be32(0));
  EXPECT_EQ(Sizes(tables), (Words{60, 60}));
  EXPECT_EQ(DecodeTimes(tables), (Times{0, 500, 1000}));
  EXPECT_EQ(SyncSamples(tables, 2), (Words{1, 2}));
}

TEST_F(BoxMOOFMerge, EachHeaderBitStandsForItsDefault) {
  MergeRuns(Trun(0, 1), 0x10, Bytes().Be32(60));
  EXPECT_EQ(Sizes(tables), (Words{60}));
  EXPECT_EQ(DecodeTimes(tables), (Times{0, 1024}));
  MergeRuns(Trun(0, 1), 0x08, Bytes().Be32(500));
  EXPECT_EQ(Sizes(tables), (Words{60, 200}));
  EXPECT_EQ(DecodeTimes(tables), (Times{0, 1024, 1524}));
  MergeRuns(Trun(0, 1), 0x20, Bytes().Be32(0));
  EXPECT_EQ(SyncSamples(tables, 3), (Words{3}));
}

TEST_F(BoxMOOFMerge, TheEntriesWinOverAllDefaults) {
  MergeRuns(Trun(0x700, 2, {10, 100, 0, 20, 150, kNotSync}), 0x38,
            Bytes().Be32(500).Be32(60).Be32(kNotSync));
  EXPECT_EQ(Sizes(tables), (Words{100, 150}));
  EXPECT_EQ(DecodeTimes(tables), (Times{0, 10, 30}));
  EXPECT_EQ(SyncSamples(tables, 2), (Words{1}));
}

TEST_F(BoxMOOFMerge, AValueBehindAClearedHeaderBitIsNotUsed) {
  // The second header keeps the first one's duration but not its bit.
  movie.Merge(Moof(Traf(Tfhd(0x08, 1, Bytes().Be32(500)) + Tfhd(0, 1) + Trun(0, 1))));
  EXPECT_EQ(DecodeTimes(tables), (Times{0, 1024}));
}

TEST_F(BoxMOOFMerge, TheEmptyDurationBitStopsNothing) {
  MergeRuns(Trun(0, 2), 0x010000);
  EXPECT_EQ(Sizes(tables), (Words{200, 200}));
}

TEST_F(BoxMOOFMerge, CompositionOffsetsAreNotUsed) {
  MergeRuns(Trun(0x800, 2, {7777, 8888}));
  EXPECT_EQ(Sizes(tables), (Words{200, 200}));
  EXPECT_EQ(DecodeTimes(tables), (Times{0, 1024, 2048}));
}

TEST_F(BoxMOOFMerge, ARunWithoutSamplesAddsNothing) {
  MergeRuns(Trun(0x001, 0, {40}));
  EXPECT_TRUE(Offsets(tables).empty());
  EXPECT_TRUE(Sizes(tables).empty());
}

// Chunks.

TEST_F(BoxMOOFMerge, RunsWithoutOffsetsFollowEachOther) {
  MergeRuns(Trun(0x200, 2, {10, 20}) + Trun(0, 3) + Trun(0, 1));
  EXPECT_EQ(Offsets(tables), (Places{0, 30, 630}));
}

TEST_F(BoxMOOFMerge, AnExplicitBaseIsTheOffsetOfEveryRun) {
  MergeRuns(Trun(0x200, 2, {10, 20}) + Trun(0, 3), 0x01, Bytes().Be64(5000));
  EXPECT_EQ(Offsets(tables), (Places{5000, 5000}));
}

TEST_F(BoxMOOFMerge, AnExplicitBaseOfZeroStillHoldsTheRunsDown) {
  MergeRuns(Trun(0, 2) + Trun(0, 2), 0x01, Bytes().Be64(0));
  EXPECT_EQ(Offsets(tables), (Places{0, 0}));
}

TEST_F(BoxMOOFMerge, ADataOffsetIsAddedToTheBytesBefore) {
  MergeRuns(Trun(0x001, 2, {1000}) + Trun(0x001, 2, {1000}));
  EXPECT_EQ(Offsets(tables), (Places{1000, 1400}));
}

TEST_F(BoxMOOFMerge, ADataOffsetIsSigned) {
  MergeRuns(Trun(0x001, 1, {0xFFFFFFF8}), 0x01, Bytes().Be64(5000));
  EXPECT_EQ(Offsets(tables), (Places{4992}));
}

TEST_F(BoxMOOFMerge, TheFragmentsOwnPlaceIsNeverTheBase) {
  MergeRuns(Trun(0x001, 1, {8}), 0x020000);
  EXPECT_EQ(Offsets(tables), (Places{8}));
}

TEST_F(BoxMOOFMerge, TheCountOfBytesWrapsAt32Bits) {
  MergeRuns(Trun(0x200, 2, {0xFFFFFFFF, 11}) + Trun(0, 1));
  EXPECT_EQ(Offsets(tables), (Places{0, 10}));
}

TEST_F(BoxMOOFMerge, TheCountOfBytesWrapsInAUniformRunToo) {
  MergeRuns(Trun(0, 3) + Trun(0, 1), 0x10, Bytes().Be32(0x80000001));
  EXPECT_EQ(Offsets(tables), (Places{0, 0x80000003}));
}

TEST_F(BoxMOOFMerge, TheCountOfBytesStartsAnewInEachTrackFragment) {
  movie.Merge(Moof(Traf(Tfhd(0, 1) + Trun(0, 3)) + Traf(Tfhd(0, 1) + Trun(0, 1))));
  EXPECT_EQ(Offsets(tables), (Places{0, 0}));
}

TEST_F(BoxMOOFMerge, ARunIsOneChunkWithItsDescription) {
  FragmentedMovie audio;
  audio.AddTrack(1, "soun");
  audio.Extend(Trex(1, 1024, 200, kNotSync, 6));
  audio.Merge(Moof(Traf(Tfhd(0, 1) + Trun(0, 3) + Trun(0, 2)) +
                   Traf(Tfhd(0x02, 1, Bytes().Be32(4)) + Trun(0, 5))));
  const auto& chunks = audio.record->sampleToChunkTable;
  ASSERT_EQ(chunks.size(), 3u);
  EXPECT_EQ(chunks[0].firstChunk, 1u);
  EXPECT_EQ(chunks[0].samplesPerChunk, 3u);
  EXPECT_EQ(chunks[0].sampleDescriptionIndex, 6u);
  EXPECT_EQ(chunks[1].firstChunk, 2u);
  EXPECT_EQ(chunks[1].samplesPerChunk, 2u);
  EXPECT_EQ(chunks[1].sampleDescriptionIndex, 6u);
  EXPECT_EQ(chunks[2].firstChunk, 3u);
  EXPECT_EQ(chunks[2].samplesPerChunk, 5u);
  EXPECT_EQ(chunks[2].sampleDescriptionIndex, 4u);
}

TEST_F(BoxMOOFMerge, AudioDurationsArePublishedWithEachRun) {
  FragmentedMovie audio;
  audio.AddTrack(1, "soun");
  audio.Extend(Trex(1));
  audio.Merge(Moof(Traf(Tfhd(0, 1) + Trun(0, 3) + Trun(0x100, 2, {1024, 512}))));
  const auto& times = audio.record->timeToSampleTable;
  ASSERT_EQ(times.size(), 2u);
  EXPECT_EQ(times[0].sampleCount, 4u);
  EXPECT_EQ(times[0].sampleDelta, 1024u);
  EXPECT_EQ(times[1].sampleCount, 1u);
  EXPECT_EQ(times[1].sampleDelta, 512u);
  EXPECT_EQ(audio.record->numSamples, 5);
}

// Sync samples.

TEST_F(BoxMOOFMerge, OnlyTheNotSyncBitIsLookedAt) {
  MergeRuns(Trun(0x400, 4, {0xFFFEFFFF, 0x10000, 0, 0xFFFFFFFF}));
  EXPECT_EQ(SyncSamples(tables, 4), (Words{1, 3}));
}

TEST_F(BoxMOOFMerge, FirstSampleFlagsAreForTheFirstSampleAlone) {
  MergeRuns(Trun(0x004, 3, {0}) + Trun(0x004, 3, {kNotSync}));
  EXPECT_EQ(SyncSamples(tables, 6), (Words{1}));
}

TEST_F(BoxMOOFMerge, FirstSampleFlagsMayDenyWhatTheDefaultGrants) {
  MergeRuns(Trun(0x004, 3, {kNotSync}), 0x20, Bytes().Be32(0));
  EXPECT_EQ(SyncSamples(tables, 3), (Words{2, 3}));
}

TEST_F(BoxMOOFMerge, AnEntrysFlagsWinOverFirstSampleFlags) {
  MergeRuns(Trun(0x404, 2, {0, kNotSync, 0}));
  EXPECT_EQ(SyncSamples(tables, 2), (Words{2}));
}

TEST_F(BoxMOOFMerge, SyncSamplesAreNumberedInTheWholeTrack) {
  movie.Load(tables, fixture::Stts({{5, 1024}}), fixture::Stsc({{1, 5}}),
             fixture::StszConstant(200, 5), fixture::Stco({100}), fixture::Stss({1}));
  MergeRuns(Trun(0x004, 2, {0}));
  EXPECT_EQ(SyncSamples(tables, 7), (Words{1, 6}));
  EXPECT_EQ(Sizes(tables).size(), 7u);
}

TEST_F(BoxMOOFMerge, WithoutASizeTableNoSyncSampleIsRecorded) {
  tables.sampleSizeBox.reset();
  MergeRuns(Trun(0x004, 2, {0}));
  EXPECT_EQ(tables.syncSampleBox->GetEntryCount(), 0);
  EXPECT_EQ(DecodeTimes(tables), (Times{0, 1024, 2048}));
  EXPECT_EQ(Offsets(tables), (Places{0}));
}

// What is missing.

TEST_F(BoxMOOFMerge, EachTableMayBeMissing) {
  const Bytes moof = Moof(Traf(Tfhd(0, 1) + Trun(0x004, 2, {0}) + Trun(0, 1)));
  tables.timeToSampleBox.reset();
  movie.Merge(moof);
  tables.syncSampleBox.reset();
  movie.Merge(moof);
  tables.sampleToChunkBox.reset();
  movie.Merge(moof);
  EXPECT_EQ(Offsets(tables), (Places{0, 400, 0, 400, 0, 400}));
  EXPECT_EQ(Sizes(tables).size(), 9u);
  tables.chunkOffsetBox.reset();
  movie.Merge(moof);
  EXPECT_EQ(Sizes(tables).size(), 12u);
}

TEST_F(BoxMOOFMerge, AMissingLinkAppendsNothing) {
  const Bytes moof = Moof(Traf(Tfhd(0, 1) + Trun(0, 2)));
  BoxTRAK& trak = *movie.moov.tracks[1];
  trak.mediaBox->mediaInformationBox->sampleTableBox.reset();
  movie.Merge(moof);
  trak.mediaBox->mediaInformationBox.reset();
  movie.Merge(moof);
  trak.mediaBox.reset();
  movie.Merge(moof);
  EXPECT_EQ(movie.record->numSamples, 0);
}

TEST_F(BoxMOOFMerge, WithoutContextMovieOrExtendsBoxNothingHappens) {
  fixture::PayloadRead<BoxMOOF> moof(Moof(Traf(Tfhd(0, 1) + Trun(0, 2))));
  moof.read.MergeFragment(nullptr, &movie.moov);
  moof.read.MergeFragment(&movie.context, nullptr);
  EXPECT_TRUE(Sizes(tables).empty());
  movie.moov.movieExtendsBox.reset();
  moof.read.MergeFragment(&movie.context, &movie.moov);
  EXPECT_TRUE(Sizes(tables).empty());
}

TEST_F(BoxMOOFMerge, AFragmentWithoutTrackFragmentsAddsNothing) {
  movie.Merge(Moof(fixture::Mfhd(1)));
  EXPECT_TRUE(Sizes(tables).empty());
  EXPECT_EQ(movie.moov.tracks.size(), 1u);
}

TEST_F(BoxMOOFMerge, ATrackFragmentWithoutHeaderIsPassedOver) {
  movie.Merge(Moof(Traf(Trun(0, 2)) + Traf(Tfhd(0, 1) + Trun(0, 3))));
  EXPECT_EQ(Sizes(tables).size(), 3u);
  EXPECT_EQ(movie.moov.tracks.size(), 1u);
}

TEST_F(BoxMOOFMerge, ATrackWithoutDefaultsEndsTheFragment) {
  BoxSTBL& second = movie.AddTrack(2, "vide");
  movie.Merge(Moof(Traf(Tfhd(0, 1) + Trun(0, 1)) + Traf(Tfhd(0, 2) + Trun(0, 1)) +
                   Traf(Tfhd(0, 1) + Trun(0, 1))));
  EXPECT_EQ(Sizes(tables).size(), 1u);
  EXPECT_TRUE(Sizes(second).empty());
  movie.Merge(Moof(Traf(Tfhd(0, 1) + Trun(0, 1))));  // the next fragment is merged again
  EXPECT_EQ(Sizes(tables).size(), 2u);
}

TEST_F(BoxMOOFMerge, WithoutAnyDefaultsTheFragmentIsNotMerged) {
  movie.moov.movieExtendsBox->trackExtends.clear();
  MergeRuns(Trun(0x700, 1, {1, 2, 3}), 0x38, Bytes().Be32(1).Be32(2).Be32(3));
  EXPECT_TRUE(Sizes(tables).empty());
}

TEST_F(BoxMOOFMerge, TheFirstOfRepeatedDefaultsCounts) {
  movie.Extend(Trex(1, 77, 88));
  MergeRuns(Trun(0, 1));
  EXPECT_EQ(Sizes(tables), (Words{200}));
}

TEST_F(BoxMOOFMerge, AnUnknownTrackLeavesANullEntryAndEndsTheFragment) {
  movie.Extend(Trex(9));
  movie.Merge(Moof(Traf(Tfhd(0, 9) + Trun(0, 1)) + Traf(Tfhd(0, 1) + Trun(0, 1))));
  EXPECT_TRUE(Sizes(tables).empty());
  ASSERT_EQ(movie.moov.tracks.count(9), 1u);
  EXPECT_EQ(movie.moov.tracks[9], nullptr);
  // It stays, and later fragments work around it.
  movie.Merge(Moof(Traf(Tfhd(0, 1) + Trun(0, 1)) + Traf(Tfhd(0, 9) + Trun(0, 1))));
  EXPECT_EQ(Sizes(tables).size(), 1u);
}

TEST_F(BoxMOOFMerge, AnUnknownTrackLeavesANullEntryEvenWithoutDefaults) {
  movie.Merge(Moof(Traf(Tfhd(0, 0xFFFFFFFF) + Trun(0, 1))));
  ASSERT_EQ(movie.moov.tracks.count(-1), 1u);
  EXPECT_EQ(movie.moov.tracks[-1], nullptr);
}

TEST_F(BoxMOOFMerge, TracksAreMergedEachIntoItsOwnTables) {
  BoxSTBL& second = movie.AddTrack(2, "soun");
  movie.Extend(Trex(2, 100, 50));
  movie.Merge(Moof(Traf(Tfhd(0, 2) + Trun(0, 2)) + Traf(Tfhd(0, 1) + Trun(0, 1))));
  EXPECT_EQ(Sizes(second), (Words{50, 50}));
  EXPECT_EQ(Sizes(tables), (Words{200}));
}

// MergeTrack by itself.

TEST_F(BoxMOOFMerge, MergeTrackTakesWhatItIsHanded) {
  BoxTRAF traf;
  traf.header = std::make_unique<BoxTFHD>();
  auto run = std::make_unique<BoxTRUN>();
  run->tr_flags = 0x700;
  run->sample_count = 2;
  run->entries = std::make_unique<TrunEntry[]>(2);
  run->entries[0] = {10, 100, 0, 0};
  run->entries[1] = {20, 150, kNotSync, 0};
  traf.runs.push_back(std::move(run));
  BoxTREX trex;
  BoxMOOF().MergeTrack(movie.moov.tracks[1].get(), &traf, &trex);
  EXPECT_EQ(Sizes(tables), (Words{100, 150}));
  EXPECT_EQ(DecodeTimes(tables), (Times{0, 10, 30}));
  EXPECT_EQ(SyncSamples(tables, 2), (Words{1}));
}

TEST_F(BoxMOOFMerge, MergeTrackDoesNothingWhenHandedNothing) {
  BoxTRAK* trak = movie.moov.tracks[1].get();
  BoxTRAF headless;
  BoxTRAF traf;
  traf.header = std::make_unique<BoxTFHD>();
  traf.runs.push_back(std::make_unique<BoxTRUN>());
  traf.runs[0]->sample_count = 1;
  BoxTREX trex;
  BoxMOOF moof;
  moof.MergeTrack(nullptr, &traf, &trex);
  moof.MergeTrack(trak, nullptr, &trex);
  moof.MergeTrack(trak, &traf, nullptr);
  moof.MergeTrack(trak, &headless, &trex);
  EXPECT_TRUE(Sizes(tables).empty());
}

// Runs without bytes.

TEST_F(BoxMOOFMerge, EntriesWithoutBytesAreMergedAsZeros) {
  MergeRuns(Trun(0x700, 3, {10, 100, kNotSync}));
  EXPECT_EQ(Sizes(tables), (Words{100, 0, 0}));
  EXPECT_EQ(DecodeTimes(tables), (Times{0, 10, 10, 10}));
  EXPECT_EQ(SyncSamples(tables, 3), (Words{2, 3}));
}

TEST_F(BoxMOOFMerge, AUniformRunOfMillionsIsOneStep) {
  MergeRuns(Trun(0, 1u << 26) + Trun(0, 1u << 26));
  EXPECT_EQ(tables.sampleSizeBox->GetSampleCount(), 1u << 27);
  EXPECT_EQ(tables.sampleSizeBox->GetSampleSize((1 << 27) - 1), 200u);
  EXPECT_EQ(tables.timeToSampleBox->GetTotalSamples(), 1 << 27);
  EXPECT_EQ(Offsets(tables), (Places{0, 0x20000000}));
}

// The account of an opening.

/// The opening that merging is charged to, with so much left.
struct MergeAccount {
  MergeAccount(FragmentedMovie* movie, std::int64_t left) : scan(0) {
    scan.TakeMerge(mp4::limits::kSpareMerge - left);
    movie->context.scan = &scan;
  }
  bool Spent() { return !scan.TakeMerge(1); }
  mp4::ScanControl scan;
};

TEST_F(BoxMOOFMerge, AConstantRunCostsTheOpeningNextToNothing) {
  MergeAccount account(&movie, 64);
  MergeRuns(Trun(0, 1u << 26));
  EXPECT_EQ(tables.sampleSizeBox->GetSampleCount(), 1u << 26);
  EXPECT_TRUE(account.Spent());
}

TEST_F(BoxMOOFMerge, SizesInTheTableAreChargedSixteenBytesEach) {
  MergeAccount account(&movie, 64 + 2 * 16 + 64 + 3 * 16 - 1);
  MergeRuns(Trun(0x200, 2, {1, 2}) + Trun(0, 3));
  EXPECT_EQ(Sizes(tables), (Words{1, 2}));  // the second run was refused
  EXPECT_EQ(Offsets(tables), (Places{0}));
  EXPECT_EQ(tables.timeToSampleBox->GetTotalSamples(), 2);
}

TEST_F(BoxMOOFMerge, SizesWithoutEntriesAreChargedWhereTheTableIsNotConstant) {
  movie.Load(tables, fixture::Stts({}), fixture::Stsc({}), fixture::Stsz({5, 6}), fixture::Stco({}),
             fixture::Stss({}));
  {
    MergeAccount account(&movie, 64 + 100 * 16 - 1);
    MergeRuns(Trun(0, 100));
    EXPECT_EQ(Sizes(tables).size(), 2u);
  }
  MergeAccount account(&movie, 64 + 100 * 16);
  MergeRuns(Trun(0, 100));
  EXPECT_EQ(Sizes(tables).size(), 102u);
  EXPECT_TRUE(account.Spent());
}

TEST_F(BoxMOOFMerge, DurationsReadFromEntriesAreChargedSixteenBytesEach) {
  {
    MergeAccount account(&movie, 64 + 2 * 16 - 1);
    MergeRuns(Trun(0x100, 2, {1, 2}));
    EXPECT_TRUE(Sizes(tables).empty());
  }
  MergeAccount account(&movie, 64 + 2 * 16);
  MergeRuns(Trun(0x100, 2, {1, 2}));
  EXPECT_EQ(Sizes(tables).size(), 2u);
  EXPECT_TRUE(account.Spent());
}

TEST_F(BoxMOOFMerge, RowsOfDurationsWithoutEntriesAreChargedWhereTheCountIsNegative) {
  movie.Load(tables, fixture::BoxOf32("stts", {0x80000000}), fixture::Stsc({}), fixture::Stsz({}),
             fixture::Stco({}), fixture::Stss({}));
  {
    MergeAccount account(&movie, 64 + 99 * 16 - 1);
    MergeRuns(Trun(0x100, 100));
    EXPECT_EQ(tables.timeToSampleBox->GetTotalSamples(), 0);
  }
  MergeAccount account(&movie, 64 + 99 * 16);
  MergeRuns(Trun(0x100, 100));
  EXPECT_EQ(tables.timeToSampleBox->GetTotalSamples(), 100);
  EXPECT_EQ(tables.timeToSampleBox->GetEntries()->used, 100u * 8);
  EXPECT_TRUE(account.Spent());
}

// Tables of two tracks that fill one record publish all their rows whenever they take turns.
TEST_F(BoxMOOFMerge, RowsPublishedOverAgainAreChargedEightBytesEach) {
  FragmentedMovie audio;
  BoxSTBL& first = audio.AddTrack(1, "soun");
  BoxSTBL& second = audio.AddTrack(2, "soun");
  audio.Extend(Trex(1));
  audio.context.SetCurrentTrack(1);
  audio.Load(first, fixture::Stts({{4, 10}}), fixture::Stsc({}), fixture::Stsz({}),
             fixture::Stco({1, 2, 3}), fixture::Stss({}));
  audio.Load(second, fixture::Stts({}), fixture::Stsc({}), fixture::Stsz({}), fixture::Stco({}),
             fixture::Stss({}));
  const Mp4Context::TRACK& shared = *audio.context.GetTrack(1);
  const Bytes moof = Moof(Traf(Tfhd(0, 1) + Trun(0, 1)));
  {
    MergeAccount account(&audio, 64 + (1 + 3) * 8 - 1);
    audio.Merge(moof);
    EXPECT_TRUE(shared.chunkOffsetTable.empty());
  }
  {
    MergeAccount account(&audio, 64 + (1 + 3) * 8);
    audio.Merge(moof);
    EXPECT_EQ(shared.chunkOffsetTable.size(), 4u);
    EXPECT_EQ(shared.timeToSampleTable.size(), 2u);
    EXPECT_TRUE(account.Spent());
  }
  MergeAccount account(&audio, 64);
  audio.Merge(moof);
  EXPECT_EQ(shared.chunkOffsetTable.size(), 5u);  // nothing but the new rows was published
  EXPECT_TRUE(account.Spent());
}

TEST_F(BoxMOOFMerge, SyncSamplesWithoutEntriesAreChargedTwelveBytesEach) {
  {
    MergeAccount account(&movie, 64 + 3 * 12 - 1);
    MergeRuns(Trun(0, 3), 0x20, Bytes().Be32(0));
    EXPECT_EQ(tables.syncSampleBox->GetEntryCount(), 0);
  }
  MergeAccount account(&movie, 64 + 3 * 12);
  MergeRuns(Trun(0, 3), 0x20, Bytes().Be32(0));
  EXPECT_EQ(tables.syncSampleBox->GetEntryCount(), 3);
  EXPECT_TRUE(account.Spent());
}

TEST_F(BoxMOOFMerge, SyncSamplesWithEntriesAreChargedFourBytesEach) {
  MergeAccount account(&movie, 64 + 3 * 4);
  MergeRuns(Trun(0x400, 3, {0, 0, 0}));
  EXPECT_EQ(tables.syncSampleBox->GetEntryCount(), 3);
  EXPECT_TRUE(account.Spent());
}

TEST_F(BoxMOOFMerge, ARefusalEndsTheFragment) {
  BoxSTBL& second = movie.AddTrack(2, "vide");
  movie.Extend(Trex(2));
  MergeAccount account(&movie, 100);
  movie.Merge(Moof(Traf(Tfhd(0, 1) + Trun(0x200, 9, {1, 2, 3, 4, 5, 6, 7, 8, 9})) +
                   Traf(Tfhd(0, 2) + Trun(0, 1))));
  EXPECT_TRUE(Sizes(tables).empty());
  EXPECT_TRUE(Sizes(second).empty());
}

TEST_F(BoxMOOFMerge, ASaneFragmentStaysWithinItsShare) {
  // Full entries of 12 bytes with one byte of media each: 6 bytes of account for every byte.
  const int samples = 1000;
  Words words;
  for (int i = 0; i < samples; ++i) words.insert(words.end(), {10u + i % 3, 1u + i % 5, 0});
  MergeAccount account(&movie, 6 * (12 + 1) * samples);
  MergeRuns(Trun(0x700, samples, words));
  EXPECT_EQ(Sizes(tables).size(), 1000u);
}

}  // namespace
