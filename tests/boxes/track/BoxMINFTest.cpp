#include <gtest/gtest.h>

#include "boxes/track/BoxMINF.h"
#include "tests/TrackFixtures.h"

using fixture::Outcome;
using fixture::ReadBox;

namespace {

Bytes EmptyStbl() { return Box("stbl"); }

}  // namespace

TEST(BoxMINF, ReadsItsChildren) {
  fixture::OneTrack one;
  BoxMINF box;
  const Bytes bytes =
      Box("minf", fixture::Vmhd() + fixture::Smhd() + fixture::Dinf() + EmptyStbl());
  const Outcome end = ReadBox(&box, bytes, &one.context);
  EXPECT_TRUE(end.ok);
  EXPECT_EQ(end.pos, static_cast<long long>(bytes.size()) - 8);
  EXPECT_NE(box.videoHeaderBox, nullptr);
  EXPECT_NE(box.soundHeaderBox, nullptr);
  EXPECT_NE(box.dataInformationBox, nullptr);
  EXPECT_NE(box.sampleTableBox, nullptr);
}

TEST(BoxMINF, FailsWithoutReaderContextOrPayload) {
  Mp4Context context;
  BoxMINF box;
  const Bytes bytes = EmptyStbl();
  mmBufReader reader(bytes.data(), bytes.size());
  EXPECT_FALSE(box.ReadData(nullptr, 8, &context));
  EXPECT_FALSE(box.ReadData(&reader, 8, nullptr));
  EXPECT_FALSE(box.ReadData(&reader, 0, &context));
  EXPECT_EQ(reader.GetPos(), 0);
  // One byte is enough to read a child, which then overruns and is stepped back over.
  EXPECT_TRUE(box.ReadData(&reader, 1, &context));
  EXPECT_EQ(reader.GetPos(), 1);
}

TEST(BoxMINF, FailsWithoutSampleTable) {
  Mp4Context context;
  BoxMINF box;
  const Bytes bytes = Box("minf", fixture::Vmhd() + fixture::Dinf());
  const Outcome end = ReadBox(&box, bytes, &context);
  EXPECT_FALSE(end.ok);
  EXPECT_EQ(end.pos, static_cast<long long>(bytes.size()) - 8);
}

TEST(BoxMINF, FailingChildStopsTheLoopAndTheRestIsSkipped) {
  Mp4Context context;
  BoxMINF box;
  // A sample table whose payload would be negative fails.
  const Bytes bytes = Box("minf", SizedBox(4, "stbl") + fixture::Smhd());
  const Outcome end = ReadBox(&box, bytes, &context);
  EXPECT_FALSE(end.ok);
  EXPECT_EQ(end.pos, 8 + (static_cast<long long>(bytes.size()) - 8 - 4));
  EXPECT_EQ(box.soundHeaderBox, nullptr);
}

TEST(BoxMINF, UnknownChildIsSkipped) {
  Mp4Context context;
  BoxMINF box;
  const Bytes bytes = Box("minf", Box("gmhd", Bytes().Fill(24, 0xFF)) + EmptyStbl());
  EXPECT_TRUE(ReadBox(&box, bytes, &context).ok);
}

TEST(BoxMINF, ChildOfSizeZeroTakesTheRest) {
  Mp4Context context;
  BoxMINF box;
  const Bytes bytes = Box("minf", EmptyStbl() + SizedBox(0, "vmhd", Bytes().Fill(12)));
  const Outcome end = ReadBox(&box, bytes, &context);
  EXPECT_TRUE(end.ok);
  EXPECT_EQ(end.pos, 8 + 20);
  EXPECT_NE(box.videoHeaderBox, nullptr);
}

TEST(BoxMINF, OverrunningChildIsSteppedBackOver) {
  Mp4Context context;
  BoxMINF box;
  const Bytes bytes = Box("minf", EmptyStbl() + SizedBox(100, "vmhd", Bytes().Fill(12)));
  const Outcome end = ReadBox(&box, bytes, &context);
  EXPECT_TRUE(end.ok);
  EXPECT_EQ(end.pos, 8 + 20);
}

TEST(BoxMINF, RepeatedChildReplacesTheEarlierOne) {
  Mp4Context context;
  BoxMINF box;
  ReadBox(&box, Box("minf", EmptyStbl()), &context);
  box.sampleTableBox->curTime = 5;
  EXPECT_TRUE(ReadBox(&box, Box("minf", EmptyStbl()), &context).ok);
  EXPECT_EQ(box.sampleTableBox->curTime, 0);
}

TEST(BoxMINF, WithoutSampleTableNothingIterates) {
  BoxMINF box;
  BoxBase::SAMPLE sample{};
  EXPECT_FALSE(box.ReadyToDemux(&sample));
  EXPECT_FALSE(box.GetSampleInfo(&sample));
  EXPECT_FALSE(box.Next());
  EXPECT_EQ(box.Seek(0), -1);
}

TEST(BoxMINF, IterationGoesDownToTheSampleTable) {
  fixture::OneTrack one;
  one.track->handlerType = 0x65646976;  // "vide"
  BoxMINF box;
  ASSERT_TRUE(ReadBox(&box, fixture::Minf({}), &one.context).ok);
  BoxBase::SAMPLE sample{};
  ASSERT_TRUE(box.ReadyToDemux(&sample));
  EXPECT_TRUE(box.GetSampleInfo(&sample));
  EXPECT_EQ(sample.offset, 1000u);
  EXPECT_EQ(sample.size, 10u);
  EXPECT_TRUE(box.Next());
  EXPECT_TRUE(box.GetSampleInfo(&sample));
  EXPECT_EQ(sample.offset, 2000u);
  EXPECT_EQ(sample.time, 100);
  EXPECT_EQ(box.Seek(350), 300);
  EXPECT_TRUE(box.GetSampleInfo(&sample));
  EXPECT_EQ(sample.offset, 4000u);
  EXPECT_FALSE(box.Next());
}

TEST(BoxMINF, NullSampleIsRefused) {
  BoxMINF box;
  box.sampleTableBox = std::make_unique<BoxSTBL>();
  EXPECT_FALSE(box.GetSampleInfo(nullptr));
}

TEST(BoxMINF, ClearDropsTheChildren) {
  Mp4Context context;
  BoxMINF box;
  ReadBox(&box, Box("minf", fixture::Vmhd() + fixture::Smhd() + fixture::Dinf() + EmptyStbl()),
          &context);
  box.Clear();
  EXPECT_EQ(box.videoHeaderBox, nullptr);
  EXPECT_EQ(box.soundHeaderBox, nullptr);
  EXPECT_EQ(box.dataInformationBox, nullptr);
  EXPECT_EQ(box.sampleTableBox, nullptr);
}
