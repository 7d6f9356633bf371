#include <gtest/gtest.h>

#include <climits>

#include "boxes/tables/BoxSTSZ.h"
#include "io/ScanControl.h"
#include "tests/Fixtures.h"
#include "tests/TableFixtures.h"

using namespace fixture;

namespace {

void ExpectSizes(BoxSTSZ* box, std::initializer_list<unsigned> sizes) {
  EXPECT_EQ(box->GetSampleCount(), sizes.size());
  int i = 0;
  for (const unsigned size : sizes) {
    EXPECT_EQ(box->GetSampleSize(i), size) << i;
    ++i;
  }
}

void ExpectPublished(const OneTrack& audio, std::initializer_list<unsigned> sizes) {
  ASSERT_EQ(audio.track->sampleSizeTable.size(), sizes.size());
  std::size_t i = 0;
  for (const unsigned size : sizes) {
    EXPECT_EQ(audio.track->sampleSizeTable[i].sampleSize, size) << i;
    ++i;
  }
}

}  // namespace

TEST(BoxSTSZ, FailsWithoutReader) {
  BoxSTSZ box;
  EXPECT_FALSE(box.ReadData(nullptr, 12, nullptr));
}

TEST(BoxSTSZ, FailsOnSizeBelowOne) {
  mmBufReader reader("123456789012", 12);
  BoxSTSZ box;
  EXPECT_FALSE(box.ReadData(&reader, 0, nullptr));
  EXPECT_FALSE(box.ReadData(&reader, -3, nullptr));
  EXPECT_EQ(reader.GetPos(), 0);
}

TEST(BoxSTSZ, ConstantFormGivesOneSizeForAll) {
  OneTrack video("vide");
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(512, 10), &video.context));
  for (const int i : {-1, 0, 9, 10, INT_MAX}) EXPECT_EQ(box.GetSampleSize(i), 512u) << i;
  EXPECT_EQ(box.GetSampleCount(), 10u);
  EXPECT_EQ(video.track->totalSampleBytes, 5120);
  EXPECT_EQ(video.track->maxSampleSize, 512u);
  EXPECT_EQ(video.track->constSampleCount, 0u) << "audio only";
}

TEST(BoxSTSZ, TableFormGivesEachSize) {
  OneTrack video("vide");
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 3, {100, 300, 200}), &video.context));
  ExpectSizes(&box, {100, 300, 200});
  EXPECT_EQ(box.GetLargestSize(), 300u);
  EXPECT_EQ(video.track->totalSampleBytes, 600);
  EXPECT_EQ(video.track->maxSampleSize, 300u);
  EXPECT_TRUE(video.track->sampleSizeTable.empty());
}

TEST(BoxSTSZ, OutsideTheTableIsZero) {
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 2, {100, 300})));
  EXPECT_EQ(box.GetSampleSize(2), 0u);
  EXPECT_EQ(box.GetSampleSize(-1), 0u);
  EXPECT_EQ(box.GetSampleSize(INT_MAX), 0u);
  EXPECT_EQ(box.GetSampleSize(INT_MIN), 0u);
  BoxSTSZ unread;
  EXPECT_EQ(unread.GetSampleSize(0), 0u);
}

TEST(BoxSTSZ, SizesAreUnsigned) {
  OneTrack video("vide");
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 2, {0xFFFFFFFF, 5}), &video.context));
  EXPECT_EQ(video.track->totalSampleBytes, 4294967300);
  EXPECT_EQ(video.track->maxSampleSize, 0xFFFFFFFFu);
}

TEST(BoxSTSZ, ConstantTotalIs64Bit) {
  OneTrack video("vide");
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0x10000, 0x10000), &video.context));
  EXPECT_EQ(video.track->totalSampleBytes, 0x100000000);
}

TEST(BoxSTSZ, CountIsClampedToWholeRows) {
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 0xFFFFFFFF, {100, 300}).Be16(1)));
  ExpectSizes(&box, {100, 300});
}

TEST(BoxSTSZ, OnlyCountedRowsAreSummed) {
  OneTrack audio("soun");
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 1, {100, 300}), &audio.context));
  EXPECT_EQ(audio.track->totalSampleBytes, 100);
  EXPECT_EQ(audio.track->maxSampleSize, 100u);
  ExpectPublished(audio, {100});
  EXPECT_EQ(box.GetSampleSize(1), 300u) << "a row that is held";
}

