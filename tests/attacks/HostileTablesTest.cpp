// Numbers in tables, runs and compressed movies that claim what is not there. Each test opens,
// plays and judges a whole file.
#include <gtest/gtest.h>

#include "io/Limits.h"
#include "tests/HostileFiles.h"

namespace {

using namespace hostile;
using golden::Film;
using golden::Song;

constexpr std::uint32_t kAll = 0xFFFFFFFF;

class OpenedMovie {
 public:
  explicit OpenedMovie(const Bytes& bytes) : file(bytes) {
    opened = demux.Init(file.wide().c_str());
  }
  Mp4Context::TRACK* track(int i) { return demux.GetContext()->GetTrackByIndex(i); }
  BoxSTBL* tables(int id) {
    return demux.movieBox->tracks[id]->mediaBox->mediaInformationBox->sampleTableBox.get();
  }

  TempFile file;
  Mp4Demux demux;
  bool opened;
};

Bytes FilmFile(const fixture::Track& film) { return fixture::Ftyp("isom") + fixture::Moov({film}); }
Bytes SongFile(const fixture::Track& song) { return FilmFile(song); }

}  // namespace

// A count of all ones is -1 where counts are signed, so the table is empty; where they are not, it
// is cut to the entries that exist.
TEST(HostileCounts, TimeToSample) {
  const Bytes file = With(FilmFile(Film()), "stts", kCount, kAll);
  EXPECT_TRUE(Opens(file));
  EXPECT_EQ(OpenedMovie(file).track(0)->numSamples, 0);
  EXPECT_EQ(OpenedMovie(With(file, "stts", kCount, 0x7FFFFFFF)).track(0)->numSamples, 4);
}

TEST(HostileCounts, SampleSizes) {
  const Bytes file = With(FilmFile(Film()), "stsz", kCount + 4, kAll);
  EXPECT_TRUE(Opens(file));
  EXPECT_EQ(OpenedMovie(file).tables(1)->sampleSizeBox->GetSampleCount(), 4u);
}

TEST(HostileCounts, ConstantSampleSizes) {
  const Bytes file = With(With(FilmFile(Film()), "stsz", kCount + 4, kAll), "stsz", kCount, kAll);
  EXPECT_TRUE(Opens(file));
  EXPECT_EQ(OpenedMovie(file).tables(1)->sampleSizeBox->GetSampleCount(), kAll);
}

TEST(HostileCounts, SampleToChunk) {
  for (const std::uint32_t count : {kAll, 0x80000000u, 0x7FFFFFFFu}) {
    EXPECT_TRUE(Opens(With(FilmFile(Film()), "stsc", kCount, count))) << count;
    EXPECT_TRUE(Opens(With(SongFile(Song("mp4a")), "stsc", kCount, count))) << count;
  }
}

TEST(HostileCounts, ChunkOffsets) {
  const Bytes file = With(FilmFile(Film()), "stco", kCount, 0x7FFFFFFF);
  EXPECT_TRUE(Opens(file));
  EXPECT_EQ(OpenedMovie(file).tables(1)->chunkOffsetBox->GetChunkOffset(3), 4000u);
  EXPECT_EQ(OpenedMovie(file).tables(1)->chunkOffsetBox->GetChunkOffset(4), ~0ULL);
  const Bytes none = With(file, "stco", kCount, kAll);
  EXPECT_TRUE(Opens(none));
  EXPECT_EQ(OpenedMovie(none).tables(1)->chunkOffsetBox->GetChunkOffset(0), ~0ULL);
}

TEST(HostileCounts, LargeChunkOffsets) {
  Bytes file = FilmFile(Film());
  const std::size_t type = FindBox(file, "stco") + 4;
  file.PutBe32(type, 0x636F3634);  // "co64": two offsets where four were
  for (const std::uint32_t count : {kAll, 0x7FFFFFFFu}) {
    EXPECT_TRUE(Opens(With(file, "co64", kCount, count))) << count;
  }
  OpenedMovie movie(With(file, "co64", kCount, 0x7FFFFFFF));
  EXPECT_EQ(movie.tables(1)->chunkOffsetBox->GetChunkOffset(1), 3000ULL << 32 | 4000);
  EXPECT_EQ(movie.tables(1)->chunkOffsetBox->GetChunkOffset(2), ~0ULL);
}

TEST(HostileCounts, SyncSamples) {
  const Bytes file = With(FilmFile(Film()), "stss", kCount, kAll);
  EXPECT_TRUE(Opens(file));
  EXPECT_EQ(OpenedMovie(file).track(0)->syncTableState, -1);
}

