#include <gtest/gtest.h>

#include <cstring>

#include "boxes/track/BoxSTBL.h"
#include "io/Mp4StreamReader.h"
#include "io/ScanControl.h"
#include "tests/Fixtures.h"
#include "tests/MovieFixtures.h"
#include "tests/TableFixtures.h"

using namespace fixture;

namespace {

/// Payload of a sample table box. Two samples in each chunk, chunks at 1000, 2000, 3000.
struct TableSet {
  Bytes stsd = EmptyStsd();
  Bytes stts = Stts({{6, 10}});
  Bytes stsc = Box("stsc", StscPayload({{1, 2, 1}}));
  Bytes stsz = Stsz({100, 50, 30, 20, 10, 5});
  Bytes stco = Box("stco", StcoPayload({1000, 2000, 3000}));
  Bytes stss;

  Bytes Payload() const { return stsd + stts + stsc + stsz + stco + stss; }
};

/// A box made ready from a payload.
struct Ready {
  explicit Ready(const TableSet& tables) {
    EXPECT_TRUE(ReadPayload(&box, tables.Payload()));
    EXPECT_EQ(box.ReadyToDemux(nullptr), 1);
  }
  BoxSTBL box;
};

struct Info {
  std::int64_t time;
  std::uint64_t offset;
  std::uint32_t size;
  std::uint32_t duration;
  bool operator==(const Info&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Info& i) {
  return out << "{time " << i.time << ", offset " << i.offset << ", size " << i.size
             << ", duration " << i.duration << "}";
}

Info InfoOf(BoxSTBL* box) {
  BoxBase::SAMPLE sample = {};
  EXPECT_EQ(box->GetSampleInfo(&sample), 1);
  return {sample.time, sample.offset, sample.size, sample.duration};
}

std::vector<std::vector<unsigned>> Published(const Mp4Context::TRACK& track) {
  std::vector<std::vector<unsigned>> rows;
  for (const tagSTSC& e : track.sampleToChunkTable) {
    rows.push_back({e.firstChunk, e.samplesPerChunk, e.sampleDescriptionIndex});
  }
  return rows;
}

using Rows = std::vector<std::vector<unsigned>>;

}  // namespace

TEST(BoxSTBL, NullReaderAndNegativeSizeFail) {
  BoxSTBL box;
  EXPECT_FALSE(box.ReadData(nullptr, 0, nullptr));
  EXPECT_FALSE(box.ReadData(nullptr, 100, nullptr));
  mmBufReader reader("", 0);
  EXPECT_FALSE(box.ReadData(&reader, -1, nullptr));
}

TEST(BoxSTBL, SizeZeroReadsNothingAndSucceeds) {
  OneTrack sound(kSound);
  sound.track->chunkOffsetTable = {{1}, {2}, {3}};
  mmBufReader reader("12345678", 8);
  BoxSTBL box;
  // A table of its own, so that only the size keeps the chunks from being completed.
  box.sampleToChunkBox = std::make_unique<BoxSTSC>();
  EXPECT_TRUE(ReadPayload(box.sampleToChunkBox.get(), StscPayload({{1, 1, 1}}), &sound.context));
  EXPECT_TRUE(box.ReadData(&reader, 0, &sound.context));
  EXPECT_EQ(reader.GetPos(), 0);
  EXPECT_EQ(Published(*sound.track), (Rows{{1, 1, 1}}));
}

TEST(BoxSTBL, CreatesAChildOfEachKind) {
  TableSet tables;
  tables.stss = Stss({1});
  BoxSTBL box;
  ASSERT_TRUE(ReadPayload(&box, tables.Payload()));
  EXPECT_NE(box.sampleDescriptionBox, nullptr);
  EXPECT_NE(box.timeToSampleBox, nullptr);
  EXPECT_NE(box.sampleToChunkBox, nullptr);
  EXPECT_NE(box.sampleSizeBox, nullptr);
  EXPECT_NE(box.chunkOffsetBox, nullptr);
  EXPECT_NE(box.syncSampleBox, nullptr);
}

TEST(BoxSTBL, UnknownChildrenAreSkipped) {
  TableSet tables;
  tables.stsc = Box("ctts", Bytes().Fill(40, 1)) + tables.stsc + Box("stz2") + Box("sdtp", {1, 2});
  Ready ready(tables);
  EXPECT_EQ(ready.box.sampleCount, 6);
}

TEST(BoxSTBL, ChildOfSizeZeroTakesTheRest) {
  TableSet tables;
  tables.stco.PutBe32(0, 0);
  BoxSTBL box;
  ASSERT_TRUE(ReadPayload(&box, tables.Payload()));
  ASSERT_NE(box.chunkOffsetBox, nullptr);
  EXPECT_EQ(box.chunkOffsetBox->GetChunkOffset(2), 3000u);
}

TEST(BoxSTBL, StcoHas32BitAndCo64Has64BitOffsets) {
  TableSet tables;
  BoxSTBL narrow;
  ASSERT_TRUE(ReadPayload(&narrow, tables.Payload()));
  EXPECT_EQ(narrow.chunkOffsetBox->type, mp4::FourCC("stco"));
  tables.stco = Box("co64", Co64Payload({0x100000000ULL}));
  BoxSTBL wide;
  ASSERT_TRUE(ReadPayload(&wide, tables.Payload()));
  EXPECT_EQ(wide.chunkOffsetBox->type, mp4::FourCC("co64"));
  EXPECT_EQ(wide.chunkOffsetBox->GetChunkOffset(0), 0x100000000ULL);
}

TEST(BoxSTBL, SecondChildOfAKindReplacesTheFirst) {
  TableSet tables;
  tables.stco = tables.stco + Box("co64", Co64Payload({7000}));
  BoxSTBL box;
  ASSERT_TRUE(ReadPayload(&box, tables.Payload()));
  EXPECT_EQ(box.chunkOffsetBox->type, mp4::FourCC("co64"));
  EXPECT_EQ(box.chunkOffsetBox->GetChunkOffset(0), 7000u);
  EXPECT_EQ(box.chunkOffsetBox->GetChunkOffset(1), ~0ULL);
}

TEST(BoxSTBL, FailingChildFailsTheBoxAndIsKept) {
  const Bytes payload = EmptyStsd() + Box("stsc") + Box("stco", StcoPayload({1000}));
  mmBufReader reader(payload.data(), payload.size());
  BoxSTBL box;
  EXPECT_FALSE(box.ReadData(&reader, static_cast<long long>(payload.size()), nullptr));
  EXPECT_NE(box.sampleDescriptionBox, nullptr);
  EXPECT_NE(box.sampleToChunkBox, nullptr);
  EXPECT_EQ(box.chunkOffsetBox, nullptr);
  EXPECT_EQ(reader.GetPos(), static_cast<long long>(payload.size()));
}

TEST(BoxSTBL, ReaderStandsBehindTheBoxAfterAnOverrunningChild) {
  const Bytes payload = SizedBox(100, "free") + Bytes().Fill(200);
  mmBufReader reader(payload.data(), payload.size());
  BoxSTBL box;
  EXPECT_TRUE(box.ReadData(&reader, 20, nullptr));
  EXPECT_EQ(reader.GetPos(), 20);
}

TEST(BoxSTBL, SizeOneIsNotALargeSize) {
  const Bytes payload = SizedBox(1, "free") + Bytes().Fill(20);
  mmBufReader reader(payload.data(), payload.size());
  BoxSTBL box;
  EXPECT_TRUE(box.ReadData(&reader, 1, nullptr));
  EXPECT_EQ(reader.GetPos(), 1);
}

TEST(BoxSTBL, ClearDropsTheChildren) {
  Ready ready{TableSet()};
  ready.box.Clear();
  EXPECT_EQ(ready.box.sampleDescriptionBox, nullptr);
  EXPECT_EQ(ready.box.sampleToChunkBox, nullptr);
  EXPECT_EQ(ready.box.ReadyToDemux(nullptr), 0);
  EXPECT_FALSE(ready.box.Next());
}

TEST(BoxSTBL, AudioChunksFromTheLastRunOnGetAnEntryEach) {
  OneTrack sound(kSound);
  TableSet tables;
  tables.stsc = Box("stsc", StscPayload({{1, 2, 1}, {3, 4, 2}}));
  tables.stco = Box("stco", StcoPayload({10, 20, 30, 40, 50}));
  BoxSTBL box;
  ASSERT_TRUE(ReadPayload(&box, tables.Payload(), &sound.context));
  EXPECT_EQ(Published(*sound.track), (Rows{{1, 2, 1}, {3, 4, 2}, {4, 4, 2}, {5, 4, 2}}));
}

TEST(BoxSTBL, AudioCompletionCountsTheFirstChunkAsStored) {
  OneTrack sound(kSound);
  TableSet tables;
  tables.stco = Box("stco", StcoPayload({10}));
  BoxSTBL box;  // first chunk 1 is not below the one chunk
  ASSERT_TRUE(ReadPayload(&box, tables.Payload(), &sound.context));
  EXPECT_EQ(Published(*sound.track), (Rows{{1, 2, 1}}));

  tables.stsc = Box("stsc", StscPayload({{0, 2, 1}}));
  BoxSTBL zero;
  ASSERT_TRUE(ReadPayload(&zero, tables.Payload(), &sound.context));
  EXPECT_EQ(Published(*sound.track), (Rows{{0, 2, 1}, {1, 2, 1}}));
}

TEST(BoxSTBL, AudioCompletionTakesTheFirstChunkAsUnsigned) {
  OneTrack sound(kSound);
  TableSet tables;
  tables.stsc = Box("stsc", StscPayload({{0x80000000, 2, 1}}));
  BoxSTBL box;
  ASSERT_TRUE(ReadPayload(&box, tables.Payload(), &sound.context));
  EXPECT_EQ(Published(*sound.track), (Rows{{0x80000000, 2, 1}}));
}

TEST(BoxSTBL, VideoChunksAreNotCompleted) {
  OneTrack video(kVideo);
  BoxSTBL box;
  ASSERT_TRUE(ReadPayload(&box, TableSet().Payload(), &video.context));
  EXPECT_TRUE(video.track->sampleToChunkTable.empty());
}

/// The counts handed on are those of the sequence, already in packets; the table's own cursor and
/// the sequence divide them once more.
TEST(BoxSTBL, AudioCompletionHandsOnDividedCountsAsTheyAre) {
  OneTrack sound(kSound);
  sound.Packetised(4);
  TableSet tables;
  tables.stsd = Bytes();  // would describe the packets anew
  tables.stsc = Box("stsc", StscPayload({{1, 64, 1}}));
  tables.stco = Box("stco", StcoPayload({10, 20, 30}));
  BoxSTBL box;
  ASSERT_TRUE(ReadPayload(&box, tables.Payload(), &sound.context));
  EXPECT_EQ(Published(*sound.track), (Rows{{1, 16, 1}, {2, 4, 1}, {3, 4, 1}}));
  box.sampleToChunkBox->ReadyToDemux();
  box.sampleToChunkBox->Seek(20);
  EXPECT_EQ(box.sampleToChunkBox->GetCurChunkIndex(), 2u);
}

TEST(BoxSTBL, AudioCompletionWithoutASampleToChunkChildDoesNothing) {
  OneTrack sound(kSound);
  sound.track->sampleToChunkTable.push_back({1, 1, 1});
  BoxSTBL box;
  ASSERT_TRUE(ReadPayload(&box, Box("stco", StcoPayload({10, 20, 30})), &sound.context));
  EXPECT_EQ(sound.track->sampleToChunkTable.size(), 1u);
}

TEST(BoxSTBL, AudioCompletionRunsWhenAChildFailed) {
  OneTrack sound(kSound);
  TableSet tables;
  BoxSTBL box;
  EXPECT_FALSE(ReadPayload(&box, tables.stsc + tables.stco + Box("stts"), &sound.context));
  EXPECT_EQ(Published(*sound.track), (Rows{{1, 2, 1}, {2, 2, 1}, {3, 2, 1}}));
}

TEST(BoxSTBL, AudioCompletionStopsWhereTheOpeningsAccountIsSpent) {
  const Bytes payload = TableSet().Payload();
  const TempFile file(payload);
  Mp4StreamReader reader;
  ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
  mp4::ScanControl scan(static_cast<std::int64_t>(payload.size()));
  ASSERT_FALSE(scan.TakeMerge(INT64_MAX));
  reader.AttachScan(&scan);
  OneTrack sound(kSound);
  BoxSTBL box;
  EXPECT_TRUE(box.ReadData(&reader, static_cast<long long>(payload.size()), &sound.context));
  EXPECT_EQ(Published(*sound.track), (Rows{{1, 2, 1}}));
}

TEST(BoxSTBL, ReadyToDemuxNeedsTheDescriptionAndEveryTable) {
  TableSet tables;
  EXPECT_EQ(Ready(tables).box.sampleCount, 6);
  for (Bytes TableSet::*part :
       {&TableSet::stsd, &TableSet::stts, &TableSet::stsc, &TableSet::stsz, &TableSet::stco}) {
    TableSet broken = tables;
    broken.*part = Bytes();
    BoxSTBL box;
    ASSERT_TRUE(ReadPayload(&box, broken.Payload()));
    EXPECT_EQ(box.ReadyToDemux(nullptr), 0);
    EXPECT_FALSE(box.Next());
    EXPECT_EQ(box.Seek(30), 0);
    EXPECT_EQ(InfoOf(&box), (Info{0, 0, 0, 0}));
  }
}

TEST(BoxSTBL, ReadyToDemuxStandsOnTheFirstSample) {
  Ready ready{TableSet()};
  EXPECT_EQ(InfoOf(&ready.box), (Info{0, 1000, 100, 10}));
  EXPECT_EQ(ready.box.curSample, 0);
  EXPECT_EQ(ready.box.curChunk, 0);
  EXPECT_EQ(ready.box.sampleCount, 6);
}

TEST(BoxSTBL, ReadyToDemuxAgainStartsOver) {
  Ready ready{TableSet()};
  ready.box.Next();
  ready.box.Next();
  EXPECT_EQ(ready.box.ReadyToDemux(nullptr), 1);
  EXPECT_EQ(InfoOf(&ready.box), (Info{0, 1000, 100, 10}));
  EXPECT_TRUE(ready.box.Next());
  EXPECT_EQ(InfoOf(&ready.box), (Info{10, 1100, 50, 10}));
}

TEST(BoxSTBL, TrackWithoutChunksIsReadyAtOffsetMinusOne) {
  TableSet tables;
  tables.stco = Box("stco", StcoPayload({}));
  Ready ready(tables);
  EXPECT_EQ(ready.box.curOffset, -1);
  EXPECT_TRUE(ready.box.Next());  // within the chunk the size is added to what stands there
  EXPECT_EQ(ready.box.curOffset, 99);
  EXPECT_FALSE(ready.box.Next());
  EXPECT_EQ(ready.box.curOffset, -1);
}

TEST(BoxSTBL, NotReadyTrackNeitherStepsNorSeeks) {
  BoxSTBL box;
  ASSERT_TRUE(ReadPayload(&box, TableSet().Payload()));
  box.curTime = 77;
  EXPECT_FALSE(box.Next());
  EXPECT_EQ(box.Seek(30), 77);
  EXPECT_EQ(box.sampleToChunkBox->GetCurSampleIndex(), 0u);
}

TEST(BoxSTBL, TableMissingAfterwardsNeitherStepsNorSeeks) {
  Ready ready{TableSet()};
  ready.box.Next();
  ready.box.sampleSizeBox.reset();
  EXPECT_FALSE(ready.box.Next());
  EXPECT_EQ(ready.box.Seek(30), 10);
}

TEST(BoxSTBL, StepsAccumulateSizesWithinAChunk) {
  Ready ready{TableSet()};
  BoxSTBL& box = ready.box;
  ASSERT_TRUE(box.Next());
  EXPECT_EQ(InfoOf(&box), (Info{10, 1100, 50, 10}));
  ASSERT_TRUE(box.Next());
  EXPECT_EQ(InfoOf(&box), (Info{20, 2000, 30, 10}));
  ASSERT_TRUE(box.Next());
  EXPECT_EQ(InfoOf(&box), (Info{30, 2030, 20, 10}));
  ASSERT_TRUE(box.Next());
  EXPECT_EQ(InfoOf(&box), (Info{40, 3000, 10, 10}));
  EXPECT_EQ(box.curChunk, 2);
  EXPECT_EQ(box.curSample, 4);
  ASSERT_TRUE(box.Next());
  EXPECT_EQ(InfoOf(&box), (Info{50, 3010, 5, 10}));
}

TEST(BoxSTBL, StepPastTheLastSampleMovesTimeAndOffsetOnly) {
  TableSet tables;
  tables.stts = Stts({{4, 10}});
  Ready ready(tables);
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(ready.box.Next());
  EXPECT_FALSE(ready.box.Next());
  EXPECT_EQ(InfoOf(&ready.box), (Info{40, 3000, 20, 10}));
  EXPECT_EQ(ready.box.curSample, 3);
  EXPECT_EQ(ready.box.curChunk, 1);
}

TEST(BoxSTBL, StepPastTheLastChunkFails) {
  TableSet tables;
  tables.stco = Box("stco", StcoPayload({1000}));
  Ready ready(tables);
  EXPECT_TRUE(ready.box.Next());
  EXPECT_FALSE(ready.box.Next());
  EXPECT_EQ(ready.box.curOffset, -1);
  EXPECT_EQ(ready.box.curTime, 20);
  EXPECT_EQ(ready.box.curSample, 1);
}

TEST(BoxSTBL, StepToOffsetZeroFails) {
  TableSet tables;
  tables.stco = Box("stco", StcoPayload({1000, 0, 3000}));
  Ready ready(tables);
  EXPECT_TRUE(ready.box.Next());
  EXPECT_FALSE(ready.box.Next());
  EXPECT_EQ(ready.box.curOffset, 0);
}

TEST(BoxSTBL, StepToAMultipleOf256ReportsAnEndAndChangesNothing) {
  TableSet tables;
  tables.stts = Stts({{600, 10}});
  tables.stsc = Box("stsc", StscPayload({{1, 600, 1}}));
  tables.stsz = StszConstant(2, 600);
  Ready ready(tables);
  int steps = 0;
  while (ready.box.Next()) ++steps;
  EXPECT_EQ(steps, 255);  // samples 0 to 255
  EXPECT_EQ(InfoOf(&ready.box), (Info{2550, 1000 + 255 * 2, 2, 10}));
  EXPECT_EQ(ready.box.curSample, 255);
  // The walk goes on behind the pause; sample 256 was never handed out, nor counted in time.
  ASSERT_TRUE(ready.box.Next());
  EXPECT_EQ(ready.box.curSample, 257);
  EXPECT_EQ(InfoOf(&ready.box), (Info{2560, 1000 + 256 * 2, 2, 10}));
}

TEST(BoxSTBL, DurationIsTheSignedLowByte) {
  TableSet tables;
  tables.stts = Stts({{6, 3003}});
  Ready ready(tables);
  EXPECT_EQ(InfoOf(&ready.box).duration, static_cast<std::uint32_t>(-69));
  EXPECT_TRUE(ready.box.Next());
  EXPECT_EQ(ready.box.curTime, -69);
}

TEST(BoxSTBL, SampleInfoLeavesTheOtherFieldsAlone) {
  Ready ready{TableSet()};
  BoxBase::SAMPLE sample;
  std::memset(&sample, 0x5A, sizeof sample);
  EXPECT_EQ(ready.box.GetSampleInfo(&sample), 1);
  EXPECT_EQ(sample.offset, 1000u);
  EXPECT_EQ(sample.isVideo, 0x5A);
  EXPECT_EQ(sample.format, 0x5A5A5A5Au);
  EXPECT_EQ(sample.dataSize, 0x5A5A5A5Au);
  EXPECT_EQ(sample.timescale, 0x5A5A5A5Au);
  EXPECT_EQ(sample.trackId, 0x5A5A5A5Au);
}

TEST(BoxSTBL, SampleInfoOfNullIsZero) {
  Ready ready{TableSet()};
  EXPECT_EQ(ready.box.GetSampleInfo(nullptr), 0);
}

TEST(BoxSTBL, SeekWithoutSyncTableLandsOnTheSampleAtTheTime) {
  Ready ready{TableSet()};
  EXPECT_EQ(ready.box.Seek(35), 30);
  EXPECT_EQ(InfoOf(&ready.box), (Info{30, 2030, 20, 10}));
  EXPECT_EQ(ready.box.curSample, 3);
  EXPECT_EQ(ready.box.curChunk, 1);
  ASSERT_TRUE(ready.box.Next());
  EXPECT_EQ(InfoOf(&ready.box), (Info{40, 3000, 10, 10}));
}

TEST(BoxSTBL, SeekGoesBack) {
  Ready ready{TableSet()};
  EXPECT_EQ(ready.box.Seek(50), 50);
  EXPECT_EQ(InfoOf(&ready.box), (Info{50, 3010, 5, 10}));
  EXPECT_EQ(ready.box.Seek(10), 10);
  EXPECT_EQ(InfoOf(&ready.box), (Info{10, 1100, 50, 10}));
  EXPECT_EQ(ready.box.Seek(0), 0);
  EXPECT_EQ(InfoOf(&ready.box), (Info{0, 1000, 100, 10}));
}

TEST(BoxSTBL, SeekLandsOnTheSyncSampleAtOrBeforeTheTime) {
  TableSet tables;
  tables.stss = Stss({1, 4});
  Ready ready(tables);
  EXPECT_EQ(ready.box.Seek(55), 30);
  EXPECT_EQ(InfoOf(&ready.box), (Info{30, 2030, 20, 10}));
  EXPECT_EQ(ready.box.Seek(30), 30);
  EXPECT_EQ(ready.box.Seek(29), 0);
  EXPECT_EQ(InfoOf(&ready.box), (Info{0, 1000, 100, 10}));
}

TEST(BoxSTBL, SeekBeforeTheFirstSyncSampleGoesToTheStart) {
  TableSet tables;
  tables.stss = Stss({5});
  Ready ready(tables);
  EXPECT_EQ(ready.box.Seek(20), 0);
  EXPECT_EQ(ready.box.curSample, 0);
}

TEST(BoxSTBL, SyncSampleNumberZeroSeeksToTheStart) {
  TableSet tables;
  tables.stss = Stss({0});
  Ready ready(tables);
  EXPECT_EQ(ready.box.Seek(20), 0);
  EXPECT_EQ(ready.box.curSample, 0);
}

TEST(BoxSTBL, EmptySyncTableDoesNotMoveTheTarget) {
  TableSet tables;
  tables.stss = Stss({});
  Ready ready(tables);
  EXPECT_EQ(ready.box.Seek(20), 20);
}

TEST(BoxSTBL, SeekToANegativeTimeGoesToTheStart) {
  Ready ready{TableSet()};
  ready.box.Seek(40);
  EXPECT_EQ(ready.box.Seek(-35), 0);
  EXPECT_EQ(InfoOf(&ready.box), (Info{0, 1000, 100, 10}));
}

TEST(BoxSTBL, SeekPastTheEndStandsBehindTheLastSample) {
  Ready ready{TableSet()};
  EXPECT_EQ(ready.box.Seek(1000), 60);
  EXPECT_EQ(ready.box.curSample, 6);
  EXPECT_EQ(ready.box.curChunk, 3);
  EXPECT_EQ(ready.box.curOffset, -1);
  EXPECT_EQ(ready.box.curSize, 0u);
  EXPECT_EQ(ready.box.curDuration, 0);
  EXPECT_FALSE(ready.box.Next());
}

TEST(BoxSTBL, SeekLandsOnMultiplesOf256) {
  TableSet tables;
  tables.stts = Stts({{600, 10}});
  tables.stsc = Box("stsc", StscPayload({{1, 600, 1}}));
  tables.stsz = StszConstant(2, 600);
  Ready ready(tables);
  EXPECT_EQ(ready.box.Seek(2560), 2560);
  EXPECT_EQ(ready.box.curSample, 256);
  EXPECT_EQ(ready.box.curOffset, 1000 + 512);
  EXPECT_TRUE(ready.box.Next());
  EXPECT_EQ(ready.box.curSample, 257);
  EXPECT_EQ(ready.box.curTime, 2570);
}

TEST(BoxSTBL, OffsetSumsBeyond32BitsAreExact) {
  TableSet tables;
  tables.stts = Stts({{4, 1}});
  tables.stsc = Box("stsc", StscPayload({{1, 4, 1}}));
  tables.stsz = Stsz({0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 1});
  tables.stco = Box("stco", StcoPayload({0xFFFFFFFF}));
  Ready ready(tables);
  EXPECT_EQ(ready.box.Seek(3), 3);
  EXPECT_EQ(ready.box.curOffset, 4 * 0xFFFFFFFFLL);
}
