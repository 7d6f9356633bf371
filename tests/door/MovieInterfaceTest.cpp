#include <gtest/gtest.h>

#include <cstring>

#include "mp4judge/samples.hpp"
#include "tests/FragmentFixtures.h"
#include "tests/samples/SampleFixtures.h"

namespace {

using namespace fixture;

struct MovieFree {
  void operator()(mp4judge_movie* movie) const { mp4judge_movie_free(movie); }
};
using MoviePointer = std::unique_ptr<mp4judge_movie, MovieFree>;

MoviePointer OpenBytes(const Bytes& bytes) {
  return MoviePointer(mp4judge_movie_open_memory(bytes.data(), bytes.size(), nullptr, 0));
}

std::int64_t SizeOf(void* user) {
  return static_cast<std::int64_t>(static_cast<const Bytes*>(user)->size());
}
std::int64_t ReadOf(void* user, std::uint64_t offset, void* bytes, std::size_t n) {
  std::memcpy(bytes, static_cast<const Bytes*>(user)->data() + offset, n);
  return static_cast<std::int64_t>(n);
}
std::int64_t FailAt(void*, std::uint64_t, void*, std::size_t) { return -7; }

TEST(MovieInterface, ShowsATrack) {
  TableMovie m;
  m.edts = Edts({{500, -1}, {100, 7}});
  m.stsd = Stsd(
      VisualEntry("encv", Box("sinf", Box("frma", Bytes().Text("avc1")) +
                                          FullBox("schm", 0, 0, Bytes().Text("cenc").Be32(0))) +
                              Box("avcC", {1, 2, 3})));
  const Bytes file = m.File();
  const MoviePointer movie = OpenBytes(file);
  ASSERT_EQ(mp4judge_movie_error(movie.get()), MP4JUDGE_OK);
  ASSERT_EQ(mp4judge_movie_track_count(movie.get()), 1u);
  const mp4judge_movie_track* track = mp4judge_movie_track_at(movie.get(), 0);
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(track->id, 1u);
  EXPECT_EQ(track->in_movie, 1);
  EXPECT_STREQ(track->handler, "vide");
  EXPECT_STREQ(track->format, "encv");
  EXPECT_STREQ(track->codec, "avc1");
  EXPECT_EQ(track->is_protected, 1);
  EXPECT_STREQ(track->scheme, "cenc");
  EXPECT_EQ(track->timescale, 1000u);
  EXPECT_EQ(track->duration, 400);
  EXPECT_STREQ(track->language, "und");
  EXPECT_EQ(track->width, 320u);
  EXPECT_EQ(track->height, 240u);
  EXPECT_STREQ(track->config_type, "avcC");
  ASSERT_EQ(track->config_size, 3u);
  EXPECT_EQ(track->config[2], 3);
  ASSERT_EQ(track->edit_count, 2u);
  EXPECT_EQ(track->edits[0].media_time, -1);
  EXPECT_EQ(track->edits[1].rate, 0x10000);
  EXPECT_EQ(mp4judge_movie_track_at(movie.get(), 1), nullptr);
}

TEST(MovieInterface, AnswersEveryQuestionAboutSamples) {
  TableMovie m;
  m.more = Stss({1, 3});
  m.edts = Edts({{400, 100}});
  const Bytes file = m.File();
  const MoviePointer movie = OpenBytes(file);
  EXPECT_EQ(mp4judge_movie_sample_count(movie.get(), 0), 4u);
  EXPECT_EQ(mp4judge_movie_sample_count(movie.get(), 1), 0u);
  mp4judge_sample sample;
  ASSERT_EQ(mp4judge_movie_sample(movie.get(), 0, 3, &sample), 1);
  EXPECT_EQ(sample.number, 3u);
  EXPECT_EQ(sample.offset, 3000u);
  EXPECT_EQ(sample.size, 30u);
  EXPECT_EQ(sample.decode_time, 200);
  EXPECT_EQ(sample.composition_time, 200);
  EXPECT_EQ(sample.duration, 100u);
  EXPECT_EQ(sample.description, 1u);
  EXPECT_EQ(sample.fragment, 0u);
  EXPECT_EQ(sample.sync, 1);
  EXPECT_EQ(sample.is_protected, 0);
  EXPECT_EQ(sample.outside, 0);
  EXPECT_EQ(mp4judge_movie_sample(movie.get(), 0, 5, &sample), 0);
  EXPECT_EQ(mp4judge_movie_at_decode_time(movie.get(), 0, 150), 2u);
  EXPECT_EQ(mp4judge_movie_at_composition_time(movie.get(), 0, 250), 3u);
  EXPECT_EQ(mp4judge_movie_at_presentation_time(movie.get(), 0, 0), 2u);
  EXPECT_EQ(mp4judge_movie_sync_before(movie.get(), 0, 4), 3u);
  std::int64_t time = 0;
  EXPECT_EQ(mp4judge_movie_presentation_time(movie.get(), 0, 150, &time), 1);
  EXPECT_EQ(time, 50);
  EXPECT_EQ(mp4judge_movie_presentation_time(movie.get(), 0, 50, &time), 0);
  EXPECT_EQ(mp4judge_movie_problem_count(movie.get(), 0), 0u);
  EXPECT_EQ(mp4judge_movie_problem(movie.get(), 0, 0), nullptr);
}

TEST(MovieInterface, FindsAFragmentWithoutReadingAll) {
  const Bytes fragment = Moof(Mfhd(1) + Traf(Tfhd(0x20008, 1, Bytes().Be32(100)) +
                                             FullBox("tfdt", 0, 0, Bytes().Be32(400))));
  TableMovie m;
  m.mvex = Mvex(Trex(1));
  const Bytes front = m.File();
  const Bytes index = FullBox(
      "sidx", 0, 0,
      Be32s({1, 1000, 400, 0, 1, static_cast<std::uint32_t>(fragment.size()), 1000, 0x90000000}));
  const mp4judge::Movie plain = mp4judge::Movie::OfMemory(front.data(), front.size());
  EXPECT_FALSE(plain.FragmentAt(0, 500));
  const Bytes file = front + index + fragment;
  const mp4judge::Movie movie = mp4judge::Movie::OfMemory(file.data(), file.size());
  const auto found = movie.FragmentAt(0, 500);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->offset, front.size() + index.size());
  EXPECT_EQ(found->decode_time, 400);
  EXPECT_EQ(found->found_by, MP4JUDGE_BY_SEGMENT_INDEX);
  EXPECT_FALSE(movie.FragmentAt(0, 399));
  EXPECT_FALSE(movie.FragmentAt(1, 500));
}