// This table is read by its count alone, up to the end of the file, and steps back afterwards.
TEST(HostileCounts, SyncSamplesUpToTheEndOfTheFile) {
  for (const std::uint32_t count : {0x3FFFFFFFu, 0x7FFFFFFFu}) {
    const Bytes file = With(FilmFile(Film()), "stss", kCount, count);
    EXPECT_TRUE(Opens(file));
    EXPECT_EQ(OpenedMovie(file).tables(1)->syncSampleBox->GetEntryCount(), 2);
    // What follows is read as samples: eight bytes of "free" are two more.
    const Bytes longer = file + Box("free");
    EXPECT_TRUE(Opens(longer));
    EXPECT_EQ(OpenedMovie(longer).tables(1)->syncSampleBox->GetEntryCount(), 4);
  }
}

TEST(HostileCounts, EditsBelowZeroAreNone) {
  const Bytes edits = Box("edts", FullBox("elst", 0, 0, Bytes().Be32(kAll)));
  const Bytes trak = Box("trak", fixture::Tkhd(1) + edits + fixture::Mdia(Film()));
  const Bytes file = fixture::Ftyp("isom") + Box("moov", fixture::Mvhd() + trak);
  EXPECT_TRUE(Opens(file));
  EXPECT_EQ(OpenedMovie(file).track(0)->hasEditList, 0);
}

TEST(HostileCounts, EditsTakeNoMoreMemoryThanThereAreBytes) {
  const Bytes file = With(FilmFile(Film()), "elst", kCount, 0x7FFFFFFF);
  EXPECT_FALSE(Opens(file));  // the media box was read as edits
  OpenedMovie movie(file);
  for (const auto& [id, track] : movie.demux.movieBox->tracks) {
    EXPECT_LE(track->editList.size(), file.size() / 12);
  }
}

TEST(HostileCounts, ReferencesBehindTheMedia) {
  const Bytes references = Box("tref", SizedBox(kAll, "hint", Bytes().Be32(2)));
  const Bytes trak = fixture::Trak(Film()) + references;
  const Bytes longer = Bytes(trak).PutBe32(0, static_cast<std::uint32_t>(trak.size()));
  EXPECT_TRUE(Opens(fixture::Ftyp("isom") + Box("moov", fixture::Mvhd() + longer)));
}

TEST(HostileCounts, ReferencesInFrontOfTheMedia) {
  const Bytes references = Box("tref", SizedBox(kAll, "hint", Bytes().Be32(2)));
  const Bytes trak = Box("trak", fixture::Tkhd(1) + references + fixture::Mdia(Film()));
  EXPECT_FALSE(Opens(fixture::Ftyp("isom") + Box("moov", fixture::Mvhd() + trak)));
}

TEST(HostileCounts, SampleDescriptions) {
  EXPECT_TRUE(Opens(With(FilmFile(Film()), "stsd", kCount, kAll)));
  EXPECT_TRUE(Opens(With(SongFile(Song("drms")), "stsd", kCount, kAll)));
}

TEST(HostileCounts, RunOfMoreSamplesThanAnyFails) {
  EXPECT_FALSE(Opens(With(Movie(), "trun", kCount, kAll)));
  EXPECT_FALSE(Opens(With(Movie(), "trun", kCount, mp4::limits::kMostRunSamples + 1)));
}

TEST(HostileCounts, TrackRecordsEnd) {
  // Every header in one track box: its fields are replaced, but each adds a record.
  Bytes headers;
  for (int i = 0; i < 16400; ++i) headers.Append(fixture::Tkhd(static_cast<std::uint32_t>(i) + 10));
  EXPECT_FALSE(Opens(fixture::Ftyp("isom") + Box("moov", fixture::Mvhd() + Box("trak", headers))));
}

// 200 runs of 2^20 samples each, of which no byte exists. The account lets the first few in.
TEST(HostileRuns, MillionsOfSamplesWithoutBytes) {
  Bytes runs = golden::Tfhd(2);
  for (int i = 0; i < 200; ++i) runs.Append(FullBox("trun", 0, 0, Bytes().Be32(1u << 20)));
  const Bytes moof = Box("moof", FullBox("mfhd", 0, 0, Bytes().Be32(1)) + Box("traf", runs));
  const Bytes file = fixture::Ftyp("isom") + golden::Movie() + moof;
  EXPECT_TRUE(Opens(file));
  OpenedMovie movie(file);
  EXPECT_LT(movie.tables(2)->sampleSizeBox->GetSampleCount(), 8u << 20);
}

