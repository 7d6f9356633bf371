#include <gtest/gtest.h>

#include "io/FourCC.h"
#include "samples/SampleTables.h"
#include "tests/samples/SampleFixtures.h"

namespace {

using namespace fixture;
using mp4::FourCC;
using mp4::Sample;
using mp4::SampleFault;

Words SizesOf(const TableMovie& m) {
  OpenMovie open(m.File());
  return Column(open.Only(), &Sample::size);
}
TimeList DecodeTimesOf(const TableMovie& m) {
  OpenMovie open(m.File());
  return Column(open.Only(), &Sample::decodeTime);
}
TimeList CompositionTimesOf(const TableMovie& m) {
  OpenMovie open(m.File());
  return Column(open.Only(), &Sample::compositionTime);
}
Numbers OffsetsOf(const TableMovie& m) {
  OpenMovie open(m.File());
  return Column(open.Only(), &Sample::offset);
}
Tolds SyncsOf(const TableMovie& m) {
  OpenMovie open(m.File());
  return Column(open.Only(), &Sample::sync);
}

TEST(SampleTables, PlaceEverySampleOfAPlainTrack) {
  OpenMovie open(TableMovie{}.File());
  mp4::Track& track = open.Only();
  EXPECT_EQ(track.SampleCount(), 4u);
  EXPECT_EQ(Column(track, &Sample::number), (Numbers{1, 2, 3, 4}));
  EXPECT_EQ(Column(track, &Sample::offset), (Numbers{1000, 2000, 3000, 4000}));
  EXPECT_EQ(Column(track, &Sample::size), (Words{10, 20, 30, 40}));
  EXPECT_EQ(Column(track, &Sample::decodeTime), (TimeList{0, 100, 200, 300}));
  EXPECT_EQ(Column(track, &Sample::compositionTime), (TimeList{0, 100, 200, 300}));
  EXPECT_EQ(Column(track, &Sample::duration), (Words{100, 100, 100, 100}));
  EXPECT_EQ(Column(track, &Sample::description), (Words{1, 1, 1, 1}));
  EXPECT_EQ(Column(track, &Sample::sync), (Tolds{kYes, kYes, kYes, kYes}));
  EXPECT_EQ(Column(track, &Sample::isProtected), (Tolds{kNo, kNo, kNo, kNo}));
  EXPECT_TRUE(track.Problems().Kept().empty());
}

TEST(SampleTables, SamplesOfAChunkFollowOneAnother) {
  TableMovie m;
  m.stsc = Stsc({{1, 3}, {2, 1}});
  m.stco = Stco({5000, 100});
  EXPECT_EQ(OffsetsOf(m), (Numbers{5000, 5010, 5030, 100}));
}

TEST(SampleTables, TheLastMapRowRunsToTheLastChunk) {
  TableMovie m;
  m.stsc = Stsc({{1, 1, 1}, {3, 1, 2}});
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::description), (Words{1, 1, 2, 2}));
}

TEST(SampleTables, LargeOffsetsHave64Bits) {
  TableMovie m;
  m.stco = Co64({1000, 0x123456789AULL, 3000, 4000});
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::offset), (Numbers{1000, 0x123456789AULL, 3000, 4000}));
  EXPECT_EQ(Column(open.Only(), &Sample::outside), (std::vector<bool>{false, true, false, false}));
}

TEST(SampleTables, AConstantSizeHoldsForAll) {
  TableMovie m;
  m.stsz = StszConstant(7, 3);
  EXPECT_EQ(SizesOf(m), (Words{7, 7, 7}));
}

Bytes Stz2(unsigned width, std::uint32_t count, const Bytes& entries) {
  return FullBox("stz2", 0, 0, Bytes().Be24(0).Byte(width).Be32(count) + entries);
}

