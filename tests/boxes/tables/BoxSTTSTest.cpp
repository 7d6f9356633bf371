#include <gtest/gtest.h>

#include <climits>

#include "boxes/tables/BoxSTTS.h"
#include "io/ScanControl.h"
#include "tests/Fixtures.h"
#include "tests/TableFixtures.h"

using namespace fixture;

namespace {

void ExpectRuns(const std::vector<tagSTTS>& table, TimeRuns runs) {
  ASSERT_EQ(table.size(), runs.size());
  std::size_t i = 0;
  for (const auto& [count, delta] : runs) {
    EXPECT_EQ(table[i].sampleCount, count) << i;
    EXPECT_EQ(table[i].sampleDelta, delta) << i;
    ++i;
  }
}

/// The rows a box holds, told by an audio track's published sequence.
void ExpectRuns(BoxSTTS* box, const OneTrack& audio, TimeRuns runs) {
  box->OptimizeAudio();
  ExpectRuns(audio.track->timeToSampleTable, runs);
}

OneTrack* Packetised(OneTrack* movie, std::uint32_t perPacket, std::uint32_t channels) {
  movie->track->samplesPerPacket = perPacket;
  movie->track->channels = channels;
  return movie;
}

}  // namespace

TEST(BoxSTTS, FailsWithoutReader) {
  BoxSTTS box;
  EXPECT_FALSE(box.ReadData(nullptr, 16, nullptr));
}

TEST(BoxSTTS, FailsOnSizeBelowOne) {
  mmBufReader reader("1234567890123456", 16);
  BoxSTTS box;
  EXPECT_FALSE(box.ReadData(&reader, 0, nullptr));
  EXPECT_FALSE(box.ReadData(&reader, -1, nullptr));
  EXPECT_EQ(reader.GetPos(), 0);
}

TEST(BoxSTTS, SumsCountsAndTimes) {
  OneTrack text("text");
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{3, 1024}, {2, 512}}), &text.context));
  EXPECT_EQ(box.GetTotalSamples(), 5);
  EXPECT_EQ(text.track->numSamples, 5);
  EXPECT_EQ(text.track->duration, 4096);
  EXPECT_EQ(text.track->frameRateDen, 0);
  EXPECT_TRUE(text.track->timeToSampleTable.empty());
}

TEST(BoxSTTS, AnswersWithoutContext) {
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{3, 1024}, {2, 512}})));
  EXPECT_EQ(box.GetTotalSamples(), 5);
  EXPECT_EQ(box.GetPTS(4), 3584);
}

TEST(BoxSTTS, ContextWithoutTrackIsEnough) {
  Mp4Context context;
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{3, 1024}}), &context));
  EXPECT_EQ(box.GetTotalSamples(), 3);
}

TEST(BoxSTTS, GivesDecodeTimes) {
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{3, 1024}, {2, 512}})));
  EXPECT_EQ(box.GetPTS(0), 0);
  EXPECT_EQ(box.GetPTS(3), 3072);
  EXPECT_EQ(box.GetPTS(4), 3584);
  EXPECT_EQ(box.GetPTS(5), 4096);
  EXPECT_EQ(box.GetPTS(6), 4096) << "past the end: the total";
}

TEST(BoxSTTS, GivesSampleAtTime) {
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{3, 1024}, {2, 512}})));
  EXPECT_EQ(box.GetSampleIndexBefore(0), 0);
  EXPECT_EQ(box.GetSampleIndexBefore(1023), 0);
  EXPECT_EQ(box.GetSampleIndexBefore(1024), 1);
  EXPECT_EQ(box.GetSampleIndexBefore(3071), 2);
  EXPECT_EQ(box.GetSampleIndexBefore(3072), 3) << "an entry's end belongs to the next";
  EXPECT_EQ(box.GetSampleIndexBefore(99999), 5);
}