// Entries are as many as the run claims; the first takes the 49 runs behind it as entries, and the
// account has room for no second one. The fragment is kept all the same, and merging it, which has
// to write 2^26 samples, is refused.
TEST(HostileRuns, EveryFieldOfEntriesBehindTheEndOfTheFile) {
  Bytes runs = golden::Tfhd(2);
  for (int i = 0; i < 50; ++i) runs.Append(FullBox("trun", 0, 0xF00, Bytes().Be32(1u << 26)));
  const Bytes moof = Box("moof", FullBox("mfhd", 0, 0, Bytes().Be32(1)) + Box("traf", runs));
  const Bytes file = fixture::Ftyp("isom") + golden::Movie() + moof;
  EXPECT_TRUE(Opens(file));
  OpenedMovie movie(file);
  ASSERT_EQ(movie.demux.fragments.size(), 1u);
  const BoxTRAF& fragment = *movie.demux.fragments[0]->trackFragments.at(0);
  ASSERT_EQ(fragment.runs.size(), 1u);
  EXPECT_EQ(fragment.runs[0]->sample_count, 1u << 26);
  EXPECT_EQ(movie.tables(2)->sampleSizeBox->GetSampleCount(), 4u);
}

TEST(HostileRuns, ManySmallFragmentsOfMillions) {
  Bytes file = fixture::Ftyp("isom") + golden::Movie();
  for (int i = 0; i < 500; ++i) {
    const Bytes run = FullBox("trun", 0, 4, Bytes().Be32(3000000).Be32(0));
    file.Append(Box("moof", Box("traf", golden::Tfhd(1 + static_cast<unsigned>(i) % 2) + run)));
  }
  EXPECT_TRUE(Opens(file));
}

// Reading stops at the end of the file, so the run steps back to its own start and is read over and
// over. Each time its one entry takes a page of memory, shared with 64 entries that are not there.
TEST(HostileRuns, RunThatReadsItself) {
  constexpr std::uint32_t kRounds = 256 * 400000;
  const Bytes run = SizedBox(256, "trun", Bytes().Be32(0x100).Be32(65).Be32(1));
  const Bytes moof = SizedBox(kRounds + 16, "moof", SizedBox(kRounds + 8, "traf", run));
  EXPECT_FALSE(Opens(fixture::Ftyp("isom") + golden::Movie() + moof));
}

// Both tracks publish into the first record, and each has to write its rows anew.
TEST(HostileRuns, TwoTracksThatShareARecord) {
  fixture::Track song = Song("mp4a");
  song.id = 1;
  song.offsets = std::vector<std::uint32_t>(100000, 9);
  const Bytes first = fixture::Trak(song);
  const Bytes second = Box("trak", fixture::Tkhd(1) + fixture::Mdia(song) + fixture::Tkhd(2));
  Bytes turns;
  for (int i = 0; i < 20000; ++i) {
    const Bytes run = FullBox("trun", 0, 0, Bytes().Be32(1));
    turns.Append(Box("traf", golden::Tfhd(1 + static_cast<unsigned>(i) % 2) + run));
  }
  const Bytes movie = Box("moov", fixture::Mvhd() + first + second + golden::Mvex());
  const Bytes file = fixture::Ftyp("isom") + movie + Box("moof", turns);
  EXPECT_TRUE(Opens(file));
  OpenedMovie opened(file);
  EXPECT_LT(opened.track(0)->chunkOffsetTable.size(), 102000u);
}

// Setting zlib up takes longer than inflating a few bytes: each movie is charged for it.
TEST(HostileCompression, MoviesOfAFewBytes) {
  Bytes movies;
  const Bytes small = fixture::Cmov(SizedBox(8, "moof") + Bytes().Fill(60));
  for (int i = 0; i < 5000; ++i) movies.Append(small);
  EXPECT_FALSE(Opens(Box("moov", fixture::Cmov(fixture::Moov({Film()}, movies)) + movies)));
}

TEST(HostileChunks, FirstChunkZeroOrTwoToThe31) {
  for (const std::uint32_t first : {0u, 0x80000000u, 0x7FFFFFFFu, kAll}) {
    fixture::Track film = Film();
    film.chunks = {{first, 1}, {first, 2}, {first + 1, 0}};
    EXPECT_TRUE(Opens(FilmFile(film))) << first;
    fixture::Track song = Song("mp4a");
    song.chunks = {{1, 1}, {first, 1}};
    EXPECT_TRUE(Opens(SongFile(song))) << first;
  }
}

