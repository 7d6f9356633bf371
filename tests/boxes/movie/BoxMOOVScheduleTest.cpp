#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "boxes/movie/BoxMOOV.h"
#include "tests/Bytes.h"
#include "tests/Fixtures.h"
#include "tests/MovieFixtures.h"

namespace {

using fixture::Track;

/// A movie read from memory and made ready.
class Movie {
 public:
  explicit Movie(const std::vector<Track>& tracks) {
    const Bytes moov = fixture::Moov(tracks);
    mmBufReader reader(moov.data(), moov.size());
    reader.SetPos(8);
    EXPECT_TRUE(box.ReadData(&reader, static_cast<long long>(moov.size()) - 8, &context));
    EXPECT_TRUE(box.ReadyToDemux());
  }

  /// Offsets handed out up to and with the first call that fails.
  std::vector<unsigned> OffsetsUntilFailure() {
    std::vector<unsigned> offsets;
    bool more = true;
    while (more && offsets.size() < 100) {
      BoxBase::SAMPLE sample{};
      more = box.GetNextSampleInfo(&sample);
      offsets.push_back(static_cast<unsigned>(sample.offset));
    }
    return offsets;
  }

  Mp4Context context;
  BoxMOOV box;
};

/// A video track with one sample a chunk at these offsets.
Track At(std::uint32_t id, const std::vector<std::uint32_t>& offsets) {
  Track track{.id = id, .offsets = offsets};
  track.sizes.assign(offsets.size(), 10);
  track.times = {{static_cast<std::uint32_t>(offsets.size()), 100}};
  return track;
}

BoxBase::SAMPLE Next(BoxMOOV* box, bool expected = true) {
  BoxBase::SAMPLE sample{};
  EXPECT_EQ(box->GetNextSampleInfo(&sample), expected);
  return sample;
}

}  // namespace

TEST(Scheduling, SamplesComeInFileOrderWhateverTheirTimes) {
  // The second track's samples lie between those of the first but are due at other times.
  Track audio = At(2, {150, 250, 350});
  audio.handler = "soun";
  audio.format = "mp4a";
  audio.timescale = 8000;
  audio.times = {{3, 7}};
  Movie movie({At(1, {100, 200, 300}), audio});
  EXPECT_EQ(movie.OffsetsUntilFailure(), (std::vector<unsigned>{100, 150, 200, 250, 300}));
}

TEST(Scheduling, EqualOffsetsGoToTheLowerTrackId) {
  Movie movie({At(9, {100, 300}), At(4, {100, 300})});
  EXPECT_EQ(Next(&movie.box).trackId, 4u);
  EXPECT_EQ(Next(&movie.box).trackId, 9u);
}

TEST(Scheduling, SampleDescribesTheChosenTrack) {
  Track low = At(7, {100, 101});
  low.format = "drms";
  low.handler = "soun";
  low.timescale = 44100;
  low.sizes = {33, 44};
  low.times = {{2, 50}};
  // The track asked last is not the one chosen.
  Movie movie({low, At(8, {500, 600})});
  const BoxBase::SAMPLE sample = Next(&movie.box);
  EXPECT_EQ(sample.trackId, 7u);
  EXPECT_EQ(sample.isVideo, 0);
  EXPECT_EQ(sample.format, 0x736D7264u);
  EXPECT_EQ(sample.timescale, 44100u);
  EXPECT_EQ(sample.size, 33u);
  EXPECT_EQ(sample.duration, 50u);
  EXPECT_EQ(sample.time, 0);
  EXPECT_EQ(sample.offset, 100u);
  EXPECT_EQ(Next(&movie.box, false).time, 50);
}

// Hosts stop at the first false, with that sample still theirs.
TEST(Scheduling, LastSampleOfATrackComesWithFalse) {
  Movie movie({At(1, {100, 200})});
  EXPECT_EQ(Next(&movie.box, true).offset, 100u);
  EXPECT_EQ(Next(&movie.box, false).offset, 200u);
}

TEST(Scheduling, CallersFieldsAreLeftAlone) {
  Movie movie({At(1, {100, 200})});
  unsigned char bytes[4];
  BoxBase::SAMPLE sample{};
  sample.data = bytes;
  sample.dataSize = 4;
  ASSERT_TRUE(movie.box.GetNextSampleInfo(&sample));
  EXPECT_EQ(sample.data, bytes);
  EXPECT_EQ(sample.dataSize, 4u);
}