TEST(BoxSTTS, DurationIsTheSignedLowByte) {
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{3, 1024}, {1, 512}, {1, 3003}, {1, 100}})));
  EXPECT_EQ(box.GetSampleDuration(2), 0);
  EXPECT_EQ(box.GetSampleDuration(3), 0);
  EXPECT_EQ(box.GetSampleDuration(4), -69);
  EXPECT_EQ(box.GetSampleDuration(5), 100);
  EXPECT_EQ(box.GetSampleDuration(6), 0) << "past the end";
}

TEST(BoxSTTS, EmptyTableAnswersZero) {
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({})));
  EXPECT_EQ(box.GetTotalSamples(), 0);
  EXPECT_EQ(box.GetSampleDuration(0), 0);
  EXPECT_EQ(box.GetPTS(7), 0);
  EXPECT_EQ(box.GetSampleIndexBefore(7), 0);
}

TEST(BoxSTTS, NeverReadTableAnswersZero) {
  BoxSTTS box;
  EXPECT_EQ(box.GetSampleDuration(0), 0);
  EXPECT_EQ(box.GetPTS(7), 0);
  EXPECT_EQ(box.GetSampleIndexBefore(7), 0);
  box.CalcAvInfo();
  box.OptimizeAudio();
}

TEST(BoxSTTS, ZeroDeltaGivesTheEntrysFirstSample) {
  BoxSTTS box;
  // 4 samples of 10, then 2 of 0. At -1 the first entry's end (40) is later: (-1 - 0) / 10 = 0.
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{4, 10}, {2, 0}})));
  EXPECT_EQ(box.GetSampleIndexBefore(-1), 0);
  EXPECT_EQ(box.GetSampleIndexBefore(40), 6);
  // A delta of 0 up front: its end 0 is later than -5, and nothing is divided.
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{2, 0}, {4, 10}})));
  EXPECT_EQ(box.GetSampleIndexBefore(-5), 0);
}

TEST(BoxSTTS, CountsAndDeltasAreSigned) {
  OneTrack text("text");
  BoxSTTS box;
  // 5 - 2 = 3 samples; 5 * -10 + -2 * 7 = -64.
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{5, 0xFFFFFFF6}, {0xFFFFFFFE, 7}}), &text.context));
  EXPECT_EQ(box.GetTotalSamples(), 3);
  EXPECT_EQ(text.track->duration, -64);
  EXPECT_EQ(box.GetPTS(2), -20);
}

TEST(BoxSTTS, SampleCountsWrapAt32Bits) {
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{0x7FFFFFFF, 1}, {2, 1}})));
  EXPECT_EQ(box.GetTotalSamples(), INT_MIN + 1);
}

TEST(BoxSTTS, CountIsClampedToWholeRows) {
  OneTrack audio("soun");
  BoxSTTS box;
  Bytes payload = SttsPayload(0x7FFFFFFF, {{3, 1024}, {2, 512}}).Be32(9);
  ASSERT_TRUE(ReadPayload(&box, payload, &audio.context));
  EXPECT_EQ(box.GetTotalSamples(), 5);
  ExpectRuns(audio.track->timeToSampleTable, {{3, 1024}, {2, 512}});
}

TEST(BoxSTTS, NegativeCountReadsNoEntries) {
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload(0xFFFFFFFF, {{3, 1024}})));
  EXPECT_EQ(box.GetTotalSamples(), 0);
  EXPECT_EQ(box.GetPTS(2), 0);
}

TEST(BoxSTTS, CountBelowTheRowsHeldIsKept) {
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload(1, {{3, 1024}, {2, 512}})));
  EXPECT_EQ(box.GetTotalSamples(), 3);
  EXPECT_EQ(box.GetSampleDuration(3), 0);
}

TEST(BoxSTTS, BodyShorterThanItsHeaderStepsBackToItsEnd) {
  for (int size = 1; size < 8; ++size) {
    const Bytes payload = SttsPayload({{3, 1024}});
    mmBufReader reader(payload.data(), payload.size());
    BoxSTTS box;
    ASSERT_TRUE(box.ReadData(&reader, size, nullptr)) << size;
    EXPECT_EQ(reader.GetPos(), size);
    EXPECT_EQ(box.GetTotalSamples(), 0);
  }
}