TEST(BoxSTSZ, BitRateNeedsADuration) {
  OneTrack video("vide");
  video.track->timescale = 1000;
  video.track->duration = 0;
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 3, {100, 300, 200}), &video.context));
  EXPECT_EQ(video.track->bitRate, 0);
  video.track->duration = 7;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 3, {100, 300, 200}), &video.context));
  EXPECT_EQ(video.track->bitRate, 685714) << "600 * 1000 * 8 / 7, truncated";
}

TEST(BoxSTSZ, AudioPublishesTheTable) {
  OneTrack audio("soun");
  audio.track->sampleSizeTable.resize(9);
  audio.track->constSampleCount = 4;
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 3, {100, 300, 200}), &audio.context));
  ExpectPublished(audio, {100, 300, 200});
  EXPECT_EQ(audio.track->constSampleCount, 4u) << "the constant form alone writes it";
}

TEST(BoxSTSZ, AudioPublishesTheConstantForm) {
  OneTrack audio("soun");
  audio.track->sampleSizeTable.resize(9);
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(512, 10), &audio.context));
  ExpectPublished(audio, {});
  EXPECT_EQ(audio.track->constSampleCount, 10u);
  EXPECT_EQ(audio.track->constSampleSize, 512u);
}

TEST(BoxSTSZ, PcmAudioHasAForcedConstantSize) {
  OneTrack audio("soun");
  audio.track->format = mp4::FourCC("sowt");
  audio.track->bitsPerSample = 16;
  audio.track->channels = 2;
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 3, {100, 300, 200}), &audio.context));
  EXPECT_EQ(box.GetConstantSize(), 4u);
  EXPECT_EQ(box.GetSampleSize(1), 4u);
  EXPECT_EQ(box.GetSampleCount(), 3u);
  EXPECT_EQ(audio.track->totalSampleBytes, 12);
  ASSERT_TRUE(ReadPayload(&box, StszPayload(1, 1000), &audio.context));
  EXPECT_EQ(box.GetSampleSize(0), 4u);
  EXPECT_EQ(audio.track->constSampleSize, 4u);
}

TEST(BoxSTSZ, SizeIsNotForcedElsewhere) {
  OneTrack samr("soun");
  samr.track->format = mp4::FourCC("samr");
  samr.track->bitsPerSample = 16;
  samr.track->channels = 1;
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 1, {32}), &samr.context));
  EXPECT_EQ(box.GetSampleSize(0), 32u);
  OneTrack video("vide");
  video.track->bitsPerSample = 16;
  video.track->channels = 2;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 1, {32}), &video.context));
  EXPECT_EQ(box.GetSampleSize(0), 32u);
  OneTrack coded("soun");
  coded.track->channels = 2;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 1, {32}), &coded.context));
  EXPECT_EQ(box.GetSampleSize(0), 32u) << "no bits per sample";
}

TEST(BoxSTSZ, ForcedSizeOfZeroReadsTheTable) {
  OneTrack audio("soun");
  audio.track->bitsPerSample = 4;
  audio.track->channels = 2;
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(77, 2, {10, 20}), &audio.context));
  ExpectSizes(&box, {10, 20});
}

TEST(BoxSTSZ, QuickTimePacketsHaveTheirOwnSize) {
  OneTrack movie("soun", MP4_FILE_MODE_MOV);
  movie.track->bytesPerFrame = 34;
  movie.track->samplesPerPacket = 64;
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(1, 6400), &movie.context));
  EXPECT_EQ(box.GetSampleSize(0), 34u);
  EXPECT_EQ(box.GetSampleCount(), 6400u);
  EXPECT_EQ(movie.track->maxSampleSize, 34u);
  EXPECT_EQ(movie.track->totalSampleBytes, 3400);
  EXPECT_EQ(movie.track->constSampleSize, 34u);
  EXPECT_EQ(movie.track->constSampleCount, 6400u);
}

TEST(BoxSTSZ, PacketsOfNoSamplesKeepTheTotal) {
  OneTrack movie("soun", MP4_FILE_MODE_MOV);
  movie.track->bytesPerFrame = 34;
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(2, 100), &movie.context));
  EXPECT_EQ(box.GetSampleSize(0), 34u);
  EXPECT_EQ(movie.track->maxSampleSize, 34u);
  EXPECT_EQ(movie.track->totalSampleBytes, 200);
}

