#include <gtest/gtest.h>

#include "boxes/base/Mp4Context.h"
#include "boxes/movie/BoxMVHD.h"
#include "io/Mp4StreamReader.h"
#include "tests/Bytes.h"
#include "tests/Fixtures.h"
#include "tests/MovieFixtures.h"

namespace {

/// A reader at the payload of a box.
struct PayloadReader {
  explicit PayloadReader(const Bytes& box) : reader(box.data(), box.size()) { reader.SetPos(8); }
  mmBufReader reader;
};

}  // namespace

TEST(BoxMVHD, Version0HasNarrowTimes) {
  const Bytes box = fixture::Mvhd(600, 0xFFFFFFFF);
  PayloadReader at(box);
  Mp4Context context;
  BoxMVHD mvhd;
  ASSERT_TRUE(mvhd.ReadData(&at.reader, 100, &context));
  EXPECT_EQ(mvhd.creationTime, 11u);
  EXPECT_EQ(mvhd.modificationTime, 22u);
  EXPECT_EQ(mvhd.timescale, 600u);
  EXPECT_EQ(mvhd.duration, 0xFFFFFFFFu);
  EXPECT_EQ(context.GetTimescale(), 600);
  EXPECT_EQ(context.GetDuration(), 0xFFFFFFFFLL);
  EXPECT_EQ(at.reader.GetPos(), 108);
}

TEST(BoxMVHD, Version1HasWideTimes) {
  const Bytes box = fixture::Mvhd(90000, 0x123456789AULL, 1);
  PayloadReader at(box);
  Mp4Context context;
  BoxMVHD mvhd;
  ASSERT_TRUE(mvhd.ReadData(&at.reader, 112, &context));
  EXPECT_EQ(mvhd.creationTime, 11u);
  EXPECT_EQ(mvhd.modificationTime, 22u);
  EXPECT_EQ(mvhd.timescale, 90000u);
  EXPECT_EQ(mvhd.duration, 0x123456789AULL);
  EXPECT_EQ(context.GetDuration(), 0x123456789ALL);
  EXPECT_EQ(at.reader.GetPos(), 120);
}

TEST(BoxMVHD, OtherVersionsAreReadAsVersion0) {
  const Bytes payload = Bytes{2, 0, 0, 0}.Be32(1).Be32(2).Be32(48000).Be32(96000);
  mmBufReader reader(payload.data(), payload.size());
  Mp4Context context;
  BoxMVHD mvhd;
  ASSERT_TRUE(mvhd.ReadData(&reader, 20, &context));
  EXPECT_EQ(mvhd.timescale, 48000u);
  EXPECT_EQ(mvhd.duration, 96000u);
  EXPECT_EQ(reader.GetPos(), 20);
}

TEST(BoxMVHD, TimescaleZeroBecomesOne) {
  const Bytes box = fixture::Mvhd(0, 5);
  PayloadReader at(box);
  Mp4Context context;
  BoxMVHD mvhd;
  ASSERT_TRUE(mvhd.ReadData(&at.reader, 100, &context));
  EXPECT_EQ(mvhd.timescale, 1u);
  EXPECT_EQ(context.GetTimescale(), 1);
}

TEST(BoxMVHD, NullReaderOrNoPayloadFails) {
  const Bytes box = fixture::Mvhd(600, 5);
  PayloadReader at(box);
  Mp4Context context;
  BoxMVHD mvhd;
  EXPECT_FALSE(mvhd.ReadData(nullptr, 100, &context));
  EXPECT_FALSE(mvhd.ReadData(&at.reader, 0, &context));
  EXPECT_FALSE(mvhd.ReadData(&at.reader, -1, &context));
  EXPECT_EQ(at.reader.GetPos(), 8);
  EXPECT_EQ(context.GetTimescale(), 1000);
}

TEST(BoxMVHD, WithoutContextTheBoxIsStillRead) {
  const Bytes box = fixture::Mvhd(600, 5);
  PayloadReader at(box);
  BoxMVHD mvhd;
  EXPECT_TRUE(mvhd.ReadData(&at.reader, 100, nullptr));
  EXPECT_EQ(mvhd.duration, 5u);
}

TEST(BoxMVHD, PayloadShorterThanItsFieldsIsSteppedBackOver) {
  const Bytes box = fixture::Mvhd(600, 5);
  PayloadReader at(box);
  Mp4Context context;
  ASSERT_TRUE(BoxMVHD().ReadData(&at.reader, 1, &context));
  EXPECT_EQ(context.GetDuration(), 5);
  EXPECT_EQ(at.reader.GetPos(), 9);
}

TEST(BoxMVHD, FieldsBehindTheEndOfAFileAreZero) {
  // The timescale is cut after two of its bytes: 0x00020000 is left of 0x0002xxxx.
  const TempFile file(Bytes{0, 0, 0, 0}.Be32(1).Be32(2).Be16(2));
  Mp4StreamReader reader;
  ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
  Mp4Context context;
  BoxMVHD mvhd;
  ASSERT_TRUE(mvhd.ReadData(&reader, 100, &context));
  EXPECT_EQ(mvhd.timescale, 0x20000u);
  EXPECT_EQ(mvhd.duration, 0u);
  EXPECT_EQ(reader.GetPos(), 14 + 80);
}