TEST(SampleTables, CompactSizesOfFourBitsBeginWithTheHighOnes) {
  TableMovie m;
  m.stsz = Stz2(4, 3, {0x12, 0x3F});
  EXPECT_EQ(SizesOf(m), (Words{1, 2, 3}));
}

TEST(SampleTables, CompactSizesOfEightAndSixteenBits) {
  TableMovie m;
  m.stsz = Stz2(8, 4, {1, 2, 3, 255});
  EXPECT_EQ(SizesOf(m), (Words{1, 2, 3, 255}));
  m.stsz = Stz2(16, 4, {0, 1, 0, 2, 0, 3, 1, 0});
  EXPECT_EQ(SizesOf(m), (Words{1, 2, 3, 256}));
}

TEST(SampleTables, AnotherWidthOfCompactSizesListsNothing) {
  TableMovie m;
  m.stsz = Stz2(5, 4, {1, 2, 3, 4});
  OpenMovie open(m.File());
  EXPECT_EQ(open.Only().SampleCount(), 0u);
  EXPECT_TRUE(Has(open.Only().Problems(), SampleFault::kFieldSize, FourCC("stz2")));
}

TEST(SampleTables, SizesThatAreNotThereAreNotListed) {
  TableMovie m;
  m.stsz = BoxOf32("stsz", {0, 4, 10, 20, 30});
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::size), (Words{10, 20, 30}));
  EXPECT_TRUE(Has(open.Only().Problems(), SampleFault::kFewerRows, FourCC("stsz")));
}

TEST(SampleTables, ChunksThatHoldFewerSamplesThanSizesWin) {
  TableMovie m;
  m.stco = Stco({1000, 2000, 3000});
  OpenMovie open(m.File());
  EXPECT_EQ(open.Only().SampleCount(), 3u);
  EXPECT_TRUE(Has(open.Only().Problems(), SampleFault::kFewerInChunks, FourCC("stsc")));
}

TEST(SampleTables, SizesBeyondWhatChunksHoldWin) {
  TableMovie m;
  m.stsc = Stsc({{1, 3}});
  EXPECT_EQ(OffsetsOf(m), (Numbers{1000, 1010, 1030, 2000}));
}

TEST(SampleTables, FewerDecodeEntriesRepeatTheLastDelta) {
  TableMovie m;
  m.stts = Stts({{1, 100}, {1, 50}});
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::decodeTime), (TimeList{0, 100, 150, 200}));
  EXPECT_EQ(Column(open.Only(), &Sample::duration), (Words{100, 50, 50, 50}));
  EXPECT_TRUE(Has(open.Only().Problems(), SampleFault::kCountsDiffer, FourCC("stts")));
}

TEST(SampleTables, DecodeRowsWithoutSamplesArePassedOver) {
  TableMovie m;
  m.stts = Stts({{0, 7}, {2, 100}, {0, 9}, {2, 10}, {0, 8}});
  EXPECT_EQ(DecodeTimesOf(m), (TimeList{0, 100, 200, 210}));
}

TEST(SampleTables, WithoutDecodeTimesSamplesStandAtZero) {
  TableMovie m;
  m.stts = {};
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::decodeTime), (TimeList{0, 0, 0, 0}));
  EXPECT_TRUE(Has(open.Only().Problems(), SampleFault::kMissing, FourCC("stts")));
}

Bytes Ctts(unsigned version, const Words& rows) {
  Bytes payload = Bytes().Be32(static_cast<std::uint32_t>(rows.size() / 2));
  for (const std::uint32_t word : rows) payload.Be32(word);
  return FullBox("ctts", version, 0, payload);
}

TEST(SampleTables, CompositionOffsetsAreAdded) {
  TableMovie m;
  m.more = Ctts(0, {1, 50, 3, 150});
  EXPECT_EQ(CompositionTimesOf(m), (TimeList{50, 250, 350, 450}));
}

