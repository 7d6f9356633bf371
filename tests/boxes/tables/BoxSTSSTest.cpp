#include <gtest/gtest.h>

#include <climits>

#include "boxes/tables/BoxSTSS.h"
#include "io/ScanControl.h"
#include "tests/Fixtures.h"
#include "tests/TableFixtures.h"

using namespace fixture;

TEST(BoxSTSS, FailsWithoutReader) {
  BoxSTSS box;
  EXPECT_FALSE(box.ReadData(nullptr, 16, nullptr));
}

TEST(BoxSTSS, FailsOnNegativeSizeOnly) {
  const Bytes payload = StssPayload(0);
  mmBufReader reader(payload.data(), payload.size());
  BoxSTSS box;
  EXPECT_FALSE(box.ReadData(&reader, -1, nullptr));
  EXPECT_TRUE(box.ReadData(&reader, 0, nullptr));
  EXPECT_EQ(reader.GetPos(), 0) << "8 bytes of header, then back over them";
}

TEST(BoxSTSS, FindsTheSyncSampleAtOrBefore) {
  OneTrack video("vide");
  BoxSTSS box;
  ASSERT_TRUE(ReadPayload(&box, StssPayload(3, {1, 31, 61}), &video.context));
  EXPECT_EQ(box.GetEntryCount(), 3);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(45), 30u);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(30), 30u);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(29), 0u);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(0), 0u);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(1000), 60u);
  EXPECT_EQ(video.track->syncTableState, 0);
}

TEST(BoxSTSS, BeforeTheFirstSyncSampleIsZero) {
  BoxSTSS box;
  ASSERT_TRUE(ReadPayload(&box, StssPayload(2, {5, 10})));
  EXPECT_EQ(box.GetSampleIndexBeforeThis(2), 0u);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(4), 4u);
}

TEST(BoxSTSS, StopsAtTheFirstLaterEntry) {
  BoxSTSS box;
  ASSERT_TRUE(ReadPayload(&box, StssPayload(4, {3, 20, 5, 2})));
  EXPECT_EQ(box.GetSampleIndexBeforeThis(10), 2u);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(19), 1u) << "the last entry, though not the largest";
}

TEST(BoxSTSS, ValuesAreSigned) {
  BoxSTSS box;
  ASSERT_TRUE(ReadPayload(&box, StssPayload(2, {0, 0xFFFFFFFF})));
  EXPECT_EQ(box.GetSampleIndexBeforeThis(-1), 0xFFFFFFFEu) << "0 is -1, then -2";
  ASSERT_TRUE(ReadPayload(&box, StssPayload(1, {0})));
  EXPECT_EQ(box.GetSampleIndexBeforeThis(7), 0xFFFFFFFFu);
  ASSERT_TRUE(ReadPayload(&box, StssPayload(1, {0x80000000})));
  EXPECT_EQ(box.GetSampleIndexBeforeThis(INT_MAX), 0x7FFFFFFFu);
}

TEST(BoxSTSS, SampleIndexIsAddressedByByte) {
  BoxSTSS box;
  ASSERT_TRUE(ReadPayload(&box, StssPayload(2, {1, 31})));
  EXPECT_EQ(box.GetSampleIndex(0), 1u);
  EXPECT_EQ(box.GetSampleIndex(1), 256u) << "bytes 00 00 01 00";
  EXPECT_EQ(box.GetSampleIndex(2), 0xFFFFFFFFu);
  EXPECT_EQ(box.GetSampleIndex(-1), 0xFFFFFFFFu);
}

TEST(BoxSTSS, NeverReadTableAnswersAllOnes) {
  BoxSTSS box;
  EXPECT_EQ(box.GetEntryCount(), 0);
  EXPECT_EQ(box.GetSampleIndex(0), 0xFFFFFFFFu);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(0), 0xFFFFFFFFu);
}

TEST(BoxSTSS, NoEntriesMarkTheTrackAndMakeNoBuffer) {
  OneTrack video("vide");
  BoxSTSS box;
  ASSERT_TRUE(ReadPayload(&box, StssPayload(0), &video.context));
  EXPECT_EQ(video.track->syncTableState, -1);
  EXPECT_EQ(box.GetEntries(), nullptr);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(3), 0xFFFFFFFFu);
  EXPECT_EQ(box.AppendRAP(1), 4u);
  ASSERT_NE(box.GetEntries(), nullptr);
  EXPECT_EQ(box.GetEntries()->capacity, 1024u);
  EXPECT_EQ(box.GetEntryCount(), 1);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(3), 0u);
}

TEST(BoxSTSS, OneEntryIsATable) {
  OneTrack video("vide");
  BoxSTSS box;
  ASSERT_TRUE(ReadPayload(&box, StssPayload(1, {4}), &video.context));
  EXPECT_EQ(video.track->syncTableState, 0);
  EXPECT_EQ(box.GetEntryCount(), 1);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(3), 3u);
}

TEST(BoxSTSS, NegativeCountMarksTheTrackAndStays) {
  OneTrack video("vide");
  BoxSTSS box;
  ASSERT_TRUE(ReadPayload(&box, StssPayload(0xFFFFFFFF, {1}), &video.context));
  EXPECT_EQ(video.track->syncTableState, -1);
  EXPECT_EQ(box.GetEntryCount(), -1);
  box.AppendRAP(9);
  EXPECT_EQ(box.GetEntryCount(), 0);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(8), 0u) << "a buffer, but no entries yet";
}

TEST(BoxSTSS, ContextWithoutTrackIsEnough) {
  Mp4Context context;
  BoxSTSS box;
  EXPECT_TRUE(ReadPayload(&box, StssPayload(0), &context));
  EXPECT_TRUE(ReadPayload(&box, StssPayload(0), nullptr));
}