TEST(BoxSTTS, ReaderStandsAtThePayloadsEnd) {
  const Bytes payload = SttsPayload({{3, 1024}, {2, 512}}).Fill(5, 1);
  FileReader opened(payload + Bytes{1, 2, 3});
  BoxSTTS box;
  ASSERT_TRUE(box.ReadData(&opened.reader, static_cast<long long>(payload.size()), nullptr));
  EXPECT_EQ(opened.reader.GetPos(), static_cast<long long>(payload.size()));
}

TEST(BoxSTTS, TruncatedFileKeepsWholeRowsAndStopsAtItsEnd) {
  const Bytes payload = SttsPayload({{3, 1024}, {2, 512}}).Cut(20);
  FileReader opened(payload);
  BoxSTTS box;
  ASSERT_TRUE(box.ReadData(&opened.reader, 24, nullptr));
  EXPECT_EQ(opened.reader.GetPos(), 20);
  EXPECT_EQ(box.GetTotalSamples(), 3);
}

TEST(BoxSTTS, LengthBeyond32BitsIsReadTruncatedAndSkipped) {
  const Bytes payload = SttsPayload(2, {{3, 1024}, {2, 512}});
  FileReader opened(payload);
  BoxSTTS box;
  ASSERT_TRUE(box.ReadData(&opened.reader, (1LL << 32) + 16, nullptr));
  EXPECT_EQ(box.GetTotalSamples(), 3) << "8 bytes of rows";
  EXPECT_EQ(opened.reader.GetPos(), (1LL << 32) + 16);
}

TEST(BoxSTTS, JudgingPassesOverTheRowsAsIfRead) {
  const Bytes payload = SttsPayload({{3, 1024}, {2, 512}});
  mp4::ScanControl scan(static_cast<std::int64_t>(payload.size()));
  scan.tablesUnread = true;
  mmBufReader reader(payload.data(), payload.size());
  reader.AttachScan(&scan);
  OneTrack audio("soun");
  BoxSTTS box;
  ASSERT_TRUE(box.ReadData(&reader, 24, &audio.context));
  EXPECT_EQ(reader.GetPos(), 24);
  EXPECT_EQ(box.GetTotalSamples(), 0);
  EXPECT_EQ(box.GetPTS(3), 0);
}

TEST(BoxSTTS, VideoFrameRateOfWholeMean) {
  OneTrack video("vide");
  video.track->timescale = 30000;
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{10, 3003}}), &video.context));
  EXPECT_EQ(video.track->frameRateNum, 30000);
  EXPECT_EQ(video.track->frameRateDen, 3003);
}

TEST(BoxSTTS, VideoFrameRateOfFractionalMeanIsScaledBy1024) {
  OneTrack video("vide");
  video.track->timescale = 24000;
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{3, 1001}, {1, 1002}}), &video.context));
  EXPECT_EQ(video.track->frameRateDen, 1025280);
  EXPECT_EQ(video.track->frameRateNum, 24576000);
}

TEST(BoxSTTS, VideoWithoutSamplesKeepsItsFrameRate) {
  OneTrack video("vide");
  video.track->frameRateNum = 25;
  video.track->frameRateDen = 1;
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{0, 3003}}), &video.context));
  EXPECT_EQ(video.track->frameRateNum, 25);
  EXPECT_EQ(video.track->frameRateDen, 1);
}

TEST(BoxSTTS, VideoFrameRateOfMinusOneSamples) {
  OneTrack video("vide");
  video.track->timescale = 600;
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{0xFFFFFFFF, 40}}), &video.context));
  EXPECT_EQ(video.track->frameRateDen, 40);
  EXPECT_EQ(video.track->frameRateNum, 600);
}

