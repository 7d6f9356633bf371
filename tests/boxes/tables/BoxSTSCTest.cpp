#include <gtest/gtest.h>

#include <tuple>

#include "boxes/tables/BoxSTSC.h"
#include "io/Mp4StreamReader.h"
#include "tests/Fixtures.h"
#include "tests/TableFixtures.h"

using namespace fixture;

namespace {

/// The chunk of each of the first `n` samples.
std::vector<unsigned> ChunksOf(BoxSTSC* box, int n) {
  std::vector<unsigned> chunks;
  box->ReadyToDemux();
  for (int i = 0; i < n; ++i) {
    chunks.push_back(box->GetCurChunkIndex());
    box->NextSample();
  }
  return chunks;
}

using Place = std::tuple<unsigned, unsigned, unsigned>;

/// Sample, chunk, first sample of the chunk.
Place PlaceOf(BoxSTSC* box) {
  return {box->GetCurSampleIndex(), box->GetCurChunkIndex(), box->GetFirstSampleInCurChunk()};
}

std::vector<std::vector<unsigned>> Published(const Mp4Context::TRACK& track) {
  std::vector<std::vector<unsigned>> rows;
  for (const tagSTSC& e : track.sampleToChunkTable) {
    rows.push_back({e.firstChunk, e.samplesPerChunk, e.sampleDescriptionIndex});
  }
  return rows;
}

using Rows = std::vector<std::vector<unsigned>>;
using Chunks = std::vector<unsigned>;

}  // namespace

TEST(BoxSTSC, NullReaderAndSizeBelowOneFail) {
  BoxSTSC box;
  EXPECT_FALSE(box.ReadData(nullptr, 20, nullptr));
  mmBufReader reader("", 0);
  EXPECT_FALSE(box.ReadData(&reader, 0, nullptr));
  EXPECT_FALSE(box.ReadData(&reader, -5, nullptr));
}

TEST(BoxSTSC, BodyShorterThanItsHeaderReadsNothingAndStandsAtItsEnd) {
  for (int size = 1; size < 8; ++size) {
    const Bytes payload = StscPayload({{1, 2, 1}});
    mmBufReader reader(payload.data(), payload.size());
    BoxSTSC box;
    EXPECT_TRUE(box.ReadData(&reader, size, nullptr));
    EXPECT_EQ(reader.GetPos(), size);
    EXPECT_EQ(box.ReadyToDemux(), 1);
    EXPECT_EQ(box.GetCurChunkIndex(), 0xFFFFFFFFu);
  }
}

TEST(BoxSTSC, FreshBoxStandsOnSampleZeroOfChunkZero) {
  BoxSTSC box;
  EXPECT_EQ(PlaceOf(&box), Place(0, 0, 0));
}

TEST(BoxSTSC, EmptyTableReadsAsOneEntryOfZeros) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({})));
  EXPECT_EQ(box.ReadyToDemux(), 1);
  EXPECT_EQ(PlaceOf(&box), Place(0, 0xFFFFFFFF, 0));
  EXPECT_EQ(box.NextSample(), 1u);
  EXPECT_EQ(PlaceOf(&box), Place(1, 0xFFFFFFFF, 0));
}

TEST(BoxSTSC, StepsThroughRunsOfChunks) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 2, 1}, {3, 1, 1}})));
  EXPECT_EQ(ChunksOf(&box, 7), (Chunks{0, 0, 1, 1, 2, 3, 4}));
}

TEST(BoxSTSC, SingleRunServesEveryChunk) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 5, 1}})));
  box.ReadyToDemux();
  for (unsigned i = 1; i < 60; ++i) {
    EXPECT_EQ(box.NextSample(), i);
    EXPECT_EQ(PlaceOf(&box), Place(i, i / 5, i / 5 * 5));
  }
}

TEST(BoxSTSC, LastRunServesAllChunksBehindIt) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 1, 1}, {2, 3, 1}, {3, 2, 1}})));
  EXPECT_EQ(ChunksOf(&box, 9), (Chunks{0, 1, 1, 1, 2, 2, 3, 3, 4}));
}