TEST(SampleTables, CompositionOffsetsAreSignedInBothVersions) {
  TableMovie m;
  for (const unsigned version : {0u, 1u}) {
    m.more = Ctts(version, {2, 10, 2, 0xFFFFFFF6});
    EXPECT_EQ(CompositionTimesOf(m), (TimeList{10, 110, 190, 290})) << version;
  }
}

TEST(SampleTables, FewerCompositionEntriesLeaveZero) {
  TableMovie m;
  m.more = Ctts(0, {1, 50, 1, 60});
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::compositionTime), (TimeList{50, 160, 200, 300}));
  EXPECT_TRUE(Has(open.Only().Problems(), SampleFault::kCountsDiffer, FourCC("ctts")));
}

TEST(SampleTables, SyncSamplesAreThoseNamed) {
  TableMovie m;
  m.more = Stss({1, 3});
  EXPECT_EQ(SyncsOf(m), (Tolds{kYes, kNo, kYes, kNo}));
}

TEST(SampleTables, AnEmptySyncTableNamesNone) {
  TableMovie m;
  m.more = Stss({});
  EXPECT_EQ(SyncsOf(m), (Tolds{kNo, kNo, kNo, kNo}));
}

TEST(SampleTables, SyncNumbersOutOfOrderCountAll) {
  TableMovie m;
  m.more = Stss({4, 2, 2, 1});
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::sync), (Tolds{kYes, kYes, kNo, kYes}));
  EXPECT_EQ(open.Only().SyncAtOrBefore(3), 2u);
}

TEST(SampleTables, SyncNumbersBeyondTheSamplesAreSaid) {
  TableMovie m;
  m.more = Stss({2, 5});
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::sync), (Tolds{kNo, kYes, kNo, kNo}));
  EXPECT_TRUE(Has(open.Only().Problems(), SampleFault::kNamesAbsent, FourCC("stss")));
}

TEST(SampleTables, SyncNumberZeroNamesNoSample) {
  TableMovie m;
  m.more = Stss({0, 1});
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::sync), (Tolds{kYes, kNo, kNo, kNo}));
  EXPECT_TRUE(Has(open.Only().Problems(), SampleFault::kNamesAbsent, FourCC("stss")));
}

TEST(SampleTables, PartialSyncSamplesAreMarkedApart) {
  TableMovie m;
  m.more = Stss({1}) + Counted("stps", {3});
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::sync), (Tolds{kYes, kNo, kNo, kNo}));
  EXPECT_EQ(Column(open.Only(), &Sample::partialSync),
            (std::vector<bool>{false, false, true, false}));
}

TEST(SampleTables, ShadowsNameASampleToStandIn) {
  TableMovie m;
  m.more = Stss({1, 4}) + BoxOf32("stsh", {2, 2, 1, 3, 4});
  OpenMovie open(m.File());
  EXPECT_EQ(open.Only().ShadowOf(1), 0u);
  EXPECT_EQ(open.Only().ShadowOf(2), 1u);
  EXPECT_EQ(open.Only().ShadowOf(3), 4u);
  EXPECT_EQ(open.Only().ShadowOf(4), 0u);
}

TEST(SampleTables, DependenciesAreThoseOfTheTableAsFarAsItGoes) {
  TableMovie m;
  m.more = FullBox("sdtp", 0, 0, {0x20, 0x18, 0x04});
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::depends),
            (std::vector<std::uint8_t>{0x20, 0x18, 0x04, 0}));
}

TEST(SampleTables, MapRowsThatDoNotRiseArePassedOver) {
  TableMovie m;
  m.stsc = Stsc({{1, 1, 1}, {3, 1, 2}, {2, 1, 3}, {3, 1, 4}, {4, 1, 5}});
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::description), (Words{1, 1, 2, 5}));
  EXPECT_TRUE(Has(open.Only().Problems(), SampleFault::kRowsDoNotRise, FourCC("stsc")));
}