TEST(BoxSTTS, PublishesTheRunsOfAudioOnly) {
  OneTrack audio("soun");
  audio.track->timeToSampleTable.resize(7);
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{3, 1024}, {2, 512}}), &audio.context));
  ExpectRuns(audio.track->timeToSampleTable, {{3, 1024}, {2, 512}});
  EXPECT_EQ(audio.track->frameRateDen, 0);

  OneTrack video("vide");
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{3, 1024}}), &video.context));
  EXPECT_TRUE(video.track->timeToSampleTable.empty());
}

TEST(BoxSTTS, PacketisedQuickTimeAudioCountsPackets) {
  OneTrack movie("soun", MP4_FILE_MODE_MOV);
  Packetised(&movie, 64, 2);
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{6400, 1}}), &movie.context));
  EXPECT_EQ(box.GetTotalSamples(), 100);
  EXPECT_EQ(movie.track->numSamples, 6400) << "the record keeps the undivided total";
  EXPECT_EQ(movie.track->duration, 6400);
  ExpectRuns(movie.track->timeToSampleTable, {{100, 64}});
  EXPECT_EQ(box.GetSampleDuration(-3), 64);
  EXPECT_EQ(box.GetSampleDuration(100000), 64);
  EXPECT_EQ(box.GetPTS(3), 192);
  EXPECT_EQ(box.GetSampleIndexBefore(191), 2);
  EXPECT_EQ(box.GetSampleIndexBefore(-65), -1);
}

TEST(BoxSTTS, ConstantDurationIsCutToItsLowByteToo) {
  OneTrack movie("soun", MP4_FILE_MODE_MOV);
  Packetised(&movie, 200, 1);
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{400, 1}}), &movie.context));
  EXPECT_EQ(box.GetSampleDuration(0), -56);
}

TEST(BoxSTTS, PacketsAreNotDividedElsewhere) {
  struct Case {
    const char* why;
    MP4_FILE_MODE mode;
    int compressionId;
    std::uint32_t perPacket;
    std::uint32_t channels;
  };
  for (const Case& c : {Case{"not QuickTime", MP4_FILE_MODE_MP4, 0, 64, 2},
                        Case{"compression -2", MP4_FILE_MODE_MOV, -2, 64, 2},
                        Case{"no packets", MP4_FILE_MODE_MOV, 0, 0, 2},
                        Case{"negative packets", MP4_FILE_MODE_MOV, 0, 0x80000000, 2},
                        Case{"no channels", MP4_FILE_MODE_MOV, 0, 64, 0}}) {
    OneTrack movie("soun", c.mode);
    Packetised(&movie, c.perPacket, c.channels);
    movie.track->compressionId = c.compressionId;
    BoxSTTS box;
    ASSERT_TRUE(ReadPayload(&box, SttsPayload({{6400, 1}}), &movie.context));
    EXPECT_EQ(box.GetTotalSamples(), 6400) << c.why;
    ExpectRuns(movie.track->timeToSampleTable, {{6400, 1}});
  }
  OneTrack video("vide", MP4_FILE_MODE_MOV);
  Packetised(&video, 64, 2);
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{6400, 1}}), &video.context));
  EXPECT_EQ(box.GetTotalSamples(), 6400) << "video";
}

TEST(BoxSTTS, AppendMergesEqualDurations) {
  OneTrack audio("soun");
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({}), &audio.context));
  box.AppendTime(1024);
  box.AppendTime(1024);
  box.AppendTime(1024);
  ExpectRuns(&box, audio, {{3, 1024}});
  box.AppendTime(512);
  ExpectRuns(&box, audio, {{3, 1024}, {1, 512}});
  EXPECT_EQ(box.GetTotalSamples(), 4);
  EXPECT_EQ(audio.track->numSamples, 4);
  EXPECT_EQ(audio.track->duration, 3584);
}

TEST(BoxSTTS, AppendGrowsTheLastRunRead) {
  OneTrack audio("soun");
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{3, 1024}}), &audio.context));
  box.AppendTime(1024);
  ExpectRuns(&box, audio, {{4, 1024}});
  EXPECT_EQ(box.GetPTS(4), 4096);
}

