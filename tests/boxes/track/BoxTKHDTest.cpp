#include <gtest/gtest.h>

#include "boxes/track/BoxTKHD.h"
#include "io/Limits.h"
#include "io/Mp4StreamReader.h"
#include "io/ScanControl.h"
#include "tests/Fixtures.h"
#include "tests/TrackFixtures.h"

using fixture::Outcome;
using fixture::ReadBox;
using fixture::Tkhd;

namespace {

constexpr std::uint32_t kWidth = 0x01400000;   // 320.0
constexpr std::uint32_t kHeight = 0x00F08000;  // 240.5

}  // namespace

TEST(BoxTKHD, IsZeroAtFirst) {
  BoxTKHD box;
  EXPECT_EQ(box.creationTime, 0u);
  EXPECT_EQ(box.modificationTime, 0u);
  EXPECT_EQ(box.duration, 0u);
  EXPECT_EQ(box.flags, 0u);
  EXPECT_EQ(box.GetTrackID(), 0);
  EXPECT_EQ(box.volume, 0u);
  EXPECT_EQ(box.width, 0u);
  EXPECT_EQ(box.height, 0u);
}

TEST(BoxTKHD, Version0Has32BitTimes) {
  BoxTKHD box;
  const Outcome end = ReadBox(&box, Tkhd(9, 0xFFFFFFFE, 0, kWidth, kHeight, 0x0180), nullptr);
  EXPECT_TRUE(end.ok);
  EXPECT_EQ(end.pos, 84);
  EXPECT_EQ(box.creationTime, 11u);
  EXPECT_EQ(box.modificationTime, 22u);
  EXPECT_EQ(box.GetTrackID(), 9);
  EXPECT_EQ(box.duration, 0xFFFFFFFEu);
  EXPECT_EQ(box.flags, 7u);
  EXPECT_EQ(box.volume, 0x0180u);
  EXPECT_EQ(box.width, kWidth);
  EXPECT_EQ(box.height, kHeight);
}

TEST(BoxTKHD, Version1Has64BitTimes) {
  BoxTKHD box;
  const Outcome end = ReadBox(&box, Tkhd(9, 0x100000002ULL, 1, kWidth, kHeight, 0x0180), nullptr);
  EXPECT_TRUE(end.ok);
  EXPECT_EQ(end.pos, 96);
  EXPECT_EQ(box.creationTime, 11u);
  EXPECT_EQ(box.modificationTime, 22u);
  EXPECT_EQ(box.GetTrackID(), 9);
  EXPECT_EQ(box.duration, 0x100000002ULL);
  EXPECT_EQ(box.volume, 0x0180u);
  EXPECT_EQ(box.width, kWidth);
  EXPECT_EQ(box.height, kHeight);
}

TEST(BoxTKHD, EveryOtherVersionIsReadAsVersion0) {
  for (const unsigned version : {2u, 255u}) {
    BoxTKHD box;
    const Outcome end = ReadBox(&box, Tkhd(9, 33, version, kWidth, kHeight), nullptr);
    EXPECT_TRUE(end.ok);
    EXPECT_EQ(end.pos, 84);
    EXPECT_EQ(box.GetTrackID(), 9);
    EXPECT_EQ(box.duration, 33u);
    EXPECT_EQ(box.height, kHeight);
  }
}

TEST(BoxTKHD, FlagsAreThe24BitsAfterTheVersion) {
  BoxTKHD box;
  Bytes bytes = Tkhd(1);
  bytes.PutBe32(8, 0x00ABCDEF);
  ReadBox(&box, bytes, nullptr);
  EXPECT_EQ(box.flags, 0xABCDEFu);
}

TEST(BoxTKHD, FailsWithoutReaderOrPayload) {
  fixture::OneTrack one;
  BoxTKHD box;
  const Bytes bytes = Tkhd(1);
  mmBufReader reader(bytes.data(), bytes.size());
  EXPECT_FALSE(box.ReadData(nullptr, 84, &one.context));
  EXPECT_FALSE(box.ReadData(&reader, 0, &one.context));
  EXPECT_FALSE(box.ReadData(&reader, -8, &one.context));
  EXPECT_EQ(reader.GetPos(), 0);
  EXPECT_EQ(one.context.GetTrackCount(), 1);
}

TEST(BoxTKHD, BytesBehindTheFieldsAreSkipped) {
  for (const unsigned version : {0u, 1u}) {
    BoxTKHD box;
    Bytes bytes = Tkhd(1, 0, version);
    bytes.Fill(5);
    EXPECT_EQ(ReadBox(&box, bytes, nullptr).pos, version == 1 ? 101 : 89);
  }
}

TEST(BoxTKHD, ShortPayloadIsReadInFullAndSteppedBack) {
  Mp4Context context;
  BoxTKHD box;
  const Bytes bytes = Tkhd(3, 0, 0, kWidth, kHeight);
  mmBufReader reader(bytes.data(), bytes.size());
  reader.SetPos(8);
  EXPECT_TRUE(box.ReadData(&reader, 1, &context));
  EXPECT_EQ(reader.GetPos(), 9);
  EXPECT_EQ(box.height, kHeight);
  EXPECT_EQ(context.GetTrackCount(), 1);
}