TEST(BoxSTSC, ReadyToDemuxStartsOver) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 2, 1}, {3, 1, 1}})));
  ChunksOf(&box, 6);
  EXPECT_EQ(box.ReadyToDemux(), 1);
  EXPECT_EQ(PlaceOf(&box), Place(0, 0, 0));
  EXPECT_EQ(ChunksOf(&box, 5), (Chunks{0, 0, 1, 1, 2}));
}

TEST(BoxSTSC, ChunkOfZeroSamplesNeverEnds) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 0, 1}, {2, 1, 1}})));
  box.ReadyToDemux();
  for (int i = 0; i < 1000; ++i) box.NextSample();
  EXPECT_EQ(PlaceOf(&box), Place(1000, 0, 0));
  box.Seek(2000000000);
  EXPECT_EQ(PlaceOf(&box), Place(2000000000, 0, 0));
}

TEST(BoxSTSC, ChunkOfNegativeSamplesIsNotReachedBySeeking) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 0x80000000, 1}, {2, 1, 1}})));
  box.ReadyToDemux();
  box.Seek(0x7FFFFFFF);
  EXPECT_EQ(PlaceOf(&box), Place(0x7FFFFFFF, 0, 0));
  EXPECT_EQ(box.NextSample(), 0x80000000u);
  EXPECT_EQ(PlaceOf(&box), Place(0x80000000, 1, 0x80000000));
}

TEST(BoxSTSC, RunWhoseFirstChunkIsNotAheadIsNeverEntered) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{5, 2, 1}, {5, 1, 1}, {7, 1, 1}})));
  EXPECT_EQ(ChunksOf(&box, 6), (Chunks{4, 4, 5, 5, 6, 6}));
  box.Seek(2000000001);
  EXPECT_EQ(PlaceOf(&box), Place(2000000001, 1000000004, 2000000000));
}

TEST(BoxSTSC, FirstChunkZeroWrapsAndGoesOn) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{0, 2, 1}, {1, 1, 1}})));
  EXPECT_EQ(ChunksOf(&box, 5), (Chunks{0xFFFFFFFF, 0xFFFFFFFF, 0, 1, 2}));
}

TEST(BoxSTSC, FirstChunkIsNotRequiredToBeOne) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{0x80000000, 1, 1}})));
  EXPECT_EQ(ChunksOf(&box, 2), (Chunks{0x7FFFFFFF, 0x80000000}));
}

TEST(BoxSTSC, SeekWalksForwardFromThePresentPosition) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 2, 1}, {3, 4, 1}})));
  box.ReadyToDemux();
  box.Seek(3);
  EXPECT_EQ(PlaceOf(&box), Place(3, 1, 2));
  box.Seek(9);
  EXPECT_EQ(PlaceOf(&box), Place(9, 3, 8));
}

TEST(BoxSTSC, SeekBackStartsOver) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 2, 1}, {3, 4, 1}})));
  box.ReadyToDemux();
  box.Seek(10);
  EXPECT_EQ(PlaceOf(&box), Place(10, 3, 8));
  box.Seek(3);
  EXPECT_EQ(PlaceOf(&box), Place(3, 1, 2));
  EXPECT_EQ(box.NextSample(), 4u);
  EXPECT_EQ(PlaceOf(&box), Place(4, 2, 4));
}

TEST(BoxSTSC, SeekToTheCurrentSampleStays) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 2, 1}})));
  box.ReadyToDemux();
  box.Seek(5);
  box.Seek(5);
  EXPECT_EQ(PlaceOf(&box), Place(5, 2, 4));
}

TEST(BoxSTSC, SeekToANegativeSampleIsSeekToZero) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 2, 1}})));
  box.ReadyToDemux();
  box.Seek(5);
  box.Seek(-7);
  EXPECT_EQ(PlaceOf(&box), Place(0, 0, 0));
}

TEST(BoxSTSC, SeekForwardWithoutReadyToDemuxStaysInTheFreshCursor) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{4, 2, 1}})));
  box.Seek(3);
  EXPECT_EQ(PlaceOf(&box), Place(3, 0, 0));
  box.Seek(2);
  EXPECT_EQ(PlaceOf(&box), Place(2, 4, 2));
}