TEST(Scheduling, WithoutReadyTracksThereIsNoSample) {
  Movie movie({At(1, {100, 200})});
  movie.box.readyTracks.clear();
  Next(&movie.box, false);
}

TEST(Scheduling, ReadyTracksAreListedInAscendingOrder) {
  Track text = At(2, {100});
  text.handler = "text";
  Movie movie({At(9, {100}), text, At(4, {100})});
  EXPECT_EQ(movie.box.readyTracks, (std::vector<std::int32_t>{4, 9}));
}

TEST(Scheduling, TracksThatAreNotReadyAreNeverAsked) {
  // They stand before, between and behind the ready ones; asked, each would give offset 0.
  Track first = At(1, {50, 60});
  Track between = At(3, {70, 80});
  Track last = At(5, {90, 95});
  first.handler = between.handler = last.handler = "text";
  Movie movie({first, At(2, {100, 300, 500}), between, At(4, {200, 400}), last});
  ASSERT_EQ(movie.box.readyTracks, (std::vector<std::int32_t>{2, 4}));
  EXPECT_EQ(movie.OffsetsUntilFailure(), (std::vector<unsigned>{100, 200, 300, 400}));
}

TEST(Scheduling, NoReadyTrackIsAFailure) {
  Movie movie({At(1, {100})});
  movie.box.tracks[1]->mediaBox.reset();
  EXPECT_FALSE(movie.box.ReadyToDemux());
  EXPECT_TRUE(movie.box.readyTracks.empty());
}

TEST(Scheduling, ReadinessNeedsHeaderAndTracks) {
  BoxMOOV empty;
  EXPECT_FALSE(empty.ReadyToDemux());
  Movie movie({At(1, {100})});
  movie.box.movieHeaderBox.reset();
  EXPECT_FALSE(movie.box.ReadyToDemux());
}

TEST(Scheduling, ReadinessStartsAllTracksOver) {
  Movie movie({At(1, {100, 200, 300})});
  Next(&movie.box);
  Next(&movie.box);
  ASSERT_TRUE(movie.box.ReadyToDemux());
  EXPECT_EQ(Next(&movie.box).offset, 100u);
}

TEST(Scheduling, NullEntriesOfTheTrackMapAreSurvived) {
  Movie movie({At(3, {100, 200})});
  movie.box.tracks[1] = nullptr;
  movie.box.tracks[7] = nullptr;
  movie.box.readyTracks = {1, 3, 7};
  EXPECT_EQ(Next(&movie.box).offset, 100u);
  ASSERT_TRUE(movie.box.ReadyToDemux());
  EXPECT_EQ(movie.box.readyTracks, (std::vector<std::int32_t>{3}));
  BoxBase::SAMPLE sample{};
  EXPECT_FALSE(movie.box.GetNextSampleInfo(&sample, 1));
  EXPECT_EQ(movie.box.Seek(5, 1, 0), -1);
  EXPECT_EQ(movie.box.Seek(0, 1, 0), -1);
}

TEST(Scheduling, LookingForATrackAddsNone) {
  Movie movie({At(3, {100, 200})});
  movie.box.readyTracks = {2, 3, 4};
  EXPECT_EQ(Next(&movie.box).offset, 100u);
  BoxBase::SAMPLE sample{};
  EXPECT_FALSE(movie.box.GetNextSampleInfo(&sample, 5));
  EXPECT_EQ(movie.box.Seek(0, 6, 0), -1);
  EXPECT_EQ(movie.box.Seek(1, 7, 0), -1);
  EXPECT_EQ(movie.box.tracks.size(), 1u);
}

TEST(Scheduling, NullSampleFails) {
  Movie movie({At(3, {100, 200})});
  EXPECT_FALSE(movie.box.GetNextSampleInfo(nullptr));
  EXPECT_FALSE(movie.box.GetNextSampleInfo(nullptr, 3));
  EXPECT_EQ(Next(&movie.box).offset, 100u);
}

TEST(Scheduling, OffsetsAreComparedAsSigned) {
  // All ones is -1 and so lower than 50.
  Movie movie({At(1, {100, 200}), At(2, {50, 60})});
  movie.box.tracks[1]->mediaBox->mediaInformationBox->sampleTableBox->curOffset = -1;
  EXPECT_EQ(Next(&movie.box).trackId, 1u);
}

