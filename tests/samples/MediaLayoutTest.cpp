#include <gtest/gtest.h>

#include "samples/MediaLayout.h"
#include "tests/samples/SampleFixtures.h"

namespace {

using namespace fixture;

mp4::MediaLayout LayoutOfMovie(const Bytes& file, std::size_t parts, std::uint64_t most = 100000) {
  OpenMovie open(file);
  return mp4::LayoutOf(open.movie.get(), parts, most);
}
mp4::TrackLayout LayoutOfTable(const TableMovie& movie, std::size_t parts = 1,
                               std::uint64_t most = 100000) {
  return LayoutOfMovie(movie.File(), parts, most).tracks.at(0);
}
/// Four samples of 10 bytes in chunks at these offsets.
TableMovie ChunksAt(const Words& offsets) {
  TableMovie movie;
  movie.stsz = StszConstant(10, 4);
  movie.stco = Stco(offsets);
  return movie;
}
/// Each as offset, end and bytes.
std::vector<Numbers> Extents(const mp4::TrackLayout& layout) {
  std::vector<Numbers> extents;
  for (const mp4::MediaExtent& extent : layout.extents) {
    extents.push_back({extent.offset, extent.end, extent.bytes});
  }
  return extents;
}

}  // namespace

TEST(MediaLayout, NeighboursAreOneStretch) {
  EXPECT_EQ((std::vector<Numbers>{{100, 120, 20}, {121, 131, 10}, {200, 210, 10}}),
            Extents(LayoutOfTable(ChunksAt({100, 110, 121, 200}))));
}

TEST(MediaLayout, StretchesAreInTheOrderOfTheFile) {
  EXPECT_EQ((std::vector<Numbers>{{100, 110, 10}, {300, 320, 20}, {500, 510, 10}}),
            Extents(LayoutOfTable(ChunksAt({500, 310, 300, 100}))));
}

TEST(MediaLayout, BytesOfSamplesThatShareThemAreCountedEach) {
  EXPECT_EQ((std::vector<Numbers>{{100, 115, 30}, {200, 210, 10}}),
            Extents(LayoutOfTable(ChunksAt({100, 105, 100, 200}))));
}

TEST(MediaLayout, WhatLiesInAnotherFileHasNoStretch) {
  TableMovie movie = ChunksAt({100, 200, 300, 400});
  movie.dinf = Box("dinf", FullBox("dref", 0, 0, Bytes().Be32(1) + FullBox("url ", 0, 0)));
  const mp4::TrackLayout layout = LayoutOfTable(movie);
  EXPECT_TRUE(layout.extents.empty());
  EXPECT_TRUE(layout.whole);
}

TEST(MediaLayout, SamplesWithoutBytesHaveNoStretch) {
  TableMovie movie;
  movie.stsz = Stsz({0, 5, 0, 0});
  EXPECT_EQ((std::vector<Numbers>{{2000, 2005, 5}}), Extents(LayoutOfTable(movie)));
}

// Gaps of a byte between 5,000 samples, then of 100 bytes between 5,000 others.
TEST(MediaLayout, OfTooManyStretchesNeighboursGrowTogether) {
  constexpr std::uint32_t kSamples = 5000;
  Words offsets;
  for (std::uint32_t i = 0; i < kSamples; ++i) offsets.push_back(100 + 2 * i);
  for (std::uint32_t i = 0; i < kSamples; ++i) offsets.push_back(20000 + 200 * i);
  TableMovie movie;
  movie.stsz = StszConstant(1, 2 * kSamples);
  movie.stts = Stts({{2 * kSamples, 1}});
  movie.stco = Stco(offsets);
  const mp4::TrackLayout layout = LayoutOfTable(movie);
  EXPECT_LE(layout.extents.size(), mp4::kMostExtents);
  std::uint64_t bytes = 0;
  for (std::size_t i = 0; i < layout.extents.size(); ++i) {
    bytes += layout.extents[i].bytes;
    if (i > 0) {
      EXPECT_LT(layout.extents[i - 1].end, layout.extents[i].offset);
    }
  }
  EXPECT_EQ(2U * kSamples, bytes) << "none is lost";
  ASSERT_FALSE(layout.extents.empty());
  EXPECT_EQ(100U, layout.extents.front().offset);
  EXPECT_EQ(20000U + 200 * (kSamples - 1) + 1, layout.extents.back().end);
}

// Samples of 10, 20, 30 and 40 bytes, a quarter of a second each.
TEST(MediaLayout, BytesAreThoseThatBeginInAPartOfTheTime) {
  const Bytes file =
      Ftyp("isom") + Box("mdat", Bytes().Fill(10000)) + Moov({{.timescale = 4, .times = {{4, 1}}}});
  EXPECT_EQ((Numbers{100}), LayoutOfMovie(file, 1).tracks[0].bytes);
  EXPECT_EQ((Numbers{30, 70}), LayoutOfMovie(file, 2).tracks[0].bytes);
  EXPECT_EQ((Numbers{10, 20, 30, 40}), LayoutOfMovie(file, 4).tracks[0].bytes);
  EXPECT_EQ((Numbers{10, 0, 20, 0, 30, 0, 40, 0}), LayoutOfMovie(file, 8).tracks[0].bytes);
  EXPECT_EQ((Numbers{}), LayoutOfMovie(file, 0).tracks[0].bytes);
}

TEST(MediaLayout, TheTimeIsThatOfTheLongestTrack) {
  const Bytes file = Ftyp("isom") + Box("mdat", Bytes().Fill(10000)) +
                     Moov({{.id = 1}, {.id = 2, .timescale = 500}});  // 0.4 s and 0.8 s
  const mp4::MediaLayout layout = LayoutOfMovie(file, 2);
  EXPECT_DOUBLE_EQ(0.8, layout.seconds);
  ASSERT_EQ(2U, layout.tracks.size());
  EXPECT_EQ((Numbers{100, 0}), layout.tracks[0].bytes);
  EXPECT_EQ((Numbers{30, 70}), layout.tracks[1].bytes);
}

TEST(MediaLayout, OfMoreSamplesThanAreWalkedItIsNotWhole) {
  const mp4::TrackLayout three = LayoutOfTable(TableMovie(), 1, 3);
  EXPECT_FALSE(three.whole);
  EXPECT_EQ(3U, three.extents.size());
  EXPECT_EQ((Numbers{60}), three.bytes);
  EXPECT_TRUE(LayoutOfTable(TableMovie(), 1, 4).whole);
}

TEST(MediaLayout, TracksShareTheSamplesThatAreWalked) {
  const Bytes file = Ftyp("isom") + Box("mdat", Bytes().Fill(10000)) + Moov({{.id = 1}, {.id = 2}});
  const mp4::MediaLayout layout = LayoutOfMovie(file, 1, 5);
  EXPECT_TRUE(layout.tracks[0].whole);
  EXPECT_FALSE(layout.tracks[1].whole);
  EXPECT_EQ((Numbers{10}), layout.tracks[1].bytes);
}

TEST(MediaLayout, WithoutATimescaleThereIsNoTime) {
  TableMovie movie;
  Bytes file = Ftyp("isom") + Box("mdat", Bytes().Fill(10000)) + Moov({{.id = 1, .timescale = 0}});
  const mp4::MediaLayout layout = LayoutOfMovie(file, 2);
  EXPECT_EQ(0.0, layout.seconds);
  EXPECT_EQ((Numbers{0, 0}), layout.tracks[0].bytes);
  EXPECT_EQ(4U, layout.tracks[0].extents.size());
}
