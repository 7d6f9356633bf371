#include <gtest/gtest.h>

#include "boxes/track/BoxMDIA.h"
#include "tests/TrackFixtures.h"

using fixture::Outcome;
using fixture::ReadBox;

namespace {

Bytes EmptyMinf() { return Box("minf", Box("stbl")); }

Bytes EmptyMdia(std::string_view handler) {
  return Box("mdia", fixture::Mdhd(500) + fixture::Hdlr(handler) + EmptyMinf());
}

}  // namespace

TEST(BoxMDIA, ReadsItsChildren) {
  fixture::OneTrack one;
  BoxMDIA box;
  const Bytes bytes = EmptyMdia("soun");
  const Outcome end = ReadBox(&box, bytes, &one.context);
  EXPECT_TRUE(end.ok);
  EXPECT_EQ(end.pos, static_cast<long long>(bytes.size()) - 8);
  EXPECT_NE(box.mediaHeaderBox, nullptr);
  EXPECT_NE(box.handlerBox, nullptr);
  EXPECT_NE(box.mediaInformationBox, nullptr);
  EXPECT_EQ(one.track->timescale, 500);
  EXPECT_EQ(one.track->handlerType, 0x6E756F73u);
}

TEST(BoxMDIA, FailsWithoutReaderOrContextOrBelow4Bytes) {
  Mp4Context context;
  BoxMDIA box;
  const Bytes bytes = EmptyMdia("vide");
  mmBufReader reader(bytes.data(), bytes.size());
  EXPECT_FALSE(box.ReadData(nullptr, 100, &context));
  EXPECT_FALSE(box.ReadData(&reader, 100, nullptr));
  EXPECT_FALSE(box.ReadData(&reader, 3, &context));
  EXPECT_EQ(reader.GetPos(), 0);
  EXPECT_EQ(box.mediaHeaderBox, nullptr);
}

TEST(BoxMDIA, PayloadOf4ReadsOneChild) {
  Mp4Context context;
  BoxMDIA box;
  const Bytes bytes = fixture::Mdhd(500);
  mmBufReader reader(bytes.data(), bytes.size());
  EXPECT_FALSE(box.ReadData(&reader, 4, &context));
  EXPECT_EQ(reader.GetPos(), 4);
  EXPECT_EQ(box.GetTimescale(), 500u);
}

TEST(BoxMDIA, FailsWithoutAnyOfItsChildren) {
  const Bytes parts[] = {fixture::Mdhd(500), fixture::Hdlr("vide"), EmptyMinf()};
  for (int missing = 0; missing < 3; ++missing) {
    Bytes children;
    for (int i = 0; i < 3; ++i) {
      if (i != missing) children.Append(parts[i]);
    }
    fixture::OneTrack one;
    BoxMDIA box;
    const Outcome end = ReadBox(&box, Box("mdia", children), &one.context);
    EXPECT_FALSE(end.ok) << missing;
    EXPECT_EQ(end.pos, static_cast<long long>(children.size())) << missing;
  }
}

TEST(BoxMDIA, MediaInformationWithoutSampleTableFailsIt) {
  fixture::OneTrack one;
  BoxMDIA box;
  const Bytes children = fixture::Mdhd() + fixture::Hdlr("vide") + Box("minf", fixture::Vmhd());
  EXPECT_FALSE(ReadBox(&box, Box("mdia", children), &one.context).ok);
}

TEST(BoxMDIA, FailingChildStopsTheLoopAndTheRestIsSkipped) {
  fixture::OneTrack one;
  BoxMDIA box;
  const Bytes children = fixture::Hdlr("vide") + Box("mdhd") + EmptyMinf();
  const Outcome end = ReadBox(&box, Box("mdia", children), &one.context);
  EXPECT_FALSE(end.ok);
  EXPECT_EQ(end.pos, static_cast<long long>(children.size()));
  EXPECT_EQ(box.mediaInformationBox, nullptr);
  EXPECT_EQ(one.track->handlerType, 0x65646976u);
}

TEST(BoxMDIA, UnknownChildIsSkipped) {
  fixture::OneTrack one;
  BoxMDIA box;
  const Bytes children =
      Box("elng", Bytes().Fill(9, 0xFF)) + fixture::Mdhd() + fixture::Hdlr("vide") + EmptyMinf();
  EXPECT_TRUE(ReadBox(&box, Box("mdia", children), &one.context).ok);
}

TEST(BoxMDIA, ChildOfSizeZeroTakesTheRest) {
  fixture::OneTrack one;
  BoxMDIA box;
  const Bytes children = fixture::Mdhd() + fixture::Hdlr("vide") + SizedBox(0, "minf", Box("stbl"));
  const Outcome end = ReadBox(&box, Box("mdia", children), &one.context);
  EXPECT_TRUE(end.ok);
  EXPECT_EQ(end.pos, static_cast<long long>(children.size()));
}

TEST(BoxMDIA, OverrunningChildIsSteppedBackOver) {
  fixture::OneTrack one;
  BoxMDIA box;
  Bytes children = fixture::Mdhd() + fixture::Hdlr("vide") + EmptyMinf();
  children.Append(SizedBox(100, "free", Bytes().Fill(2)));
  const Outcome end = ReadBox(&box, Box("mdia", children), &one.context);
  EXPECT_TRUE(end.ok);
  EXPECT_EQ(end.pos, static_cast<long long>(children.size()));
}

