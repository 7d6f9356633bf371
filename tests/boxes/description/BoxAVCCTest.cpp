#include <gtest/gtest.h>

#include "boxes/description/BoxAVCC.h"
#include "io/ScanControl.h"
#include "tests/SampleEntries.h"

using namespace fixture;

namespace {

const Bytes kPayload{1, 0x64, 0, 0x1F, 0xFF, 0xE1, 0, 1, 0x67, 1, 0, 1, 0x68};

}  // namespace

TEST(BoxAVCC, KeepsTheWholePayloadAsExtradata) {
  OneTrack one;
  mmBufReader reader(kPayload.data(), kPayload.size());
  BoxAVCC box;
  EXPECT_TRUE(box.ReadData(&reader, 13, &one.context));
  EXPECT_EQ(AsText(kPayload), one.ExtraData());
  EXPECT_EQ(13, reader.GetPos());
}

TEST(BoxAVCC, ReplacesEarlierExtradata) {
  OneTrack one;
  mmBufReader reader(kPayload.data(), kPayload.size());
  BoxAVCC box;
  box.ReadData(&reader, 13, &one.context);
  reader.SetPos(0);
  EXPECT_TRUE(box.ReadData(&reader, 5, &one.context));
  EXPECT_EQ(AsText(Bytes{1, 0x64, 0, 0x1F, 0xFF}), one.ExtraData());
}

TEST(BoxAVCC, LeavesTheTailOfItsBufferZero) {
  OneTrack one;
  mmBufReader reader(kPayload.data(), kPayload.size());
  BoxAVCC().ReadData(&reader, 13, &one.context);
  for (int i = 13; i < 16; ++i) EXPECT_EQ(0, one.track->extraData[0][i]);  // (13 + 16) & ~15
}

TEST(BoxAVCC, KeepsTheBytesThatExistAndReturnsToItsStart) {
  OneTrack one;
  FileReader open(kPayload);
  BoxAVCC box;
  EXPECT_TRUE(box.ReadData(&open.reader, 4000000000LL, &one.context));
  EXPECT_EQ(AsText(kPayload), one.ExtraData());
  EXPECT_EQ(4000000000LL, open.reader.GetPos());
}

TEST(BoxAVCC, WithoutContextPassesOverItsPayload) {
  mmBufReader reader(kPayload.data(), kPayload.size());
  EXPECT_TRUE(BoxAVCC().ReadData(&reader, 13, nullptr));
  EXPECT_EQ(13, reader.GetPos());
}

TEST(BoxAVCC, WithoutATrackPassesOverItsPayload) {
  Mp4Context context;
  mmBufReader reader(kPayload.data(), kPayload.size());
  EXPECT_TRUE(BoxAVCC().ReadData(&reader, 13, &context));
  EXPECT_EQ(13, reader.GetPos());
}

TEST(BoxAVCC, ReadsAnEmptyPayloadAndStepsBack) {
  OneTrack one;
  mmBufReader reader(kPayload.data(), kPayload.size());
  EXPECT_TRUE(BoxAVCC().ReadData(&reader, 0, &one.context));
  EXPECT_EQ(0, reader.GetPos());
  EXPECT_EQ(0U, one.track->extraDataSize[0]);
}

TEST(BoxAVCC, FailsWithoutReaderOrWithANegativeSize) {
  OneTrack one;
  mmBufReader reader(kPayload.data(), kPayload.size());
  EXPECT_FALSE(BoxAVCC().ReadData(nullptr, 13, &one.context));
  EXPECT_FALSE(BoxAVCC().ReadData(&reader, -1, &one.context));
  EXPECT_EQ(0, reader.GetPos());
}

TEST(BoxAVCC, FailsWhenTheAccountRefuses) {
  OneTrack one;
  mmBufReader reader(kPayload.data(), kPayload.size());
  mp4::ScanControl scan(static_cast<std::int64_t>(kPayload.size()));
  scan.TakeBytes(INT64_MAX);
  reader.AttachScan(&scan);
  EXPECT_FALSE(BoxAVCC().ReadData(&reader, 13, &one.context));
  EXPECT_EQ(nullptr, one.track->extraData[0]);
  EXPECT_EQ(0U, one.track->extraDataSize[0]);
}