TEST(BoxSTSC, SeeksAcrossManyRuns) {
  std::vector<tagSTSC> entries;
  for (unsigned i = 0; i < 1000; ++i) entries.push_back({2 * i + 1, i % 2 + 1, 1});
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload(entries)));
  box.ReadyToDemux();
  box.Seek(2999);  // runs of 2 + 4 samples in two chunks each: sample 2999 is the last of run 999
  EXPECT_EQ(PlaceOf(&box), Place(2999, 1999, 2998));
  box.Seek(2994);
  EXPECT_EQ(PlaceOf(&box), Place(2994, 1996, 2994));
  box.Seek(601);
  EXPECT_EQ(PlaceOf(&box), Place(601, 401, 601));
  EXPECT_EQ(box.NextSample(), 602u);
  EXPECT_EQ(PlaceOf(&box), Place(602, 402, 602));
}

TEST(BoxSTSC, CountIsClampedToTheEntriesHeld) {
  OneTrack sound(kSound);
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, CountedRows(0x7FFFFFFF, {1, 2, 1, 3, 1, 1, 9}), &sound.context));
  EXPECT_EQ(Published(*sound.track), (Rows{{1, 2, 1}, {3, 1, 1}}));
  EXPECT_EQ(ChunksOf(&box, 7), (Chunks{0, 0, 1, 1, 2, 3, 4}));
}

TEST(BoxSTSC, EntriesBehindTheCountAreNotEntered) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, CountedRows(1, {1, 2, 1, 2, 1, 1})));
  EXPECT_EQ(ChunksOf(&box, 6), (Chunks{0, 0, 1, 1, 2, 2}));
}

TEST(BoxSTSC, CountWithTheSignBitPublishesAndEntersNothing) {
  OneTrack sound(kSound);
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, CountedRows(0xFFFFFFFF, {1, 2, 1, 2, 1, 1}), &sound.context));
  EXPECT_TRUE(sound.track->sampleToChunkTable.empty());
  EXPECT_EQ(ChunksOf(&box, 6), (Chunks{0, 0, 1, 1, 2, 2}));
}

TEST(BoxSTSC, SizeBeyondTheFileKeepsWhatExists) {
  const TempFile file(StscPayload({{1, 2, 1}, {3, 1, 1}}));
  Mp4StreamReader reader;
  ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
  BoxSTSC box;
  ASSERT_TRUE(box.ReadData(&reader, 4000000000LL, nullptr));
  EXPECT_EQ(ChunksOf(&box, 7), (Chunks{0, 0, 1, 1, 2, 3, 4}));
  EXPECT_EQ(reader.GetPos(), 32);
}

TEST(BoxSTSC, SecondReadForgetsWhatSeeksFoundInTheFirst) {
  std::vector<tagSTSC> ones, twos;
  for (unsigned i = 1; i <= 200; ++i) {
    ones.push_back({i, 1, 1});
    twos.push_back({i, 2, 1});
  }
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload(ones)));
  box.ReadyToDemux();
  box.Seek(190);
  EXPECT_EQ(PlaceOf(&box), Place(190, 190, 190));
  ASSERT_TRUE(ReadPayload(&box, StscPayload(twos)));
  box.ReadyToDemux();
  box.Seek(190);
  EXPECT_EQ(PlaceOf(&box), Place(190, 95, 190));
}

/// The cursor is left alone, but reading goes back to the start of the bytes: the next run, met at
/// chunk 0, takes the first word there for its count.
TEST(BoxSTSC, SecondReadUnderACursorReadsOnFromTheStart) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{0, 2, 1}})));
  box.ReadyToDemux();
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{3, 5, 1}, {9, 9, 1}})));
  std::vector<unsigned> chunks;
  for (int i = 0; i < 6; ++i) {
    chunks.push_back(box.GetCurChunkIndex());
    box.NextSample();
  }
  EXPECT_EQ(chunks, (Chunks{0xFFFFFFFF, 0xFFFFFFFF, 0, 0, 0, 1}));
}