TEST(BoxSTSZ, PacketTotalIs64Bit) {
  OneTrack movie("soun", MP4_FILE_MODE_MOV);
  movie.track->bytesPerFrame = 0x10000;
  movie.track->samplesPerPacket = 1;
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(1, 0x20000), &movie.context));
  EXPECT_EQ(movie.track->totalSampleBytes, 0x200000000);
}

TEST(BoxSTSZ, PacketSizeIsNotUsedElsewhere) {
  struct Case {
    const char* why;
    MP4_FILE_MODE mode;
    int compressionId;
    std::uint32_t bytesPerFrame;
  };
  for (const Case& c : {Case{"not QuickTime", MP4_FILE_MODE_MP4, 0, 34},
                        Case{"compression -2", MP4_FILE_MODE_MOV, -2, 34},
                        Case{"no bytes per frame", MP4_FILE_MODE_MOV, 0, 0}}) {
    OneTrack movie("soun", c.mode);
    movie.track->compressionId = c.compressionId;
    movie.track->bytesPerFrame = c.bytesPerFrame;
    movie.track->samplesPerPacket = 64;
    BoxSTSZ box;
    ASSERT_TRUE(ReadPayload(&box, StszPayload(1, 640), &movie.context));
    EXPECT_EQ(box.GetSampleSize(0), 1u) << c.why;
    EXPECT_EQ(movie.track->totalSampleBytes, 640) << c.why;
  }
  OneTrack table("soun", MP4_FILE_MODE_MOV);
  table.track->bytesPerFrame = 34;
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 1, {50}), &table.context));
  EXPECT_EQ(box.GetSampleSize(0), 50u) << "table form";
}

TEST(BoxSTSZ, ReaderStandsAtThePayloadsEnd) {
  for (const std::uint32_t constant : {0u, 512u}) {
    const Bytes payload = StszPayload(constant, 2, {100, 300}).Fill(3, 9);
    FileReader opened(payload + Bytes{1, 2, 3});
    BoxSTSZ box;
    ASSERT_TRUE(box.ReadData(&opened.reader, 23, nullptr));
    EXPECT_EQ(opened.reader.GetPos(), 23) << constant;
  }
}

TEST(BoxSTSZ, TruncatedFileStopsAtItsEndInTableFormOnly) {
  FileReader table(StszPayload(0, 3, {100, 300}));
  BoxSTSZ box;
  ASSERT_TRUE(box.ReadData(&table.reader, 24, nullptr));
  EXPECT_EQ(table.reader.GetPos(), 20) << "rows are read";
  ExpectSizes(&box, {100, 300});
  FileReader constant(StszPayload(512, 3));
  ASSERT_TRUE(box.ReadData(&constant.reader, 24, nullptr));
  EXPECT_EQ(constant.reader.GetPos(), 24) << "what follows a constant size is skipped";
}

TEST(BoxSTSZ, BodyShorterThanItsHeaderStepsBackToItsEnd) {
  for (const std::uint32_t constant : {0u, 512u}) {
    for (int size = 1; size < 12; ++size) {
      const Bytes payload = StszPayload(constant, 2, {100, 300});
      mmBufReader reader(payload.data(), payload.size());
      BoxSTSZ box;
      ASSERT_TRUE(box.ReadData(&reader, size, nullptr));
      EXPECT_EQ(reader.GetPos(), size);
      EXPECT_EQ(box.GetSampleCount(), constant != 0 ? 2u : 0u);
    }
  }
}

TEST(BoxSTSZ, JudgingPassesOverTheRowsAsIfRead) {
  const Bytes payload = StszPayload(0, 2, {100, 300});
  mp4::ScanControl scan(static_cast<std::int64_t>(payload.size()));
  scan.tablesUnread = true;
  FileReader opened(payload);
  opened.reader.AttachScan(&scan);
  BoxSTSZ box;
  ASSERT_TRUE(box.ReadData(&opened.reader, 24, nullptr));
  EXPECT_EQ(opened.reader.GetPos(), 20);
  EXPECT_EQ(box.GetSampleSize(0), 0u);
}

TEST(BoxSTSZ, ARefusedTableIsEmpty) {
  const Bytes payload = StszPayload(0, 2, {100, 300});
  mp4::ScanControl scan(static_cast<std::int64_t>(payload.size()));
  while (scan.TakeBytes(1 << 20)) {
  }
  mmBufReader reader(payload.data(), payload.size());
  reader.AttachScan(&scan);
  BoxSTSZ box;
  EXPECT_FALSE(box.ReadData(&reader, 20, nullptr));
  EXPECT_EQ(box.GetSampleCount(), 0u);
  EXPECT_EQ(box.GetSampleSize(0), 0u);
  EXPECT_EQ(reader.GetPos(), 20);
}