TEST(BoxSTTS, AppendDoesNotPublishByItself) {
  OneTrack audio("soun");
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{3, 1024}}), &audio.context));
  box.AppendTime(512);
  ExpectRuns(audio.track->timeToSampleTable, {{3, 1024}});
}

TEST(BoxSTTS, AppendToATableNeverReadMakesABuffer) {
  BoxSTTS box;
  box.AppendTime(100);
  ASSERT_NE(box.GetEntries(), nullptr);
  EXPECT_EQ(box.GetEntries()->capacity, 1024u);
  EXPECT_EQ(box.GetEntryCount(), 1);
  EXPECT_EQ(box.GetSampleDuration(0), 100);
  EXPECT_EQ(box.GetTotalSamples(), 1);
}

TEST(BoxSTTS, AppendedDurationIsUnsignedInTheTotal) {
  OneTrack text("text");
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({}), &text.context));
  box.AppendTime(0xFFFFFFFF);
  EXPECT_EQ(text.track->duration, 4294967295);
  EXPECT_EQ(box.GetPTS(1), -1) << "but signed in the rows";
}

TEST(BoxSTTS, AppendsGoBehindTheWholeRowsHeld) {
  OneTrack audio("soun");
  BoxSTTS box;
  // One declared row, a second that only pads, and half a row that is cut off.
  Bytes payload = SttsPayload(1, {{3, 1024}, {2, 512}}).Be32(77);
  ASSERT_TRUE(ReadPayload(&box, payload, &audio.context));
  box.AppendTime(5);
  ExpectRuns(&box, audio, {{3, 1024}, {2, 512}});
  box.AppendTime(5);
  ExpectRuns(&box, audio, {{3, 1024}, {2, 512}, {1, 5}});
}

TEST(BoxSTTS, AppendUpdatesTheFrameRate) {
  OneTrack video("vide");
  video.track->timescale = 24000;
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{3, 1001}}), &video.context));
  EXPECT_EQ(video.track->frameRateDen, 1001);
  box.AppendTime(1002);
  EXPECT_EQ(video.track->frameRateDen, 1025280);
  EXPECT_EQ(video.track->frameRateNum, 24576000);
}

TEST(BoxSTTS, EachAppendToPacketisedAudioDividesAgain) {
  OneTrack movie("soun", MP4_FILE_MODE_MOV);
  Packetised(&movie, 4, 2);
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{400, 1}}), &movie.context));
  EXPECT_EQ(box.GetTotalSamples(), 100);
  // The total duration is 400 / 2 = 200 by now.
  box.AppendTime(10);
  EXPECT_EQ(movie.track->numSamples, 101);
  EXPECT_EQ(movie.track->duration, 210);
  EXPECT_EQ(box.GetTotalSamples(), 25);
  box.AppendTime(10);
  EXPECT_EQ(movie.track->numSamples, 26);
  EXPECT_EQ(movie.track->duration, 60) << "101 / 2 + 10";
  EXPECT_EQ(box.GetTotalSamples(), 6);
  box.OptimizeAudio();
  ExpectRuns(movie.track->timeToSampleTable, {{6, 4}});
}

TEST(BoxSTTS, BulkAppendEqualsSingleAppends) {
  OneTrack audio("soun");
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{3, 1024}}), &audio.context));
  box.AppendTimes(7, 0);
  EXPECT_EQ(box.GetTotalSamples(), 3);
  box.AppendTimes(512, 1000000);
  box.AppendTimes(512, 2);
  ExpectRuns(&box, audio, {{3, 1024}, {1000002, 512}});
  EXPECT_EQ(box.GetTotalSamples(), 1000005);
  EXPECT_EQ(audio.track->duration, 512004096);
}