// The chunk counter of this table reaches its second run after 2^32 - 1 chunks.
TEST(HostileChunks, RunsThatStandStillOrGoBack) {
  for (const std::uint32_t samples : {0u, 1u, 0x80000000u, kAll}) {
    fixture::Track film = Film();
    film.times = {{0x7FFFFFFF, 1}};
    film.chunks = {{5, samples}, {5, samples}, {4, samples}, {1, 1}};
    EXPECT_TRUE(Opens(FilmFile(film))) << samples;
  }
}

TEST(HostileZeros, Timescales) {
  fixture::Track film = Film();
  film.timescale = 0;
  film.edits = {{400, -1}, {300, 10}};
  EXPECT_TRUE(Opens(FilmFile(film)));
  EXPECT_TRUE(Opens(With(FilmFile(film), "mvhd", 20, 0)));
  EXPECT_TRUE(Opens(With(FilmFile(Film()), "mvhd", 20, 0)));
}

TEST(HostileZeros, ChannelsAndPackets) {
  for (const unsigned channels : {0u, 1u}) {
    for (const std::uint32_t packet : {0u, 1u, 0x80000000u, kAll}) {
      Bytes entry = Bytes().Fill(6).Be16(1).Be16(1).Be16(0).Be32(0).Be16(channels).Be16(0);
      entry.Be16(0).Be16(0).Be32(44100u << 16).Be32(packet).Be32(0).Be32(packet).Be32(0);
      const Bytes description = fixture::Stsd(Box("ima4", entry));
      const Bytes tables = description + fixture::Stts({{40, 1}}) +
                           fixture::Stsc({{1, 2}, {2, 4}}) + fixture::StszConstant(1, 40) +
                           fixture::Stco({1, 2, 3});
      const Bytes media = fixture::Mdhd() + fixture::Hdlr("soun") +
                          Box("minf", fixture::Smhd() + Box("stbl", tables));
      const Bytes trak = Box("trak", fixture::Tkhd(1) + Box("mdia", media));
      EXPECT_TRUE(Opens(Box("moov", fixture::Mvhd() + trak))) << channels << " " << packet;
    }
  }
}

TEST(HostileZeros, DurationsAndSizes) {
  fixture::Track film = Film();
  film.times = {{0, 0}, {4, 0}, {0, kAll}};
  film.sizes = {0, 0, 0, 0};
  EXPECT_TRUE(Opens(FilmFile(film)));
  film.times = {{kAll, kAll}, {0x7FFFFFFF, 0x7FFFFFFF}, {0x80000000, 0x80000000}};
  EXPECT_TRUE(Opens(FilmFile(film)));
}

namespace {

/// A movie inside `depth` compressed ones. Padding keeps each smaller compressed than plain.
Bytes Compressed(int depth) {
  Bytes movie = fixture::Moov({Film()});
  for (; depth > 0; --depth) {
    const Bytes padded = Box("moov", fixture::Cmov(movie) + Box("free", Bytes().Fill(5000)));
    movie = padded;
  }
  return movie;
}

}  // namespace

TEST(HostileCompression, MovieInsideMovieEndsBelowTheFourth) {
  for (int depth = 1; depth <= 4; ++depth) EXPECT_TRUE(Opens(Compressed(depth))) << depth;
  EXPECT_FALSE(Opens(Compressed(5)));
  EXPECT_FALSE(Opens(Compressed(9)));
}

TEST(HostileCompression, MovieThatInflatesAThousandfold) {
  const Bytes bomb = Box("free", Bytes().Fill(8u << 20));
  const Bytes file = Box("moov", fixture::Cmov(fixture::Moov({Film()}, bomb)));
  EXPECT_LT(file.size(), 12000u);
  EXPECT_TRUE(Opens(file));
}

TEST(HostileCompression, MovieThatAnnouncesMoreThanItCanHold) {
  const Bytes file = Box("moov", fixture::Cmov(fixture::Moov({Film()})));
  for (const std::uint32_t announced : {kAll, 0x80000000u, 0x7FFFFFFFu, 0x10000001u, 0x10000000u}) {
    EXPECT_FALSE(Opens(With(file, "cmvd", 8, announced))) << announced;
  }
}

TEST(HostileCompression, MovieMadeOfSmallBoxes) {
  Bytes boxes;
  for (int i = 0; i < 300000; ++i) boxes.Be32(8).Text("\xA9nam");
  const Bytes movie = fixture::Moov({Film()}, Box("udta", boxes));
  EXPECT_TRUE(Opens(Box("moov", fixture::Cmov(movie))));
}