TEST(BoxSTSS, ReaderStandsAtThePayloadsEnd) {
  const Bytes payload = StssPayload(1, {1}).Fill(9, 7);
  mmBufReader reader(payload.data(), payload.size());
  BoxSTSS box;
  ASSERT_TRUE(box.ReadData(&reader, 21, nullptr));
  EXPECT_EQ(reader.GetPos(), 21);
  EXPECT_EQ(box.GetEntryCount(), 1);
}

TEST(BoxSTSS, CountBeyondTheBoxReadsOnAndStepsBack) {
  // The box holds one row; the count says three, and the source holds them.
  const Bytes payload = StssPayload(3, {1, 31, 61});
  mmBufReader reader(payload.data(), payload.size());
  BoxSTSS box;
  ASSERT_TRUE(box.ReadData(&reader, 12, nullptr));
  EXPECT_EQ(box.GetEntryCount(), 3);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(60), 60u);
  EXPECT_EQ(reader.GetPos(), 12);
}

TEST(BoxSTSS, CountBeyondTheSourceKeepsTheWholeRowsThatExist) {
  OneTrack video("vide");
  FileReader opened(StssPayload(0x40000000, {1, 31}).Fill(3));
  BoxSTSS box;
  // 19 bytes of file; from its end the reader steps back by 19 - (4 * 2^30 + 8), before the start,
  // where a file cannot go.
  ASSERT_TRUE(box.ReadData(&opened.reader, 19, &video.context));
  EXPECT_EQ(box.GetEntryCount(), 2);
  EXPECT_EQ(video.track->syncTableState, 0);
  EXPECT_EQ(opened.reader.GetPos(), 19);
}

TEST(BoxSTSS, ShortFileStepsBackByTheDeclaredLength) {
  FileReader opened(Bytes().Fill(40) + StssPayload(5, {1, 31}));
  opened.reader.SetPos(40);
  BoxSTSS box;
  // Read to the end at 56, then 16 - 28 = -12.
  ASSERT_TRUE(box.ReadData(&opened.reader, 16, nullptr));
  EXPECT_EQ(opened.reader.GetPos(), 44);
}

TEST(BoxSTSS, NoWholeRowLeftMarksTheTrack) {
  OneTrack video("vide");
  FileReader opened(StssPayload(5).Fill(3));
  BoxSTSS box;
  ASSERT_TRUE(box.ReadData(&opened.reader, 28, &video.context));
  EXPECT_EQ(video.track->syncTableState, -1);
  EXPECT_EQ(box.GetEntryCount(), 0);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(3), 0u);
}

TEST(BoxSTSS, JudgingKeepsStateAndPosition) {
  for (const std::uint32_t count : {0u, 1u, 2u, 5u}) {
    const Bytes bytes = Bytes().Fill(40) + StssPayload(count, {1, 31});
    OneTrack full("vide");
    OneTrack judged("vide");
    FileReader opened(bytes);
    BoxSTSS box;
    opened.reader.SetPos(40);
    ASSERT_TRUE(box.ReadData(&opened.reader, 16, &full.context));
    const long long end = opened.reader.GetPos();

    mp4::ScanControl scan(static_cast<std::int64_t>(bytes.size()));
    scan.tablesUnread = true;
    opened.reader.AttachScan(&scan);
    opened.reader.SetPos(40);
    ASSERT_TRUE(box.ReadData(&opened.reader, 16, &judged.context));
    EXPECT_EQ(opened.reader.GetPos(), end) << count;
    EXPECT_EQ(judged.track->syncTableState, full.track->syncTableState) << count;
    EXPECT_EQ(box.GetEntryCount(), 0);
  }
}

TEST(BoxSTSS, ARefusedTableIsEmpty) {
  const Bytes payload = StssPayload(2, {1, 31});
  mp4::ScanControl scan(static_cast<std::int64_t>(payload.size()));
  while (scan.TakeBytes(1 << 20)) {
  }
  mmBufReader reader(payload.data(), payload.size());
  reader.AttachScan(&scan);
  BoxSTSS box;
  EXPECT_FALSE(box.ReadData(&reader, 16, nullptr));
  EXPECT_EQ(box.GetEntryCount(), 0);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(40), 0xFFFFFFFFu);
}

TEST(BoxSTSS, AppendsReturnTheBytesHeld) {
  BoxSTSS box;
  ASSERT_TRUE(ReadPayload(&box, StssPayload(2, {1, 31})));
  EXPECT_EQ(box.AppendRAP(61), 12u);
  EXPECT_EQ(box.AppendRAP(61), 16u) << "no duplicate check";
  EXPECT_EQ(box.GetEntryCount(), 4);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(100), 60u);
}

TEST(BoxSTSS, AppendsBeyondTheFirstCapacity) {
  BoxSTSS box;
  for (unsigned i = 0; i < 1000; ++i) EXPECT_EQ(box.AppendRAP(i * 10 + 1), 4 * (i + 1));
  EXPECT_EQ(box.GetSampleIndexBeforeThis(5678), 5670u);
  EXPECT_EQ(box.GetSampleIndexBeforeThis(123), 120u);
}

TEST(BoxSTSS, StaysIntactUntilMemoryIsRefused) {
  BoxSTSS box;
  ASSERT_TRUE(ReadPayload(&box, StssPayload(2, {1, 31})));
  box.AppendRAP(61);
  EXPECT_TRUE(box.IsIntact());
  FillAddressSpace(box.GetEntries());
  EXPECT_EQ(box.AppendRAP(91), ~0U) << "all of the bytes that it claims";
  EXPECT_FALSE(box.IsIntact());
  EXPECT_EQ(box.GetEntryCount(), 3) << "nothing was added";
}