TEST(BoxSTTS, BulkAppendThatEndsAtZeroSamplesKeepsTheRateBeforeIt) {
  OneTrack video("vide");
  video.track->timescale = 600;
  BoxSTTS box;
  // -3 samples, -30 units. Two appends of 10 leave -1 sample, -10 units: rate 10. Then 0 samples.
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{0xFFFFFFFD, 10}}), &video.context));
  box.AppendTimes(10, 3);
  EXPECT_EQ(video.track->numSamples, 0);
  EXPECT_EQ(video.track->frameRateDen, 10);
  EXPECT_EQ(video.track->frameRateNum, 600);
}

TEST(BoxSTTS, MostRowsForCountsWhatAnAppendMayAdd) {
  BoxSTTS box;
  EXPECT_EQ(box.MostRowsFor(5, 10), 1);
  box.AppendTimes(5, 10);
  EXPECT_EQ(box.MostRowsFor(5, 10), 0);
  EXPECT_EQ(box.MostRowsFor(6, 10), 1);
  BoxSTTS odd;
  ASSERT_TRUE(ReadPayload(&odd, SttsPayload(0xFFFFFFFE, {{3, 1024}})));
  EXPECT_EQ(odd.MostRowsFor(5, 100), 4) << "two negative rows, one held, one new";
  EXPECT_EQ(odd.MostRowsFor(5, 2), 2);
}

TEST(BoxSTTS, PublishingSurvivesAnotherTableFillingTheSequence) {
  OneTrack audio("soun");
  BoxSTTS first;
  BoxSTTS second;
  ASSERT_TRUE(ReadPayload(&first, SttsPayload({{3, 1024}}), &audio.context));
  ASSERT_TRUE(ReadPayload(&second, SttsPayload({{9, 9}}), &audio.context));
  ExpectRuns(audio.track->timeToSampleTable, {{9, 9}});
  first.AppendTime(5);
  first.OptimizeAudio();
  ExpectRuns(audio.track->timeToSampleTable, {{3, 1024}, {1, 5}});
}

TEST(BoxSTTS, PublishingSurvivesAClearedSequence) {
  OneTrack audio("soun");
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{3, 1024}, {2, 512}}), &audio.context));
  audio.track->timeToSampleTable.clear();
  box.OptimizeAudio();
  ExpectRuns(audio.track->timeToSampleTable, {{3, 1024}, {2, 512}});
}

TEST(BoxSTTS, ReadingAgainReplacesTheTable) {
  OneTrack audio("soun");
  BoxSTTS box;
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{3, 1024}, {2, 512}}), &audio.context));
  EXPECT_EQ(box.GetPTS(5), 4096);
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{1, 7}}), &audio.context));
  EXPECT_EQ(box.GetPTS(5), 7);
  ExpectRuns(audio.track->timeToSampleTable, {{1, 7}});
}

TEST(BoxSTTS, DividesAgainWhileOnlyTheSamplesChange) {
  OneTrack movie("soun", MP4_FILE_MODE_MOV);
  Packetised(&movie, 2, 100);
  BoxSTTS box;
  // 10 / 2 = 5 samples; 10 / 100 = 0, and no later division changes that.
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{10, 1}}), &movie.context));
  // (5 + 1) / 2 = 3, (3 + 1) / 2 = 2, (2 + 1) / 2 = 1.
  box.AppendTimes(7, 3);
  EXPECT_EQ(box.GetTotalSamples(), 1);
  EXPECT_EQ(movie.track->numSamples, 3) << "2 + 1, not divided";
}

TEST(BoxSTTS, DividesAgainWhileOnlyTheDurationChanges) {
  OneTrack movie("soun", MP4_FILE_MODE_MOV);
  Packetised(&movie, 2, 1);
  BoxSTTS box;
  // 3 / 2 = 1 sample, and (1 + 1) / 2 is 1 again; the duration is 3 / 1, then (1 + 1) / 1.
  ASSERT_TRUE(ReadPayload(&box, SttsPayload({{3, 1}}), &movie.context));
  box.AppendTimes(10, 2);
  EXPECT_EQ(box.GetTotalSamples(), 1);
  EXPECT_EQ(movie.track->duration, 12) << "2 + 10; after one step it was 3 + 10";
}
