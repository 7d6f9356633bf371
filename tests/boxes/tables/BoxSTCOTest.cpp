#include <gtest/gtest.h>

#include "boxes/tables/BoxSTCO.h"
#include "io/Mp4StreamReader.h"
#include "io/ScanControl.h"
#include "tests/Fixtures.h"
#include "tests/TableFixtures.h"

using namespace fixture;

namespace {

constexpr std::uint32_t kStco = mp4::FourCC("stco");
constexpr std::uint32_t kCo64 = mp4::FourCC("co64");
constexpr unsigned long long kNone = 0xFFFFFFFFFFFFFFFFULL;

std::vector<std::uint64_t> Published(const Mp4Context::TRACK& track) {
  std::vector<std::uint64_t> offsets;
  for (const tagSTCO& entry : track.chunkOffsetTable) offsets.push_back(entry.chunkOffset);
  return offsets;
}

using Offsets = std::vector<std::uint64_t>;

}  // namespace

TEST(BoxSTCO, Reads32BitOffsets) {
  BoxSTCO box(kStco);
  ASSERT_TRUE(ReadPayload(&box, StcoPayload({0x1000, 0x2000})));
  EXPECT_EQ(box.GetChunkOffset(0), 0x1000u);
  EXPECT_EQ(box.GetChunkOffset(1), 0x2000u);
}

TEST(BoxSTCO, Reads64BitOffsets) {
  BoxSTCO box(kCo64);
  ASSERT_TRUE(ReadPayload(&box, Co64Payload({0x100000000ULL, 0x8000000000000001ULL})));
  EXPECT_EQ(box.GetChunkOffset(0), 0x100000000ULL);
  EXPECT_EQ(box.GetChunkOffset(1), 0x8000000000000001ULL);
}

TEST(BoxSTCO, AnyOtherTypeHas64BitOffsets) {
  BoxSTCO box(mp4::FourCC("abcd"));
  ASSERT_TRUE(ReadPayload(&box, Co64Payload({0x100000000ULL})));
  EXPECT_EQ(box.GetChunkOffset(0), 0x100000000ULL);
  EXPECT_EQ(box.type, mp4::FourCC("abcd"));
}

TEST(BoxSTCO, ChunkPastTheEndIsAllOnes) {
  BoxSTCO box(kStco);
  ASSERT_TRUE(ReadPayload(&box, StcoPayload({0x1000, 0x2000})));
  EXPECT_EQ(box.GetChunkOffset(2), kNone);
}

TEST(BoxSTCO, NegativeChunkIsAllOnes) {
  BoxSTCO box(kStco);
  ASSERT_TRUE(ReadPayload(&box, StcoPayload({0x1000})));
  EXPECT_EQ(box.GetChunkOffset(-1), kNone);
  EXPECT_EQ(box.GetChunkOffset(INT32_MIN), kNone);
}

TEST(BoxSTCO, FreshBoxHasNoChunks) {
  BoxSTCO box(kStco);
  EXPECT_EQ(box.GetChunkOffset(0), kNone);
}

TEST(BoxSTCO, NullReaderAndNegativeSizeFail) {
  BoxSTCO box(kStco);
  EXPECT_FALSE(box.ReadData(nullptr, 16, nullptr));
  mmBufReader reader("", 0);
  EXPECT_FALSE(box.ReadData(&reader, -1, nullptr));
  EXPECT_EQ(reader.GetPos(), 0);
}

TEST(BoxSTCO, BodyShorterThanItsHeaderReadsNothingAndStandsAtItsEnd) {
  for (int size = 0; size < 8; ++size) {
    const Bytes payload = StcoPayload({0x1000});
    mmBufReader reader(payload.data(), payload.size());
    BoxSTCO box(kStco);
    EXPECT_TRUE(box.ReadData(&reader, size, nullptr)) << size;
    EXPECT_EQ(reader.GetPos(), size);
    EXPECT_EQ(box.GetChunkOffset(0), kNone);
  }
}