TEST(MovieInterface, TellsShadowsAndCompositionTimes) {
  TableMovie m;
  m.more = BoxOf32("cslg", {7, 0xFFFFFFFE, 5, 0, 500}) + BoxOf32("stsh", {1, 3, 1});
  const Bytes file = m.File();
  const mp4judge::Movie movie = mp4judge::Movie::OfMemory(file.data(), file.size());
  EXPECT_EQ(movie.ShadowOf(0, 3), 1u);
  EXPECT_EQ(movie.ShadowOf(0, 2), 0u);
  const auto composition = movie.Composition(0);
  ASSERT_TRUE(composition);
  EXPECT_EQ(composition->shift, 7);
  EXPECT_EQ(composition->least_offset, -2);
  EXPECT_EQ(composition->greatest_offset, 5);
  EXPECT_EQ(composition->start, 0);
  EXPECT_EQ(composition->end, 500);
  EXPECT_FALSE(movie.Composition(1));
}

TEST(MovieInterface, SaysWhatIsWrongWithATrack) {
  TableMovie m;
  m.stts = Stts({{3, 100}});
  const Bytes file = m.File();
  const MoviePointer movie = OpenBytes(file);
  ASSERT_EQ(mp4judge_movie_problem_count(movie.get(), 0), 1u);
  EXPECT_STREQ(mp4judge_movie_problem(movie.get(), 0, 0),
               "stts counts other samples than the sizes (says 3, there are 4)");
}

TEST(MovieInterface, CursorsWalkOneTrackOrAll) {
  Track a, b;
  a.offsets = {1000, 3000, 5000, 7000};
  b.id = 2;
  b.offsets = {2000, 4000, 6000, 8000};
  const Bytes file = Ftyp("isom") + Box("mdat", Bytes().Fill(10000)) + Moov({a, b});
  const mp4judge::Movie movie = mp4judge::Movie::OfMemory(file.data(), file.size());
  Numbers offsets, all;
  for (const mp4judge_sample& sample : movie.Samples(1)) offsets.push_back(sample.offset);
  EXPECT_EQ(offsets, (Numbers{2000, 4000, 6000, 8000}));
  mp4judge::SampleRange everything = movie.AllSamples(MP4JUDGE_FILE_ORDER);
  mp4judge_sample sample;
  std::size_t track = 9;
  while (everything.Next(&sample, &track)) all.push_back(sample.offset * 10 + track);
  EXPECT_EQ(all, (Numbers{10000, 20001, 30000, 40001, 50000, 60001, 70000, 80001}));
  mp4judge::SampleRange range = movie.Samples(0);
  ASSERT_TRUE(range.Seek(4));
  ASSERT_TRUE(range.Next(&sample));
  EXPECT_EQ(sample.offset, 7000u);
  EXPECT_FALSE(range.Next(&sample));
  EXPECT_FALSE(movie.AllSamples(MP4JUDGE_DECODE_ORDER).Seek(1));
}