TEST(BoxSTSZ, AppendToAnEmptyTableStartsTheConstantForm) {
  OneTrack audio("soun");
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 0), &audio.context));
  box.AppendSize(200);
  EXPECT_EQ(box.GetConstantSize(), 200u);
  EXPECT_EQ(audio.track->maxSampleSize, 0u) << "the track is not touched";
  EXPECT_EQ(audio.track->constSampleCount, 0u);
  ExpectPublished(audio, {});
  box.AppendSize(200);
  EXPECT_EQ(audio.track->constSampleCount, 2u);
  box.AppendSize(200);
  EXPECT_EQ(audio.track->constSampleCount, 3u);
  EXPECT_EQ(box.GetSampleCount(), 3u);
  EXPECT_EQ(box.GetConstantSize(), 200u);
}

TEST(BoxSTSZ, ADifferentSizeExpandsTheConstantForm) {
  OneTrack audio("soun");
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 0), &audio.context));
  for (int i = 0; i < 3; ++i) box.AppendSize(200);
  box.AppendSize(150);
  EXPECT_EQ(box.GetConstantSize(), 0u);
  ExpectSizes(&box, {200, 200, 200, 150});
  EXPECT_EQ(box.GetSampleSize(4), 0u);
  EXPECT_EQ(box.GetSampleSize(-1), 0u);
  EXPECT_EQ(audio.track->maxSampleSize, 150u) << "only appended sizes are compared";
  EXPECT_EQ(audio.track->constSampleCount, 0u);
  EXPECT_EQ(audio.track->constSampleSize, 0u);
}

TEST(BoxSTSZ, OnlyTheAppendedSizeIsPublished) {
  OneTrack audio("soun");
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(512, 1000), &audio.context));
  box.AppendSize(150);
  box.AppendSize(160);
  ExpectPublished(audio, {150, 160});
  EXPECT_EQ(box.GetSampleCount(), 1002u);
  EXPECT_EQ(box.GetSampleSize(999), 512u);
  EXPECT_EQ(box.GetSampleSize(1001), 160u);
}

TEST(BoxSTSZ, AZeroSizeFirstExpandsWithZeros) {
  BoxSTSZ box;
  box.AppendSize(0);
  EXPECT_EQ(box.GetSampleCount(), 1u);
  EXPECT_EQ(box.GetSampleSize(0), 0u);
  box.AppendSize(7);
  ExpectSizes(&box, {0, 7});
}

TEST(BoxSTSZ, ExpandingCostsNoMemoryForSamplesThatAreOnlyACount) {
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(512, 0xFFFFFFF0)));
  box.AppendSize(9);
  EXPECT_EQ(box.GetSampleCount(), 0xFFFFFFF1u);
  EXPECT_EQ(box.GetSampleSize(INT_MAX), 512u);
  EXPECT_EQ(box.SumSizes(0, INT_MAX), 512ull * INT_MAX);
}

TEST(BoxSTSZ, AppendInTableFormGoesBehindTheRowsHeld) {
  OneTrack video("vide");
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 2, {100, 300}).Be16(5), &video.context));
  box.AppendSize(400);
  ExpectSizes(&box, {100, 300, 400});
  EXPECT_EQ(video.track->maxSampleSize, 400u);
  EXPECT_EQ(video.track->totalSampleBytes, 400) << "as read";
  EXPECT_TRUE(video.track->sampleSizeTable.empty());
}

TEST(BoxSTSZ, LargestAppendedSizeIsComparedAsSigned) {
  OneTrack video("vide");
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 1, {100}), &video.context));
  box.AppendSize(0x80000000);
  EXPECT_EQ(video.track->maxSampleSize, 100u);
}

TEST(BoxSTSZ, BulkAppendEqualsSingleAppends) {
  OneTrack audio("soun");
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 1, {100}), &audio.context));
  box.AppendSizes(5, 0);
  EXPECT_EQ(box.GetSampleCount(), 1u);
  box.AppendSizes(200, 3);
  ExpectSizes(&box, {100, 200, 200, 200});
  ExpectPublished(audio, {100, 200, 200, 200});
  EXPECT_EQ(audio.track->maxSampleSize, 200u);
}