TEST(BoxSTSC, PublishesTheEntriesOfAudio) {
  OneTrack sound(kSound);
  sound.track->sampleToChunkTable.push_back({9, 9, 9});
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 2, 1}, {3, 1, 2}}), &sound.context));
  EXPECT_EQ(Published(*sound.track), (Rows{{1, 2, 1}, {3, 1, 2}}));
}

TEST(BoxSTSC, PublishesNothingForVideo) {
  OneTrack video(kVideo);
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 2, 1}}), &video.context));
  box.AppendSampleToChunk(1, 2);
  EXPECT_TRUE(video.track->sampleToChunkTable.empty());
}

TEST(BoxSTSC, PublishesNothingWithoutACurrentTrack) {
  Mp4Context context;
  BoxSTSC box;
  EXPECT_TRUE(ReadPayload(&box, StscPayload({{1, 2, 1}}), &context));
  box.AppendSampleToChunk(1, 2);
  EXPECT_EQ(ChunksOf(&box, 3), (Chunks{0, 0, 1}));
}

TEST(BoxSTSC, PacketisedQuickTimeAudioCountsPackets) {
  OneTrack sound(kSound);
  sound.Packetised(64);
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 4096, 1}, {2, 130, 1}}), &sound.context));
  EXPECT_EQ(Published(*sound.track), (Rows{{1, 64, 1}, {2, 2, 1}}));
  box.ReadyToDemux();
  box.Seek(63);
  EXPECT_EQ(PlaceOf(&box), Place(63, 0, 0));
  box.NextSample();
  EXPECT_EQ(PlaceOf(&box), Place(64, 1, 64));
  box.Seek(66);
  EXPECT_EQ(PlaceOf(&box), Place(66, 2, 66));
}

TEST(BoxSTSC, PacketDivisionIsSigned) {
  OneTrack sound(kSound);
  sound.Packetised(2);
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 0xFFFFFFFB, 1}}), &sound.context));  // -5 / 2 = -2
  EXPECT_EQ(Published(*sound.track), (Rows{{1, 0xFFFFFFFE, 1}}));
  sound.Packetised(0x80000000);  // negative: not packetised
  BoxSTSC undivided;
  ASSERT_TRUE(ReadPayload(&undivided, StscPayload({{1, 8, 1}}), &sound.context));
  EXPECT_EQ(Published(*sound.track), (Rows{{1, 8, 1}}));
}

TEST(BoxSTSC, CountsStayOutsidePacketisedQuickTimeAudio) {
  const Bytes payload = StscPayload({{1, 4096, 1}});
  OneTrack notQuickTime(kSound);
  notQuickTime.track->samplesPerPacket = 64;
  BoxSTSC first;
  ASSERT_TRUE(ReadPayload(&first, payload, &notQuickTime.context));
  EXPECT_EQ(Published(*notQuickTime.track), (Rows{{1, 4096, 1}}));

  OneTrack variable(kSound);
  variable.Packetised(64, -2);
  BoxSTSC second;
  ASSERT_TRUE(ReadPayload(&second, payload, &variable.context));
  EXPECT_EQ(Published(*variable.track), (Rows{{1, 4096, 1}}));

  OneTrack video(kVideo);
  video.Packetised(64);
  BoxSTSC third;
  ASSERT_TRUE(ReadPayload(&third, payload, &video.context));
  third.ReadyToDemux();
  third.Seek(64);
  EXPECT_EQ(PlaceOf(&third), Place(64, 0, 0));
}

TEST(BoxSTSC, AppendAddsAnEntryForTheChunkAfterTheLast) {
  OneTrack sound(kSound);
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{7, 3, 2}}), &sound.context));
  box.AppendSampleToChunk(1, 8);
  EXPECT_EQ(Published(*sound.track), (Rows{{7, 3, 2}, {8, 8, 1}}));
  EXPECT_EQ(ChunksOf(&box, 12), (Chunks{6, 6, 6, 7, 7, 7, 7, 7, 7, 7, 7, 8}));
}

TEST(BoxSTSC, AppendNeverMergesEntries) {
  OneTrack sound(kSound);
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 3, 1}}), &sound.context));
  box.AppendSampleToChunk(1, 3);
  box.AppendSampleToChunk(1, 3);
  EXPECT_EQ(Published(*sound.track), (Rows{{1, 3, 1}, {2, 3, 1}, {3, 3, 1}}));
}

