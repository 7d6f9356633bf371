#include <gtest/gtest.h>

#include <ostream>
#include <vector>

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

/// 300 samples of 100 units, one a chunk, every 20 bytes from `first` on.
Track ThreeHundred(std::uint32_t id, std::uint32_t first) {
  Track track{.id = id, .times = {{300, 100}}, .sizes = Words(300, 10), .offsets = {}};
  for (std::uint32_t i = 0; i < 300; ++i) track.offsets.push_back(first + 20 * i);
  return track;
}

/// Two such tracks whose samples take turns in the file.
class TwoTracks : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(demux.Init(file.wide().c_str()));
    ASSERT_TRUE(demux.ReadyToDemux());
  }

  TempFile file{Ftyp("isom") + Moov({ThreeHundred(1, 1000), ThreeHundred(2, 1010)})};
  Mp4Demux demux;
};

/// What one call of GetNextSampleInfo hands out.
struct Step {
  std::uint32_t trackId;
  std::uint64_t offset;
  std::int64_t time;
  bool result;

  friend bool operator==(const Step& a, const Step& b) {
    return a.trackId == b.trackId && a.offset == b.offset && a.time == b.time &&
           a.result == b.result;
  }
  friend std::ostream& operator<<(std::ostream& out, const Step& step) {
    return out << step.trackId << "@" << step.offset << " time " << step.time << " " << step.result;
  }
};

}  // namespace

// A track pauses at its sample 256: the call that hands out sample 255 returns false, the next one
// hands out sample 255 once more, and sample 256 never comes. The samples behind it are handed out
// with the time of the one before them.
using Walk = TwoTracks;
TEST_F(Walk, EachTrackPausesAtSample256AndGoesOnBehindIt) {
  std::vector<Step> expected;
  const auto both = [&expected](std::uint32_t i, std::int64_t time) {
    expected.push_back({1, 1000 + 20 * i, time, true});
    expected.push_back({2, 1010 + 20 * i, time, true});
  };
  for (std::uint32_t i = 0; i < 255; ++i) both(i, 100 * i);
  for (const bool again : {false, true}) expected.push_back({1, 6100, 25500, again});
  for (const bool again : {false, true}) expected.push_back({2, 6110, 25500, again});
  for (std::uint32_t i = 257; i < 299; ++i) both(i, 100 * (i - 1));
  expected.push_back({1, 6980, 29800, false});  // the last of the first track

  std::vector<Step> handedOut;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    BoxBase::SAMPLE sample{};
    const bool result = demux.movieBox->GetNextSampleInfo(&sample);
    handedOut.push_back({sample.trackId, sample.offset, sample.time, result});
  }
  EXPECT_EQ(handedOut, expected);
}

// One track alone ends at the pause; a seek to sample 256 hands out the rest, that one included.
TEST_F(Walk, OneTrackGoesOnBehindSample255AfterASeek) {
  std::vector<std::uint64_t> offsets;
  BoxBase::SAMPLE sample{};
  while (demux.movieBox->GetNextSampleInfo(&sample, 2)) offsets.push_back(sample.offset);
  ASSERT_EQ(offsets.size(), 256u);
  EXPECT_EQ(offsets.back(), 1010u + 20 * 255);
  EXPECT_FALSE(demux.movieBox->GetNextSampleInfo(&sample, 2));

  EXPECT_EQ(demux.movieBox->Seek(256'000'000, 2, 0), 256'000'000);
  while (demux.movieBox->GetNextSampleInfo(&sample, 2)) offsets.push_back(sample.offset);
  ASSERT_EQ(offsets.size(), 300u);
  EXPECT_EQ(offsets[256], 1010u + 20 * 256);
  EXPECT_EQ(sample.time, 29900);
}

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
