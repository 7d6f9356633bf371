#include <gtest/gtest.h>

#include "demux/Mp4Demux.h"
#include "demux/Mp4FileMode.h"
#include "io/FourCC.h"
#include "tests/Fixtures.h"
#include "tests/MovieFixtures.h"

using namespace fixture;

namespace {

/// A demuxer with a movie box and a context whose one track has a largest sample of `n` bytes.
void Prepare(Mp4Demux* demux, std::uint32_t n) {
  demux->context = std::make_unique<Mp4Context>();
  demux->movieBox = std::make_unique<BoxMOOV>();
  demux->context->AddTrack(1)->maxSampleSize = n;
}

}  // namespace

TEST(GetMaxBlockSize, IsTwoMebibytesWithoutContext) {
  Mp4Demux demux;
  EXPECT_EQ(demux.GetMaxBlockSize(), 0x200000);
}

TEST(GetMaxBlockSize, IsZeroWithoutTracks) {
  Mp4Demux demux;
  demux.context = std::make_unique<Mp4Context>();
  EXPECT_EQ(demux.GetMaxBlockSize(), 0);
}

TEST(GetMaxBlockSize, IsTheLargestOfAllTracksComparedSigned) {
  Mp4Demux demux;
  Prepare(&demux, 300);
  demux.context->AddTrack(2)->maxSampleSize = 500;
  demux.context->AddTrack(3)->maxSampleSize = 0x80000000u;
  demux.context->AddTrack(4)->maxSampleSize = 400;
  EXPECT_EQ(demux.GetMaxBlockSize(), 500);
  demux.context->tracks.resize(1);
  demux.context->tracks[0]->maxSampleSize = 0xFFFFFFFFu;
  EXPECT_EQ(demux.GetMaxBlockSize(), 0);
}

TEST(ReadyToDemux, NeedsAMovieBoxAndAContext) {
  Mp4Demux demux;
  EXPECT_FALSE(demux.ReadyToDemux());
  demux.context = std::make_unique<Mp4Context>();
  EXPECT_FALSE(demux.ReadyToDemux());
  demux.context.reset();
  demux.movieBox = std::make_unique<BoxMOOV>();
  EXPECT_FALSE(demux.ReadyToDemux());
}

TEST(ReadyToDemux, SizesTheBlockBuffer) {
  const struct {
    std::uint32_t largest;
    int capacity;
  } cases[] = {{1000, 1024}, {1008, 1040}, {1, 32}, {15, 32}, {16, 48}};
  for (const auto& c : cases) {
    Mp4Demux demux;
    Prepare(&demux, c.largest);
    EXPECT_TRUE(demux.ReadyToDemux());
    ASSERT_NE(demux.blockBuffer, nullptr);
    EXPECT_EQ(demux.blockBuffer->capacity, c.capacity);
    ASSERT_NE(demux.blockBuffer->data, nullptr);
    demux.blockBuffer->data[c.capacity + 31] = 1;
  }
}

TEST(ReadyToDemux, WithoutTracksMakesARecordWithoutAnArray) {
  Mp4Demux demux;
  demux.context = std::make_unique<Mp4Context>();
  demux.movieBox = std::make_unique<BoxMOOV>();
  EXPECT_TRUE(demux.ReadyToDemux());
  ASSERT_NE(demux.blockBuffer, nullptr);
  EXPECT_EQ(demux.blockBuffer->capacity, 0);
  EXPECT_EQ(demux.blockBuffer->data, nullptr);
}

TEST(ReadyToDemux, KeepsABufferThatIsLargeEnough) {
  Mp4Demux demux;
  Prepare(&demux, 1000);
  ASSERT_TRUE(demux.ReadyToDemux());
  const Mp4BlockBuffer* first = demux.blockBuffer.get();
  demux.blockBuffer->data[0] = 77;
  EXPECT_TRUE(demux.ReadyToDemux());
  EXPECT_EQ(demux.blockBuffer.get(), first);
  EXPECT_EQ(demux.blockBuffer->data[0], 77);
  demux.context->tracks[0]->maxSampleSize = 1024;
  EXPECT_TRUE(demux.ReadyToDemux());
  EXPECT_EQ(demux.blockBuffer->capacity, 1024);
  demux.context->tracks[0]->maxSampleSize = 1025;
  EXPECT_TRUE(demux.ReadyToDemux());
  EXPECT_EQ(demux.blockBuffer->capacity, 1056);
}

TEST(ReadyToDemux, BlockTooLargeForTheCapacityLeavesItZeroAndStillSucceeds) {
  Mp4Demux demux;
  Prepare(&demux, 0x7FFFFFFFu);
  EXPECT_TRUE(demux.ReadyToDemux());
  EXPECT_EQ(demux.blockBuffer->capacity, 0);
  EXPECT_EQ(demux.blockBuffer->data, nullptr);
}

TEST(ReadyToDemux, ResultDoesNotReflectTheTracks) {
  Mp4Demux demux;
  Prepare(&demux, 10);
  EXPECT_FALSE(demux.movieBox->ReadyToDemux());
  EXPECT_TRUE(demux.ReadyToDemux());
}

TEST(ReadyToDemux, ReadiesTheTracksOfARealMovie) {
  const TempFile file(Ftyp("isom") + Moov({Track{}}));
  Mp4Demux demux;
  ASSERT_TRUE(demux.Init(file.wide().c_str()));
  EXPECT_TRUE(demux.ReadyToDemux());
  EXPECT_EQ(demux.blockBuffer->capacity, 64);  // largest sample 40
  EXPECT_EQ(demux.movieBox->readyTracks, std::vector<std::int32_t>{1});
}

TEST(IsSupportedFormat, KnowsTheFiveTagsOnly) {
  for (const auto tag : {mp4::FourCC("mp41"), mp4::FourCC("mov "), mp4::FourCC("3gp "),
                         mp4::FourCC("psp "), mp4::FourCC("3gp2")}) {
    EXPECT_TRUE(Mp4Demux::IsSupportedFormat(tag)) << tag;
  }
  EXPECT_FALSE(Mp4Demux::IsSupportedFormat(0));
  EXPECT_FALSE(Mp4Demux::IsSupportedFormat(mp4::FourCC("mp42")));
  EXPECT_FALSE(Mp4Demux::IsSupportedFormat(mp4::FourCC("MOV ")));
}

TEST(SupportedModes, AreListedInTheHostsOrder) {
  const int expected[12] = {1, 3, 5, 4, 2, 0, 0, 0, 0, 0, 0, 0};
  for (int i = 0; i < 12; ++i) EXPECT_EQ(Mp4Demux::m_arSupportedMode[i], expected[i]) << i;
}