TEST(BoxMDIA, RepeatedChildReplacesTheEarlierOne) {
  fixture::OneTrack one;
  BoxMDIA box;
  const Bytes children = fixture::Mdhd(500) + fixture::Mdhd(600) + fixture::Hdlr("soun") +
                         fixture::Hdlr("vide") + EmptyMinf() + EmptyMinf();
  EXPECT_TRUE(ReadBox(&box, Box("mdia", children), &one.context).ok);
  EXPECT_EQ(box.GetTimescale(), 600u);
  EXPECT_TRUE(box.handlerBox->IsVideo());
  EXPECT_EQ(one.track->timescale, 600);
}

TEST(BoxMDIA, TimescaleIs1WithoutMediaHeader) {
  BoxMDIA box;
  EXPECT_EQ(box.GetTimescale(), 1u);
  box.mediaHeaderBox = std::make_unique<BoxMDHD>();
  EXPECT_EQ(box.GetTimescale(), 0u);
  box.mediaHeaderBox->timescale = 0xFFFFFFFF;
  EXPECT_EQ(box.GetTimescale(), 0xFFFFFFFFu);
}

TEST(BoxMDIA, ReadyToDemuxRefusesWhatIsNeitherAudioNorVideo) {
  for (const char* handler : {"hint", "text", "meta"}) {
    fixture::OneTrack one;
    BoxMDIA box;
    ASSERT_TRUE(ReadBox(&box, EmptyMdia(handler), &one.context).ok);
    BoxBase::SAMPLE sample{};
    EXPECT_FALSE(box.ReadyToDemux(&sample)) << handler;
    EXPECT_EQ(sample.timescale, 500u);
    EXPECT_EQ(sample.isVideo, 0);
  }
}

TEST(BoxMDIA, ReadyToDemuxNeedsAllChildrenAndASample) {
  fixture::OneTrack one;
  BoxBase::SAMPLE sample{};
  BoxMDIA box;
  EXPECT_FALSE(box.ReadyToDemux(&sample));
  ASSERT_TRUE(ReadBox(&box, fixture::Mdia({}), &one.context).ok);
  EXPECT_FALSE(box.ReadyToDemux(nullptr));
  box.handlerBox.reset();
  EXPECT_FALSE(box.ReadyToDemux(&sample));
  EXPECT_EQ(sample.timescale, 0u);
}

TEST(BoxMDIA, AudioAndVideoIterate) {
  for (const char* handler : {"vide", "soun"}) {
    fixture::OneTrack one;
    BoxMDIA box;
    fixture::Track track;
    track.handler = handler;
    track.format = track.handler == "vide" ? "avc1" : "mp4a";
    ASSERT_TRUE(ReadBox(&box, fixture::Mdia(track), &one.context).ok);
    BoxBase::SAMPLE sample{};
    ASSERT_TRUE(box.ReadyToDemux(&sample));
    EXPECT_EQ(sample.isVideo, track.handler == "vide" ? 1 : 0);
    EXPECT_EQ(sample.timescale, 1000u);
    sample = {};
    EXPECT_TRUE(box.GetSampleInfo(&sample));
    EXPECT_EQ(sample.isVideo, track.handler == "vide" ? 1 : 0);
    EXPECT_EQ(sample.timescale, 1000u);
    EXPECT_EQ(sample.offset, 1000u);
    EXPECT_TRUE(box.Next());
    EXPECT_TRUE(box.GetSampleInfo(&sample));
    EXPECT_EQ(sample.offset, 2000u);
    EXPECT_EQ(box.Seek(300), 300);
  }
}

TEST(BoxMDIA, MissingLinkEndsIteration) {
  BoxBase::SAMPLE sample{};
  auto media = fixture::HandMadeMedia(1000);
  EXPECT_FALSE(media->GetSampleInfo(nullptr));
  media->mediaHeaderBox.reset();
  EXPECT_FALSE(media->GetSampleInfo(&sample));
  EXPECT_FALSE(media->Next());
  media = fixture::HandMadeMedia(1000);
  media->handlerBox.reset();
  EXPECT_FALSE(media->GetSampleInfo(&sample));
  EXPECT_FALSE(media->Next());
  media = fixture::HandMadeMedia(1000);
  media->mediaInformationBox->sampleTableBox.reset();
  EXPECT_FALSE(media->GetSampleInfo(&sample));
  EXPECT_FALSE(media->Next());
  EXPECT_EQ(media->Seek(5), -1);
  media->mediaInformationBox.reset();
  EXPECT_FALSE(media->GetSampleInfo(&sample));
  EXPECT_FALSE(media->Next());
  EXPECT_EQ(media->Seek(5), 0);
}

TEST(BoxMDIA, ClearDropsTheChildren) {
  fixture::OneTrack one;
  BoxMDIA box;
  ReadBox(&box, EmptyMdia("vide"), &one.context);
  box.Clear();
  EXPECT_EQ(box.mediaHeaderBox, nullptr);
  EXPECT_EQ(box.handlerBox, nullptr);
  EXPECT_EQ(box.mediaInformationBox, nullptr);
}
