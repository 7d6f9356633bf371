#include <gtest/gtest.h>

#include "boxes/track/BoxMDHD.h"
#include "io/Mp4StreamReader.h"
#include "tests/Fixtures.h"
#include "tests/TrackFixtures.h"

using fixture::Mdhd;
using fixture::Outcome;
using fixture::ReadBox;

TEST(BoxMDHD, Version0Has32BitTimes) {
  fixture::OneTrack one;
  BoxMDHD box;
  const Outcome end = ReadBox(&box, Mdhd(90000, 0xFFFFFFFF, 0, 0x15C7), &one.context);
  EXPECT_TRUE(end.ok);
  EXPECT_EQ(end.pos, 24);
  EXPECT_EQ(box.creationTime, 11u);
  EXPECT_EQ(box.modificationTime, 22u);
  EXPECT_EQ(box.GetTimescale(), 90000u);
  EXPECT_EQ(box.duration, 0xFFFFFFFFu);
  EXPECT_EQ(box.language, 0x15C7);
  EXPECT_EQ(one.track->timescale, 90000);
  EXPECT_EQ(one.track->duration, 0xFFFFFFFFLL);
  EXPECT_EQ(one.track->language, 0x15C7);
}

TEST(BoxMDHD, Version1RecordsThe64BitDuration) {
  fixture::OneTrack one;
  BoxMDHD box;
  const Outcome end = ReadBox(&box, Mdhd(48000, 0x200000003ULL, 1, 0x15C7), &one.context);
  EXPECT_TRUE(end.ok);
  EXPECT_EQ(end.pos, 36);
  EXPECT_EQ(box.creationTime, 11u);
  EXPECT_EQ(box.modificationTime, 22u);
  EXPECT_EQ(one.track->timescale, 48000);
  EXPECT_EQ(one.track->duration, 0x200000003LL);
  EXPECT_EQ(one.track->language, 0x15C7);
}

TEST(BoxMDHD, EveryOtherVersionIsReadAsVersion0) {
  fixture::OneTrack one;
  BoxMDHD box;
  EXPECT_EQ(ReadBox(&box, Mdhd(48000, 77, 2), &one.context).pos, 24);
  EXPECT_EQ(one.track->duration, 77);
}

TEST(BoxMDHD, FailsWithoutReaderOrPayload) {
  fixture::OneTrack one;
  BoxMDHD box;
  const Bytes bytes = Mdhd();
  mmBufReader reader(bytes.data(), bytes.size());
  EXPECT_FALSE(box.ReadData(nullptr, 24, &one.context));
  EXPECT_FALSE(box.ReadData(&reader, 0, &one.context));
  EXPECT_FALSE(box.ReadData(&reader, -1, &one.context));
  EXPECT_EQ(reader.GetPos(), 0);
  EXPECT_EQ(one.track->timescale, 0);
}

TEST(BoxMDHD, RestIsSkippedBackwardsToo) {
  BoxMDHD box;
  Bytes longer = Mdhd();
  longer.Fill(3);
  EXPECT_EQ(ReadBox(&box, longer, nullptr).pos, 27);
  Bytes shorter = Mdhd();
  shorter.Cut(8 + 20);
  EXPECT_EQ(ReadBox(&box, shorter, nullptr).pos, 20);
  Bytes wide = Mdhd(1, 1, 1);
  wide.Cut(8 + 30);
  EXPECT_EQ(ReadBox(&box, wide, nullptr).pos, 30);
}

TEST(BoxMDHD, FlagsAreSkippedNotRead) {
  // A seek may leave the end of the file behind, where a read would have stopped.
  const TempFile file(Bytes{0});
  Mp4StreamReader reader;
  ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
  BoxMDHD box;
  EXPECT_TRUE(box.ReadData(&reader, 24, nullptr));
  // 1 byte read, 3 skipped, 2 skipped behind the language; the final skip is 0.
  EXPECT_EQ(reader.GetPos(), 6);
  EXPECT_EQ(box.GetTimescale(), 0u);
}

TEST(BoxMDHD, WithoutTrackOrContextNothingIsPublished) {
  Mp4Context context;
  BoxMDHD box;
  EXPECT_TRUE(ReadBox(&box, Mdhd(500), &context).ok);
  EXPECT_TRUE(ReadBox(&box, Mdhd(500), nullptr).ok);
  EXPECT_EQ(box.GetTimescale(), 500u);
  EXPECT_EQ(context.GetTimescale(), 1000);
}