TEST(BoxSTCO, CountIsClampedToTheEntriesHeld) {
  BoxSTCO box(kStco);
  ASSERT_TRUE(ReadPayload(&box, CountedRows(0x7FFFFFFF, {0x1000, 0x2000}).Fill(3, 0xEE)));
  EXPECT_EQ(box.GetChunkOffset(1), 0x2000u);
  EXPECT_EQ(box.GetChunkOffset(2), kNone);
}

TEST(BoxSTCO, EntriesBehindTheCountAreNotChunks) {
  BoxSTCO box(kStco);
  ASSERT_TRUE(ReadPayload(&box, CountedRows(1, {0x1000, 0x2000})));
  EXPECT_EQ(box.GetChunkOffset(0), 0x1000u);
  EXPECT_EQ(box.GetChunkOffset(1), kNone);
}

TEST(BoxSTCO, CountWithTheSignBitHoldsNothing) {
  OneTrack sound(kSound);
  BoxSTCO box(kStco);
  ASSERT_TRUE(ReadPayload(&box, CountedRows(0xFFFFFFFF, {0x1000, 0x2000}), &sound.context));
  EXPECT_EQ(box.GetChunkOffset(0), kNone);
  EXPECT_TRUE(sound.track->chunkOffsetTable.empty());
}

TEST(BoxSTCO, SizeBeyondTheFileKeepsWhatExists) {
  const TempFile file(StcoPayload({0x1000, 0x2000}));
  Mp4StreamReader reader;
  ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
  BoxSTCO box(kStco);
  ASSERT_TRUE(box.ReadData(&reader, 4000000000LL, nullptr));
  EXPECT_EQ(box.GetChunkOffset(1), 0x2000u);
  EXPECT_EQ(reader.GetPos(), 16);
}

TEST(BoxSTCO, ReaderStandsBehindThePayload) {
  const Bytes payload = StcoPayload({1, 2}) + Bytes{9, 9, 9, 9};
  mmBufReader reader(payload.data(), payload.size());
  BoxSTCO box(kStco);
  ASSERT_TRUE(box.ReadData(&reader, 16, nullptr));
  EXPECT_EQ(reader.GetPos(), 16);
}

TEST(BoxSTCO, SecondReadReplacesTheFirst) {
  OneTrack sound(kSound);
  BoxSTCO box(kStco);
  ASSERT_TRUE(ReadPayload(&box, StcoPayload({1, 2, 3}), &sound.context));
  ASSERT_TRUE(ReadPayload(&box, StcoPayload({7, 8, 9}), &sound.context));
  EXPECT_EQ(box.GetChunkOffset(0), 7u);
  EXPECT_EQ(Published(*sound.track), (Offsets{7, 8, 9}));
}

TEST(BoxSTCO, PublishesTheOffsetsOfAudioAfterReadingAndAfterEveryAppend) {
  OneTrack sound(kSound);
  BoxSTCO box(kStco);
  ASSERT_TRUE(ReadPayload(&box, StcoPayload({10, 20}), &sound.context));
  EXPECT_EQ(Published(*sound.track), (Offsets{10, 20}));
  box.AppendChunk(30);
  EXPECT_EQ(Published(*sound.track), (Offsets{10, 20, 30}));
  box.GetChunkOffset(0);
  box.AppendChunk(40);
  EXPECT_EQ(Published(*sound.track), (Offsets{10, 20, 30, 40}));
}

TEST(BoxSTCO, PublishesNothingForVideo) {
  OneTrack video(kVideo);
  BoxSTCO box(kStco);
  ASSERT_TRUE(ReadPayload(&box, StcoPayload({10, 20}), &video.context));
  box.AppendChunk(30);
  EXPECT_TRUE(video.track->chunkOffsetTable.empty());
}

TEST(BoxSTCO, PublishesNothingWithoutACurrentTrack) {
  Mp4Context context;
  BoxSTCO box(kStco);
  ASSERT_TRUE(ReadPayload(&box, StcoPayload({10}), &context));
  box.AppendChunk(20);
  EXPECT_EQ(box.GetChunkOffset(1), 20u);
}

TEST(BoxSTCO, EmptyTableEmptiesTheSequence) {
  OneTrack sound(kSound);
  sound.track->chunkOffsetTable.push_back({5});
  BoxSTCO box(kStco);
  ASSERT_TRUE(ReadPayload(&box, StcoPayload({}), &sound.context));
  EXPECT_TRUE(sound.track->chunkOffsetTable.empty());
}