TEST(BoxTKHD, FileThatEndsInsideGivesZeros) {
  // The file ends 6 bytes into the payload: two bytes of the creation time exist.
  const TempFile file(Bytes{0, 0, 0, 7, 0x12, 0x34});
  Mp4StreamReader reader;
  ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
  Mp4Context context;
  BoxTKHD box;
  EXPECT_TRUE(box.ReadData(&reader, 84, &context));
  EXPECT_EQ(box.creationTime, 0x12340000u);
  EXPECT_EQ(box.GetTrackID(), 0);
  EXPECT_EQ(box.width, 0u);
  // 6, then the skips of 4 + 8 + 4 + 2 + 36 bytes; the final one is 0.
  EXPECT_EQ(reader.GetPos(), 60);
}

TEST(BoxTKHD, MakesTheTracksRecordAndMakesItCurrent) {
  fixture::OneTrack one = fixture::OneTrack::OfId(1);
  BoxTKHD box;
  EXPECT_TRUE(ReadBox(&box, Tkhd(5, 1234, 0, kWidth, kHeight, 0x0180), &one.context).ok);
  ASSERT_EQ(one.context.GetTrackCount(), 2);
  Mp4Context::TRACK* track = one.context.GetTrackByIndex(1);
  EXPECT_EQ(one.context.GetCurrentTrack(), track);
  EXPECT_EQ(track->trackId, 5u);
  EXPECT_EQ(track->volume, 0x0180u);
  EXPECT_EQ(track->width, kWidth);
  EXPECT_EQ(track->height, kHeight);
}

TEST(BoxTKHD, DurationIsNotPublished) {
  Mp4Context context;
  BoxTKHD box;
  ReadBox(&box, Tkhd(5, 1234), &context);
  EXPECT_EQ(box.duration, 1234u);
  EXPECT_EQ(context.GetCurrentTrack()->duration, 0);
  EXPECT_EQ(context.GetDuration(), 0);
}

TEST(BoxTKHD, RepeatedIDFillsANewRecordButMakesTheFirstCurrent) {
  Mp4Context context;
  BoxTKHD first;
  BoxTKHD second;
  ReadBox(&first, Tkhd(5, 0, 0, 1, 2, 3), &context);
  ReadBox(&second, Tkhd(5, 0, 0, kWidth, kHeight, 0x0180), &context);
  ASSERT_EQ(context.GetTrackCount(), 2);
  EXPECT_EQ(context.GetCurrentTrack(), context.GetTrackByIndex(0));
  EXPECT_EQ(context.GetTrackByIndex(0)->width, 1u);
  EXPECT_EQ(context.GetTrackByIndex(0)->height, 2u);
  EXPECT_EQ(context.GetTrackByIndex(0)->volume, 3u);
  EXPECT_EQ(context.GetTrackByIndex(1)->width, kWidth);
  EXPECT_EQ(context.GetTrackByIndex(1)->height, kHeight);
  EXPECT_EQ(context.GetTrackByIndex(1)->volume, 0x0180u);
}

TEST(BoxTKHD, CurrentRecordIsTheSameDuringAnOpening) {
  // The first record is not made by a track header of the opening, the others are.
  for (const int before : {0, 1}) {
    Mp4Context context;
    mp4::ScanControl scan(1000);
    for (int i = 0; i < before; ++i) context.AddTrack(6);
    for (const int id : {5, 6, 5, 7, 6}) {
      const Bytes bytes = Tkhd(static_cast<std::uint32_t>(id));
      mmBufReader reader(bytes.data(), bytes.size());
      reader.AttachScan(&scan);
      reader.SetPos(8);
      BoxTKHD box;
      ASSERT_TRUE(box.ReadData(&reader, static_cast<long long>(bytes.size()) - 8, &context));
      EXPECT_EQ(context.GetCurrentTrack(), context.GetTrack(id));
    }
  }
}

TEST(BoxTKHD, ClearKeepsTheFields) {
  BoxTKHD box;
  ReadBox(&box, Tkhd(5), nullptr);
  box.Clear();
  EXPECT_EQ(box.GetTrackID(), 5);
}

TEST(BoxTKHD, ContextFullOfRecordsFails) {
  Mp4Context context;
  const Bytes bytes = Tkhd(5);
  for (int i = 0; i < mp4::limits::kMostTracks; ++i) {
    BoxTKHD box;
    ASSERT_TRUE(ReadBox(&box, bytes, &context).ok);
  }
  BoxTKHD box;
  const Outcome end = ReadBox(&box, bytes, &context);
  EXPECT_FALSE(end.ok);
  EXPECT_EQ(end.pos, 84);
  EXPECT_EQ(context.GetTrackCount(), mp4::limits::kMostTracks);
  // Without a context there is nothing to be full.
  EXPECT_TRUE(ReadBox(&box, bytes, nullptr).ok);
}