TEST(BoxSTSC, AppendOnAnEmptyTableStartsAtChunkOne) {
  BoxSTSC unread;
  unread.AppendSampleToChunk(1, 2);
  unread.AppendSampleToChunk(1, 1);
  EXPECT_EQ(ChunksOf(&unread, 5), (Chunks{0, 0, 1, 2, 3}));
  OneTrack sound(kSound);
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({}), &sound.context));
  box.AppendSampleToChunk(5, 2);
  EXPECT_EQ(Published(*sound.track), (Rows{{1, 2, 5}}));
}

TEST(BoxSTSC, AppendedCountIsDividedByPacketInTheSequence) {
  OneTrack sound(kSound);
  sound.Packetised(64);
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 128, 1}}), &sound.context));
  box.AppendSampleToChunk(1, 192);
  EXPECT_EQ(Published(*sound.track), (Rows{{1, 2, 1}, {2, 3, 1}}));
  EXPECT_EQ(ChunksOf(&box, 6), (Chunks{0, 0, 1, 1, 1, 2}));
}

TEST(BoxSTSC, AppendFollowsTheWholeEntriesWhateverPaddingFollows) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 2, 1}}).Fill(7, 0xEE)));
  box.AppendSampleToChunk(1, 1);
  EXPECT_EQ(ChunksOf(&box, 4), (Chunks{0, 0, 1, 2}));
}

TEST(BoxSTSC, FirstChunkOfAnAppendWraps) {
  OneTrack sound(kSound);
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{0xFFFFFFFF, 3, 2}}), &sound.context));
  box.AppendSampleToChunk(1, 8);
  EXPECT_EQ(Published(*sound.track), (Rows{{0xFFFFFFFF, 3, 2}, {0, 8, 1}}));
}

TEST(BoxSTSC, CursorInTheLastEntryDoesNotSeeAnAppend) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 2, 1}})));
  box.ReadyToDemux();
  box.AppendSampleToChunk(1, 1);
  box.Seek(5);
  EXPECT_EQ(PlaceOf(&box), Place(5, 2, 4));
  box.Seek(4);
  EXPECT_EQ(PlaceOf(&box), Place(4, 3, 4));
}

TEST(BoxSTSC, CursorBeforeTheLastEntrySeesAnAppend) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 2, 1}, {2, 1, 1}})));
  box.ReadyToDemux();
  box.AppendSampleToChunk(1, 3);
  box.Seek(7);
  EXPECT_EQ(PlaceOf(&box), Place(7, 3, 6));
}

/// With first chunk 0 the chunk counter meets the absent next run (0) after one chunk. An entry
/// added by then is read on from where reading stopped, its first chunk taken for its count.
TEST(BoxSTSC, CursorThatMeetsAnAppendWithoutItsNextRunReadsOnWhereItStopped) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{0, 2, 1}})));
  box.ReadyToDemux();
  box.AppendSampleToChunk(1, 9);  // {1, 9, 1}
  std::vector<unsigned> chunks;
  for (int i = 0; i < 5; ++i) {
    chunks.push_back(box.GetCurChunkIndex());
    box.NextSample();
  }
  EXPECT_EQ(chunks, (Chunks{0xFFFFFFFF, 0xFFFFFFFF, 0, 1, 2}));
}

TEST(BoxSTSC, SeekBetweenAppendsFindsTheNewRuns) {
  BoxSTSC box;
  ASSERT_TRUE(ReadPayload(&box, StscPayload({{1, 1, 1}})));
  box.ReadyToDemux();
  for (unsigned k = 1; k < 300; ++k) {
    box.AppendSampleToChunk(1, 2);  // chunk 0 has one sample, all later ones two
    box.NextSample();
    box.Seek(0);  // starts over
    box.Seek(1 << 20);
    const unsigned first = 1 + ((1u << 20) - 1) / 2 * 2;
    ASSERT_EQ(PlaceOf(&box), Place(1 << 20, (first - 1) / 2 + 1, first)) << k;
  }
}