TEST(SingleTrack, DeliversAllSamplesThenFails) {
  Movie movie({At(1, {100, 300}), At(2, {200, 400})});
  BoxBase::SAMPLE sample{};
  EXPECT_TRUE(movie.box.GetNextSampleInfo(&sample, 2));
  EXPECT_EQ(sample.offset, 200u);
  EXPECT_EQ(movie.box.finished, 0);
  EXPECT_TRUE(movie.box.GetNextSampleInfo(&sample, 2));
  EXPECT_EQ(sample.offset, 400u);
  EXPECT_EQ(movie.box.finished, 1);
  EXPECT_FALSE(movie.box.GetNextSampleInfo(&sample, 2));
}

TEST(SingleTrack, OneFinishedTrackStopsAllUntilASeek) {
  Movie movie({At(1, {100, 300}), At(2, {200})});
  BoxBase::SAMPLE sample{};
  EXPECT_TRUE(movie.box.GetNextSampleInfo(&sample, 2));
  EXPECT_FALSE(movie.box.GetNextSampleInfo(&sample, 1));
  EXPECT_EQ(movie.box.Seek(0, 1, 0), 0);
  EXPECT_TRUE(movie.box.GetNextSampleInfo(&sample, 1));
  EXPECT_EQ(sample.offset, 100u);
}

TEST(SingleTrack, UnknownTrackFails) {
  Movie movie({At(1, {100, 300})});
  BoxBase::SAMPLE sample{};
  EXPECT_FALSE(movie.box.GetNextSampleInfo(&sample, 2));
  EXPECT_EQ(movie.box.finished, 0);
}

TEST(Seeking, TimeZeroPutsEveryTrackBack) {
  Movie movie({At(1, {100, 300, 500}), At(2, {200, 400, 600})});
  Next(&movie.box);
  Next(&movie.box);
  movie.box.finished = 1;
  EXPECT_EQ(movie.box.Seek(0, 2, 99), 0);
  EXPECT_EQ(movie.box.finished, 0);
  EXPECT_EQ(Next(&movie.box).offset, 100u);
}

TEST(Seeking, TimeZeroWithAnEditListGivesWhatTheTrackGives) {
  // An empty edit of 2 s, then the media from 0.1 s on. Target 0 chooses the empty edit, whose
  // media time of -1 counts: the track reaches 0, and max(0, 0 + 1) units of 1/1000 s come back as
  // 1 x 1000 / 10,000,000 = 0.
  Track edited = At(1, {100, 300, 500});
  edited.edits = {{2000, -1}, {300, 100}};
  Movie movie({edited});
  ASSERT_EQ(movie.box.tracks[1]->hasEditList, 1);
  movie.box.tracks[1]->editIndex = 1;
  EXPECT_EQ(movie.box.Seek(0, 1, 0), 0);
  EXPECT_EQ(movie.box.tracks[1]->editIndex, 0);
}

TEST(Seeking, TimeZeroOnAnUnknownTrackStillResets) {
  Movie movie({At(1, {100, 300, 500})});
  Next(&movie.box);
  movie.box.finished = 1;
  EXPECT_EQ(movie.box.Seek(0, 2, 0), -1);
  EXPECT_EQ(movie.box.finished, 0);
  EXPECT_EQ(Next(&movie.box).offset, 100u);
}

TEST(Seeking, OtherTimesMoveOneTrackOnly) {
  // 0.1 s is the second sample of track 2; track 1 stays where it was.
  Movie movie({At(1, {100, 300, 500}), At(2, {200, 400, 600})});
  Next(&movie.box);
  movie.box.finished = 1;
  EXPECT_EQ(movie.box.Seek(1000000, 2, 0), 1000000);
  EXPECT_EQ(movie.box.finished, 0);
  EXPECT_EQ(Next(&movie.box).offset, 300u);
  EXPECT_EQ(Next(&movie.box).offset, 400u);
}

TEST(Seeking, OtherTimesOnAnUnknownTrackChangeNothing) {
  Movie movie({At(1, {100, 300, 500})});
  Next(&movie.box);
  movie.box.finished = 1;
  EXPECT_EQ(movie.box.Seek(5, 2, 0), -1);
  EXPECT_EQ(movie.box.finished, 1);
  EXPECT_EQ(Next(&movie.box).offset, 300u);
}