TEST(MovieInterface, ColumnsAndBytes) {
  TableMovie m;
  const Bytes file = m.File();
  const mp4judge::Movie movie = mp4judge::Movie::OfMemory(file.data(), file.size());
  std::uint32_t sizes[4] = {};
  std::uint8_t flags[4] = {};
  mp4judge_columns columns{};
  columns.sizes = sizes;
  columns.flags = flags;
  EXPECT_EQ(movie.Columns(0, 2, 2, columns), 2u);
  EXPECT_EQ(sizes[0], 20u);
  EXPECT_EQ(sizes[1], 30u);
  EXPECT_EQ(sizes[2], 0u);
  EXPECT_EQ(flags[1], MP4JUDGE_SAMPLE_SYNC);
  mp4judge_sample sample{};
  sample.offset = 4;
  sample.size = 4;
  char bytes[8] = {};
  EXPECT_EQ(movie.Read(sample, bytes, sizeof bytes), 4u);
  EXPECT_STREQ(bytes, "ftyp");
  sample.offset = file.size() - 1;
  EXPECT_EQ(movie.Read(sample, bytes, sizeof bytes), 1u);
}

TEST(MovieInterface, EverySourceListsTheSame) {
  TableMovie m;
  m.mvex = Mvex(Trex(1));
  m.behind = Moof(Mfhd(1) + Traf(Tfhd(0x20000, 1) + Trun(1, 2, {100})));
  Bytes file = m.File();
  const MoviePointer memory = OpenBytes(file);
  const MoviePointer callbacks(mp4judge_movie_open_callbacks(ReadOf, SizeOf, &file));
  mp4judge_ranges* ranges = mp4judge_ranges_new(file.size());
  MoviePointer brought(mp4judge_movie_open_ranges(ranges));
  std::uint64_t offset = 0, n = 0;
  int rounds = 0;
  while (mp4judge_movie_sample_count(brought.get(), 0) < 6 ||
         mp4judge_movie_needs(brought.get(), &offset, &n)) {
    ASSERT_EQ(mp4judge_movie_needs(brought.get(), &offset, &n), 1);
    ASSERT_EQ(mp4judge_movie_error(brought.get()), MP4JUDGE_ERROR_NEEDS_BYTES);
    ASSERT_LT(++rounds, 40);
    mp4judge_ranges_add(ranges, offset, file.data() + offset, n);
    brought.reset(mp4judge_movie_open_ranges(ranges));
  }
  for (mp4judge_movie* movie : {memory.get(), callbacks.get(), brought.get()}) {
    ASSERT_EQ(mp4judge_movie_sample_count(movie, 0), 6u);
    for (std::uint64_t number = 1; number <= 6; ++number) {
      mp4judge_sample a, b;
      ASSERT_EQ(mp4judge_movie_sample(memory.get(), 0, number, &a), 1);
      ASSERT_EQ(mp4judge_movie_sample(movie, 0, number, &b), 1);
      EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0) << number;
    }
    EXPECT_EQ(mp4judge_movie_error(movie), MP4JUDGE_OK);
  }
  brought.reset();
  mp4judge_ranges_free(ranges);
}

TEST(MovieInterface, ASegmentTakesAnInitialization) {
  TableMovie m;
  m.mvex = Mvex(Trex(1));
  const Bytes init = m.File();
  const Bytes segment = Moof(Mfhd(1) + Traf(Tfhd(0x20000, 1) + Trun(1, 2, {100})));
  const MoviePointer movie(
      mp4judge_movie_open_memory(segment.data(), segment.size(), init.data(), init.size()));
  mp4judge_sample sample;
  ASSERT_EQ(mp4judge_movie_sample(movie.get(), 0, 1, &sample), 1);
  EXPECT_EQ(sample.offset, 100u);
  EXPECT_EQ(sample.decode_time, 400);
}