TEST(BoxSTSZ, BulkAppendKeepsTheConstantForm) {
  OneTrack audio("soun");
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 0), &audio.context));
  EXPECT_TRUE(box.StaysConstant(200));
  box.AppendSizes(200, 5000000);
  EXPECT_TRUE(box.StaysConstant(200));
  EXPECT_FALSE(box.StaysConstant(201));
  EXPECT_EQ(box.GetSampleCount(), 5000000u);
  EXPECT_EQ(box.GetConstantSize(), 200u);
  EXPECT_EQ(audio.track->constSampleCount, 5000000u);
}

TEST(BoxSTSZ, BulkAppendWrapsLikeSingleAppends) {
  OneTrack audio("soun");
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(512, 0xFFFFFFFE), &audio.context));
  // 0xFFFFFFFF, then 0; at 0 the constant form starts again with one sample, the track untouched.
  box.AppendSizes(512, 3);
  EXPECT_EQ(box.GetSampleCount(), 1u);
  EXPECT_EQ(audio.track->constSampleCount, 0u);
  box.AppendSizes(512, 1);
  EXPECT_EQ(audio.track->constSampleCount, 2u);
}

TEST(BoxSTSZ, ListOfSizesEqualsSingleAppends) {
  OneTrack audio("soun");
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 0), &audio.context));
  const std::uint32_t sizes[] = {7, 7, 300, 0x80000000, 5};
  box.AppendEach(sizes, 0);
  EXPECT_EQ(box.GetSampleCount(), 0u);
  box.AppendEach(sizes, 5);
  ExpectSizes(&box, {7, 7, 300, 0x80000000, 5});
  ExpectPublished(audio, {300, 0x80000000, 5});
  EXPECT_EQ(audio.track->maxSampleSize, 300u);
}

TEST(BoxSTSZ, ListOfSizesWrapsLikeSingleAppends) {
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(512, 0xFFFFFFFE), nullptr));
  // 0xFFFFFFFF in constant form, 0 in table form; at 0 the constant form starts again.
  const std::uint32_t sizes[] = {512, 9, 8, 8, 8};
  box.AppendEach(sizes, 5);
  EXPECT_EQ(box.GetSampleCount(), 3u);
  EXPECT_EQ(box.GetConstantSize(), 8u);
}

TEST(BoxSTSZ, ZeroSizesNeedRows) {
  BoxSTSZ box;
  EXPECT_FALSE(box.StaysConstant(0));
  box.AppendSizes(0, 3);
  ExpectSizes(&box, {0, 0, 0});
}

TEST(BoxSTSZ, SumsSizes) {
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(0, 3, {100, 0xFFFFFFFF, 200})));
  EXPECT_EQ(box.SumSizes(0, 3), 4294967595u);
  EXPECT_EQ(box.SumSizes(1, 2), 4294967295u);
  EXPECT_EQ(box.SumSizes(2, 2), 0u);
  EXPECT_EQ(box.SumSizes(3, 1), 0u);
  EXPECT_EQ(box.SumSizes(INT_MIN, INT_MAX), 4294967595u) << "zero outside the table";
}

TEST(BoxSTSZ, SumsTheConstantForm) {
  BoxSTSZ box;
  ASSERT_TRUE(ReadPayload(&box, StszPayload(3, 10)));
  EXPECT_EQ(box.SumSizes(2, 5), 9u);
  EXPECT_EQ(box.SumSizes(-2, 20), 66u) << "one size for every index";
}

TEST(BoxSTSZ, SumsAcrossBlocksAndAppends) {
  BoxSTSZ box;
  for (unsigned i = 0; i < 1000; ++i) box.AppendSize(i + 1);
  EXPECT_EQ(box.SumSizes(0, 1000), 500500u);
  EXPECT_EQ(box.SumSizes(100, 900), 400400u) << "101 to 900";
  for (unsigned i = 1000; i < 2000; ++i) box.AppendSize(i + 1);
  EXPECT_EQ(box.SumSizes(0, 2000), 2001000u);
  EXPECT_EQ(box.SumSizes(0, 5000), 2001000u);
}

TEST(BoxSTSZ, NeverReadTableAnswersZero) {
  BoxSTSZ box;
  EXPECT_EQ(box.GetSampleCount(), 0u);
  EXPECT_EQ(box.GetSampleSize(0), 0u);
  EXPECT_EQ(box.SumSizes(0, 9), 0u);
}
