#include <gtest/gtest.h>

#include <random>

#include "samples/MovieCursor.h"
#include "tests/FragmentFixtures.h"
#include "tests/samples/SampleFixtures.h"

namespace {

using namespace fixture;
using mp4::MovieCursor;
using mp4::Sample;
using Walk = std::vector<std::pair<std::size_t, std::uint64_t>>;  // track, sample

Walk WalkOf(mp4::Movie* movie, MovieCursor::Order order) {
  MovieCursor cursor(movie, order);
  Walk walk;
  std::size_t track = 0;
  for (Sample sample; cursor.Next(&track, &sample);) walk.emplace_back(track, sample.number);
  return walk;
}

Bytes TwoTracks(const Track& a, const Track& b) {
  return Ftyp("isom") + Box("mdat", Bytes().Fill(10000)) + Moov({a, b});
}

TEST(MovieCursor, OffsetsDecideInTheOrderOfTheFile) {
  Track a, b;
  a.offsets = {1000, 3000, 5000, 7000};
  b.id = 2;
  b.offsets = {2000, 2500, 6000, 8000};
  OpenMovie open(TwoTracks(a, b));
  EXPECT_EQ(WalkOf(open.movie.get(), MovieCursor::Order::kFile),
            (Walk{{0, 1}, {1, 1}, {1, 2}, {0, 2}, {0, 3}, {1, 3}, {0, 4}, {1, 4}}));
}

TEST(MovieCursor, ATrackWhoseChunksLieBackwardsIsWalkedForward) {
  Track a, b;
  a.offsets = {7000, 5000, 3000, 1000};
  b.id = 2;
  b.offsets = {2000, 4000, 6000, 8000};
  OpenMovie open(TwoTracks(a, b));
  EXPECT_EQ(WalkOf(open.movie.get(), MovieCursor::Order::kFile),
            (Walk{{0, 4}, {1, 1}, {0, 3}, {1, 2}, {0, 2}, {1, 3}, {0, 1}, {1, 4}}));
}

TEST(MovieCursor, TimesOfDifferentScalesAreComparedInSeconds) {
  Track a, b;
  a.times = {{4, 100}};  // 0, 0.1, 0.2, 0.3 seconds
  b.id = 2;
  b.timescale = 3;
  b.times = {{2, 0}, {2, 1}};  // 0, 0, 0, 1/3
  OpenMovie open(TwoTracks(a, b));
  EXPECT_EQ(WalkOf(open.movie.get(), MovieCursor::Order::kDecodeTime),
            (Walk{{0, 1}, {1, 1}, {1, 2}, {1, 3}, {0, 2}, {0, 3}, {0, 4}, {1, 4}}));
}

TEST(MovieCursor, AMovieWithoutSamplesHasNone) {
  OpenMovie open(Ftyp("isom"));
  EXPECT_TRUE(WalkOf(open.movie.get(), MovieCursor::Order::kFile).empty());
  EXPECT_TRUE(WalkOf(open.movie.get(), MovieCursor::Order::kDecodeTime).empty());
}

TEST(MovieCursor, RandomMoviesAreWalkedOnceAndInOrder) {
  for (std::uint32_t seed = 1; seed < 60; ++seed) {
    std::mt19937 random(seed);
    Track a, b;
    b.id = 2;
    for (Track* track : {&a, &b}) {
      const std::uint32_t perChunk = random() % 5 + 1;
      const std::uint32_t n = random() % 60;
      track->chunks = {{1, perChunk}};
      track->times = {{n, static_cast<std::uint32_t>(random() % 50)}};
      track->sizes.assign(n, 1);
      track->offsets.clear();
      for (std::uint32_t i = 0; i < n; i += perChunk) track->offsets.push_back(random() % 900 * 10);
    }
    OpenMovie open(TwoTracks(a, b));
    for (const auto order : {MovieCursor::Order::kFile, MovieCursor::Order::kDecodeTime}) {
      MovieCursor cursor(open.movie.get(), order);
      std::size_t track = 0;
      std::size_t n = 0;
      std::int64_t last = -1;
      for (Sample sample; cursor.Next(&track, &sample); ++n) {
        const std::int64_t key = order == MovieCursor::Order::kFile
                                     ? static_cast<std::int64_t>(sample.offset / 10)
                                     : sample.decodeTime;
        ASSERT_GE(key, last) << seed;
        last = key;
      }
      EXPECT_EQ(n, a.sizes.size() + b.sizes.size());
    }
  }
}

}  // namespace