TEST(MovieInterface, WhatCannotBeOpenedHasNothing) {
  const MoviePointer missing(mp4judge_movie_open_path("/no such file", nullptr));
  EXPECT_EQ(mp4judge_movie_error(missing.get()), MP4JUDGE_ERROR_OPEN);
  EXPECT_EQ(mp4judge_movie_errno(missing.get()), ENOENT);
  const MoviePointer folder(mp4judge_movie_open_path("/", nullptr));
  EXPECT_EQ(mp4judge_movie_error(folder.get()), MP4JUDGE_ERROR_NOT_A_FILE);
  EXPECT_EQ(mp4judge_movie_errno(folder.get()), EISDIR);
  const MoviePointer null(mp4judge_movie_open_path(nullptr, nullptr));
  EXPECT_EQ(mp4judge_movie_error(null.get()), MP4JUDGE_ERROR_ARGUMENT);
  const MoviePointer noCallbacks(mp4judge_movie_open_callbacks(nullptr, nullptr, nullptr));
  EXPECT_EQ(mp4judge_movie_error(noCallbacks.get()), MP4JUDGE_ERROR_ARGUMENT);
  const MoviePointer noRanges(mp4judge_movie_open_ranges(nullptr));
  EXPECT_EQ(mp4judge_movie_error(noRanges.get()), MP4JUDGE_ERROR_ARGUMENT);
  for (mp4judge_movie* movie : {missing.get(), folder.get(), null.get(), noCallbacks.get(),
                                noRanges.get(), static_cast<mp4judge_movie*>(nullptr)}) {
    mp4judge_sample sample{};
    EXPECT_EQ(mp4judge_movie_track_count(movie), 0u);
    EXPECT_EQ(mp4judge_movie_track_at(movie, 0), nullptr);
    EXPECT_EQ(mp4judge_movie_timescale(movie), 0u);
    EXPECT_EQ(mp4judge_movie_sample_count(movie, 0), 0u);
    EXPECT_EQ(mp4judge_movie_sample(movie, 0, 1, &sample), 0);
    EXPECT_EQ(mp4judge_movie_at_decode_time(movie, 0, 0), 0u);
    EXPECT_EQ(mp4judge_movie_at_composition_time(movie, 0, 0), 0u);
    EXPECT_EQ(mp4judge_movie_at_presentation_time(movie, 0, 0), 0u);
    EXPECT_EQ(mp4judge_movie_sync_before(movie, 0, 1), 0u);
    EXPECT_EQ(mp4judge_movie_shadow_of(movie, 0, 1), 0u);
    EXPECT_EQ(mp4judge_movie_composition(movie, 0, nullptr), 0);
    EXPECT_EQ(mp4judge_movie_fragment_at(movie, 0, 0, nullptr), 0);
    EXPECT_EQ(mp4judge_movie_presentation_time(movie, 0, 0, nullptr), 0);
    EXPECT_EQ(mp4judge_movie_read(movie, &sample, nullptr, 0), 0u);
    EXPECT_EQ(mp4judge_movie_columns(movie, 0, 1, 1, nullptr), 0u);
    EXPECT_EQ(mp4judge_movie_problem_count(movie, 0), 0u);
    EXPECT_EQ(mp4judge_movie_problem_count(movie, SIZE_MAX), 0u);
    EXPECT_EQ(mp4judge_cursor_new(movie, 0), nullptr);
    EXPECT_EQ(mp4judge_cursor_of_all(movie, MP4JUDGE_FILE_ORDER), nullptr);
    EXPECT_EQ(mp4judge_movie_needs(movie, nullptr, nullptr), 0);
  }
  EXPECT_EQ(mp4judge_cursor_next(nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(mp4judge_cursor_seek(nullptr, 1), 0);
  mp4judge_cursor_free(nullptr);
}

TEST(MovieInterface, AReadThatFailsIsSaid) {
  const Bytes file = TableMovie{}.File();
  const MoviePointer movie(
      mp4judge_movie_open_callbacks(FailAt, SizeOf, const_cast<Bytes*>(&file)));
  EXPECT_EQ(mp4judge_movie_sample_count(movie.get(), 0), 0u);
  EXPECT_EQ(mp4judge_movie_error(movie.get()), MP4JUDGE_ERROR_READ);
  EXPECT_EQ(mp4judge_movie_errno(movie.get()), -7);
}

}  // namespace