TEST(SampleTables, ChunksInFrontOfTheFirstMapRowHoldNothingKnown) {
  TableMovie m;
  m.stsc = Stsc({{2, 1}});
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::offset), (Numbers{2000, 3000, 4000}));
  EXPECT_TRUE(Has(open.Only().Problems(), SampleFault::kFirstChunksUnnamed, FourCC("stsc")));
}

TEST(SampleTables, ChunksWithoutSamplesAreSteppedOver) {
  TableMovie m;
  m.stsc = Stsc({{1, 0}, {2, 2}, {3, 0}, {4, 2}});
  EXPECT_EQ(OffsetsOf(m), (Numbers{2000, 2010, 4000, 4030}));
}

TEST(SampleTables, WithoutAMapOrOffsetsOrSizesNothingIsListed) {
  for (const auto member : {&TableMovie::stsc, &TableMovie::stco, &TableMovie::stsz}) {
    TableMovie m;
    m.*member = Bytes();
    OpenMovie open(m.File());
    EXPECT_EQ(open.Only().SampleCount(), 0u);
    EXPECT_TRUE(AllSamples(&open.Only()).empty());
    EXPECT_FALSE(open.Only().Problems().Kept().empty());
  }
}

TEST(SampleTables, SamplesThatEndBehindTheFileAreFlagged) {
  TableMovie m;
  const auto end = static_cast<std::uint32_t>(m.File().size());
  m.stco = Stco({end - 10, end - 19, end, end + 1});
  m.stsz = Stsz({10, 20, 0, 0});
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::outside), (std::vector<bool>{false, true, false, true}));
}

TEST(SampleTables, AnOffsetThatWrapsStaysOutside) {
  TableMovie m;
  m.stsc = Stsc({{1, 4}});
  m.stsz = StszConstant(0xFFFFFFFF, 4);
  m.stco = Co64({0xFFFFFFFFFFFFFFF0ULL});
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::outside), (std::vector<bool>{true, true, true, true}));
}

TEST(SampleTables, ADataReferenceToAnotherFileIsSaid) {
  TableMovie m;
  m.dinf = Box("dinf", FullBox("dref", 0, 0,
                               Bytes().Be32(1) + FullBox("url ", 0, 0, Bytes().Text("x").Byte(0))));
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::elsewhere), (std::vector<bool>{true, true, true, true}));
}

TEST(SampleTables, ACompressedMovieIsReadLikeAPlainOne) {
  const TableMovie m;
  const Bytes moov = Box("moov", Mvhd() + m.Trak());
  OpenMovie open(Ftyp("qt  ") + Box("mdat", Bytes().Fill(10000)) + Box("moov", Cmov(moov)));
  EXPECT_EQ(Column(open.Only(), &Sample::offset), (Numbers{1000, 2000, 3000, 4000}));
}

/// Billions of claimed samples cost nothing but what is asked.
TEST(SampleTables, ACountWithoutBytesIsArithmetic) {
  TableMovie m;
  m.stsz = StszConstant(1, 0xFFFFFFFF);
  m.stsc = Stsc({{1, 0xFFFFFFFF}});
  m.stts = Stts({{0xFFFFFFFF, 2}});
  m.stco = Stco({16});
  OpenMovie open(m.File());
  mp4::Track& track = open.Only();
  EXPECT_EQ(track.SampleCount(), 0xFFFFFFFFu);
  Sample sample;
  ASSERT_TRUE(track.At(0xFFFFFFFF, &sample));
  EXPECT_EQ(sample.offset, std::uint64_t{16} + 0xFFFFFFFE);
  EXPECT_EQ(sample.decodeTime, 2 * std::int64_t{0xFFFFFFFE});
  EXPECT_TRUE(sample.outside);
  EXPECT_EQ(track.NumberAtDecodeTime(2000001), 1000001u);
  EXPECT_EQ(track.NumberAtCompositionTime(2000001), 1000001u);
  EXPECT_EQ(track.SyncAtOrBefore(4000000000), 4000000000u);
}

}  // namespace