TEST(BoxSTCO, SequenceFilledByAnotherBoxIsFilledAgain) {
  OneTrack sound(kSound);
  BoxSTCO first(kStco), second(kCo64);
  ASSERT_TRUE(ReadPayload(&first, StcoPayload({1, 2}), &sound.context));
  ASSERT_TRUE(ReadPayload(&second, Co64Payload({7, 8}), &sound.context));
  EXPECT_EQ(Published(*sound.track), (Offsets{7, 8}));
  first.AppendChunk(3);
  EXPECT_EQ(Published(*sound.track), (Offsets{1, 2, 3}));
  second.AppendChunk(9);
  EXPECT_EQ(Published(*sound.track), (Offsets{7, 8, 9}));
}

TEST(BoxSTCO, SequenceEmptiedByTheCallerIsFilledAgain) {
  OneTrack sound(kSound);
  BoxSTCO box(kStco);
  ASSERT_TRUE(ReadPayload(&box, StcoPayload({1, 2}), &sound.context));
  sound.track->chunkOffsetTable.clear();
  box.OptimizeAudio();
  EXPECT_EQ(Published(*sound.track), (Offsets{1, 2}));
}

TEST(BoxSTCO, HandlerMetAfterTheTableStartsPublishing) {
  OneTrack track(kVideo);
  BoxSTCO box(kStco);
  ASSERT_TRUE(ReadPayload(&box, StcoPayload({1, 2}), &track.context));
  track.track->handlerType = kSound;
  box.AppendChunk(3);
  EXPECT_EQ(Published(*track.track), (Offsets{1, 2, 3}));
}

TEST(BoxSTCO, AppendedOffsetAbove4GiBLosesItsUpperHalfInA32BitTable) {
  OneTrack sound(kSound);
  BoxSTCO box(kStco);
  ASSERT_TRUE(ReadPayload(&box, StcoPayload({}), &sound.context));
  box.AppendChunk(0x100000010ULL);
  EXPECT_EQ(box.GetChunkOffset(0), 0x10u);
  EXPECT_EQ(Published(*sound.track), (Offsets{0x10}));
}

TEST(BoxSTCO, AppendKeepsAll64BitsInA64BitTable) {
  BoxSTCO box(kCo64);
  ASSERT_TRUE(ReadPayload(&box, Co64Payload({1})));
  box.AppendChunk(0x8000000100000010ULL);
  EXPECT_EQ(box.GetChunkOffset(1), 0x8000000100000010ULL);
}

TEST(BoxSTCO, AppendWithoutABoxReadMakesTheTable) {
  BoxSTCO box(kStco);
  for (unsigned i = 0; i < 1000; ++i) box.AppendChunk(i * 3);
  EXPECT_EQ(box.GetChunkOffset(0), 0u);
  EXPECT_EQ(box.GetChunkOffset(999), 2997u);
  EXPECT_EQ(box.GetChunkOffset(1000), kNone);
}

TEST(BoxSTCO, AppendFollowsTheWholeEntriesWhateverPaddingFollows) {
  BoxSTCO box(kStco);
  ASSERT_TRUE(ReadPayload(&box, StcoPayload({0x1000}).Fill(3, 0xEE)));
  box.AppendChunk(0x2000);
  EXPECT_EQ(box.GetChunkOffset(1), 0x2000u);
}

TEST(BoxSTCO, OpeningThatOnlyJudgesPassesOverTheEntriesAsIfRead) {
  const TempFile file(StcoPayload({0x1000, 0x2000}));
  Mp4StreamReader reader;
  ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
  mp4::ScanControl scan(16);
  scan.tablesUnread = true;
  reader.AttachScan(&scan);
  OneTrack sound(kSound);
  BoxSTCO box(kStco);
  EXPECT_TRUE(box.ReadData(&reader, 16, &sound.context));
  EXPECT_EQ(reader.GetPos(), 16);
  EXPECT_EQ(box.GetChunkOffset(0), kNone);
  EXPECT_TRUE(sound.track->chunkOffsetTable.empty());
}
