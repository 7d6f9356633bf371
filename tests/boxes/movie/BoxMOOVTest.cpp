#include <gtest/gtest.h>

#include <string>

#include "boxes/movie/BoxMOOV.h"
#include "io/Limits.h"
#include "io/ScanControl.h"
#include "tests/Bytes.h"
#include "tests/Fixtures.h"
#include "tests/MovieFixtures.h"

namespace {

using fixture::Mvhd;
using fixture::Tkhd;
using fixture::Track;
using fixture::Trak;

/// A whole track with one ID.
Bytes TrackOf(std::uint32_t id) { return Trak(Track{.id = id}); }

/// A track that fails: it has a header but no media.
Bytes BrokenTrack(std::uint32_t id, const Bytes& more = {}) { return Box("trak", Tkhd(id) + more); }

/// One reading of a movie's children from memory.
struct Movie {
  explicit Movie(const Bytes& children)
      : Movie(children, static_cast<long long>(children.size())) {}
  Movie(const Bytes& children, long long size, mp4::ScanControl* scan = nullptr)
      : reader(children.data(), children.size()) {
    reader.AttachScan(scan);
    succeeded = box.ReadData(&reader, size, &context);
  }

  mmBufReader reader;
  Mp4Context context;
  BoxMOOV box;
  bool succeeded = false;
};

/// A memory source that claims another size.
class SizedReader : public mmBufReader {
 public:
  SizedReader(const Bytes& bytes, long long claimed)
      : mmBufReader(bytes.data(), bytes.size()), claimed_(claimed) {}
  long long GetSize() override { return claimed_; }

 private:
  long long claimed_;
};

/// A movie that holds `children` and, compressed, `inner`.
Bytes WithCompressed(const Bytes& children, const Bytes& inner) {
  return children + fixture::Cmov(inner);
}

/// A compressed movie `depth` levels down that holds track 6.
Bytes Nested(int depth) {
  Bytes moov = Box("moov", Mvhd() + TrackOf(6));
  // The filling keeps each level compressible.
  for (int i = 0; i < depth; ++i) {
    moov = Box("moov", Box("free", Bytes().Fill(2000)) + fixture::Cmov(moov));
  }
  return moov;
}

Bytes PayloadOf(const Bytes& box) {
  Bytes payload;
  for (std::size_t i = 8; i < box.size(); ++i) payload.Byte(box[i]);
  return payload;
}

}  // namespace

TEST(BoxMOOV, HeaderAndTrackMakeAMovie) {
  const Bytes children = Mvhd(600, 1200) + TrackOf(3);
  Movie movie(children);
  EXPECT_TRUE(movie.succeeded);
  ASSERT_NE(movie.box.movieHeaderBox, nullptr);
  EXPECT_EQ(movie.box.movieHeaderBox->timescale, 600u);
  ASSERT_EQ(movie.box.tracks.count(3), 1u);
  EXPECT_EQ(movie.box.tracks[3]->GetTrackID(), 3);
  EXPECT_EQ(movie.context.GetTimescale(), 600);
  EXPECT_EQ(movie.context.GetDuration(), 1200);
  EXPECT_EQ(movie.reader.GetPos(), static_cast<long long>(children.size()));
}

TEST(BoxMOOV, NullReaderFails) {
  Mp4Context context;
  EXPECT_FALSE(BoxMOOV().ReadData(nullptr, 100, &context));
}

TEST(BoxMOOV, MissingHeaderFails) { EXPECT_FALSE(Movie(TrackOf(3)).succeeded); }

TEST(BoxMOOV, MissingTracksFail) { EXPECT_FALSE(Movie(Mvhd()).succeeded); }

TEST(BoxMOOV, EmptyPayloadSucceedsOnlyWithWhatIsThere) {
  Movie movie(Mvhd() + TrackOf(3));
  movie.reader.SetPos(5);
  EXPECT_TRUE(movie.box.ReadData(&movie.reader, 0, &movie.context));
  EXPECT_TRUE(movie.box.ReadData(&movie.reader, -4, &movie.context));
  EXPECT_EQ(movie.reader.GetPos(), 5);
  movie.box.Clear();
  EXPECT_FALSE(movie.box.ReadData(&movie.reader, 0, &movie.context));
}

TEST(BoxMOOV, SourceOfNegativeSizeIsPassedOver) {
  const Bytes children = Mvhd() + TrackOf(3);
  SizedReader reader(children, -1);
  Mp4Context context;
  BoxMOOV box;
  EXPECT_FALSE(box.ReadData(&reader, static_cast<long long>(children.size()), &context));
  EXPECT_EQ(box.movieHeaderBox, nullptr);
  EXPECT_EQ(reader.GetPos(), static_cast<long long>(children.size()));
}

TEST(BoxMOOV, WalkEndsOnceMoreThanTheSourceIsCounted) {
  const Bytes children = Mvhd() + TrackOf(3);  // the header takes 108 bytes
  for (const long long claimed : {107, 108}) {
    SizedReader reader(children, claimed);
    Mp4Context context;
    BoxMOOV box;
    const auto size = static_cast<long long>(children.size());
    EXPECT_EQ(box.ReadData(&reader, size, &context), claimed == 108);
    EXPECT_EQ(box.tracks.size(), claimed == 108 ? 1u : 0u);
    EXPECT_EQ(reader.GetPos(), size);
  }
}

TEST(BoxMOOV, TrackWithIdZeroIsReadAndDropped) {
  Movie good(Mvhd() + TrackOf(0) + TrackOf(3));
  EXPECT_TRUE(good.succeeded);
  EXPECT_EQ(good.box.tracks.size(), 1u);
  EXPECT_EQ(good.context.GetTrackCount(), 2);
  EXPECT_FALSE(Movie(Mvhd() + TrackOf(0)).succeeded);
}

TEST(BoxMOOV, ResultOfATrackWithIdZeroCounts) {
  Movie movie(Mvhd() + TrackOf(3) + BrokenTrack(0));
  EXPECT_FALSE(movie.succeeded);
  EXPECT_EQ(movie.box.tracks.size(), 1u);
}

TEST(BoxMOOV, LaterTrackWithTheSameIdWins) {
  Movie movie(Mvhd() + Trak({.id = 5, .timescale = 111}) + Trak({.id = 5, .timescale = 222}));
  EXPECT_TRUE(movie.succeeded);
  ASSERT_EQ(movie.box.tracks.size(), 1u);
  EXPECT_EQ(movie.box.tracks[5]->mediaBox->GetTimescale(), 222u);
  EXPECT_EQ(movie.context.GetTrackCount(), 2);
}

TEST(BoxMOOV, TracksAscendByTheirSignedIds) {
  Movie movie(Mvhd() + TrackOf(7) + TrackOf(0xFFFFFFFF) + TrackOf(2));
  ASSERT_EQ(movie.box.tracks.size(), 3u);
  EXPECT_EQ(movie.box.tracks.begin()->first, -1);
  EXPECT_EQ(movie.box.tracks.rbegin()->first, 7);
}

TEST(BoxMOOV, LastHeaderIsKept) {
  Movie movie(Mvhd(600, 1) + TrackOf(3) + Mvhd(700, 2));
  EXPECT_TRUE(movie.succeeded);
  EXPECT_EQ(movie.box.movieHeaderBox->timescale, 700u);
  EXPECT_EQ(movie.context.GetDuration(), 2);
}

TEST(BoxMOOV, FailedTrackEndsTheWalkButIsKept) {
  const Bytes children = BrokenTrack(3) + Mvhd();
  Movie movie(children);
  EXPECT_FALSE(movie.succeeded);
  EXPECT_EQ(movie.box.tracks.size(), 1u);
  EXPECT_EQ(movie.box.movieHeaderBox, nullptr);
  EXPECT_EQ(movie.reader.GetPos(), static_cast<long long>(children.size()));
}

TEST(BoxMOOV, FailedHeaderFailsTheMovie) {
  // A header without payload.
  EXPECT_FALSE(Movie(TrackOf(3) + Box("mvhd")).succeeded);
}

TEST(BoxMOOV, FailedMovieExtendsFailsTheMovie) {
  EXPECT_TRUE(Movie(Mvhd() + TrackOf(3) + Box("mvex")).succeeded);
  EXPECT_FALSE(Movie(Mvhd() + TrackOf(3) + SizedBox(7, "mvex")).succeeded);
}

TEST(BoxMOOV, MovieExtendsBoxIsReused) {
  const Bytes trex = FullBox("trex", 0, 0, Bytes().Be32(1).Be32(1).Be32(10).Be32(20).Be32(0));
  Movie movie(Mvhd() + TrackOf(3) + Box("mvex", trex) + Box("mvex", trex));
  EXPECT_TRUE(movie.succeeded);
  ASSERT_NE(movie.box.movieExtendsBox, nullptr);
  EXPECT_EQ(movie.box.movieExtendsBox->trackExtends.size(), 2u);
}

TEST(BoxMOOV, UserDataBoxIsReused) {
  Movie movie(Mvhd() + TrackOf(3) + Box("udta"));
  ASSERT_NE(movie.box.userDataBox, nullptr);
  const BoxUDTA* first = movie.box.userDataBox.get();
  const Bytes again = Box("udta");
  mmBufReader reader(again.data(), again.size());
  movie.box.ReadData(&reader, 8, &movie.context);
  EXPECT_EQ(movie.box.userDataBox.get(), first);
}

TEST(BoxMOOV, UnknownChildrenAreSkipped) {
  const Bytes filling = Bytes().Fill(20, 0xEE);
  Movie movie(Box("uuid", filling) + Mvhd() + Box("iods", filling) + TrackOf(3));
  EXPECT_TRUE(movie.succeeded);
}

TEST(BoxMOOV, ChildSizeZeroTakesTheRest) {
  Bytes children = Mvhd() + TrackOf(3);
  children.PutBe32(108, 0);
  Movie movie(children);
  EXPECT_TRUE(movie.succeeded);
  EXPECT_EQ(movie.reader.GetPos(), static_cast<long long>(children.size()));
}

TEST(BoxMOOV, ChildThatOverrunsIsNotSteppedBackOver) {
  const Bytes children = Mvhd() + TrackOf(3) + Box("free", Bytes().Fill(30));
  const auto size = static_cast<long long>(children.size());
  Movie movie(children, size - 10);
  EXPECT_TRUE(movie.succeeded);
  EXPECT_EQ(movie.reader.GetPos(), size);
}

TEST(BoxMOOV, LongestEditedTrackReplacesTheDuration) {
  Movie movie(Mvhd(1000, 5) + Trak({.id = 1, .edits = {{300, 0}}}) +
              Trak({.id = 2, .edits = {{400, -1}, {300, 0}}}) + Trak({.id = 3}));
  EXPECT_TRUE(movie.succeeded);
  EXPECT_EQ(movie.context.GetDuration(), 700);
}

TEST(BoxMOOV, DurationStaysWithoutEditLists) {
  Movie movie(Mvhd(1000, 5) + TrackOf(1));
  EXPECT_EQ(movie.context.GetDuration(), 5);
}

TEST(BoxMOOV, EditedDurationBelowOneIsNone) {
  Movie movie(Mvhd(1000, 5) + Trak({.id = 1, .edits = {{0, 0}}}) +
              Trak({.id = 2, .edits = {{0xFFFFFFFF, 0}}}));
  EXPECT_EQ(movie.context.GetDuration(), 5);
}

TEST(BoxMOOV, EditedDurationOfAFailedTrackCounts) {
  Movie movie(Mvhd(1000, 5) + BrokenTrack(1, fixture::Edts({{777, 0}})));
  EXPECT_FALSE(movie.succeeded);
  EXPECT_EQ(movie.context.GetDuration(), 777);
}

TEST(BoxMOOV, HeaderBehindTheTracksIsStillOverriddenByTheirEdits) {
  Movie movie(Trak({.id = 1, .edits = {{300, 0}}}) + Mvhd(1000, 5));
  EXPECT_EQ(movie.context.GetDuration(), 300);
}

TEST(BoxMOOV, ReadingClearsFinished) {
  Movie movie(Mvhd() + TrackOf(3));
  movie.box.finished = 1;
  movie.box.ReadData(&movie.reader, 0, &movie.context);
  EXPECT_EQ(movie.box.finished, 0);
  movie.box.finished = 1;
  movie.reader.SetPos(0);
  movie.box.ReadData(&movie.reader, 108, &movie.context);
  EXPECT_EQ(movie.box.finished, 0);
}

TEST(BoxMOOV, ClearDropsTheBoxesOnly) {
  Movie movie(Mvhd() + TrackOf(3) + Box("mvex") + Box("udta"));
  movie.box.readyTracks = {3};
  movie.box.Clear();
  EXPECT_EQ(movie.box.movieHeaderBox, nullptr);
  EXPECT_EQ(movie.box.movieExtendsBox, nullptr);
  EXPECT_EQ(movie.box.userDataBox, nullptr);
  EXPECT_TRUE(movie.box.tracks.empty());
  EXPECT_EQ(movie.box.readyTracks, std::vector<std::int32_t>{3});
}

TEST(BoxMOOV, WithoutContextNothingIsTouched) {
  const Bytes children = Mvhd() + TrackOf(3);
  mmBufReader reader(children.data(), children.size());
  BoxMOOV box;
  // Media needs a context, so the track fails.
  EXPECT_FALSE(box.ReadData(&reader, static_cast<long long>(children.size()), nullptr));
  EXPECT_NE(box.movieHeaderBox, nullptr);
}

TEST(CompressedMovie, TracksAreReadFromMemory) {
  const Bytes children = fixture::Cmov(Box("moov", Mvhd(600, 7) + TrackOf(3)));
  Movie movie(children);
  EXPECT_TRUE(movie.succeeded);
  EXPECT_EQ(movie.box.tracks.count(3), 1u);
  EXPECT_EQ(movie.context.GetTimescale(), 600);
  EXPECT_EQ(movie.reader.GetPos(), static_cast<long long>(children.size()));
}

TEST(CompressedMovie, TypeOfTheInnerBoxIsNotLookedAt) {
  EXPECT_TRUE(Movie(fixture::Cmov(Box("what", Mvhd() + TrackOf(3)))).succeeded);
}

TEST(CompressedMovie, InnerSizeIsTakenFromTheFirstFourBytes) {
  // The size ends the inner movie behind its header, before its track.
  Bytes inner = Box("moov", Mvhd() + TrackOf(3));
  inner.PutBe32(0, 8 + 108);
  Movie movie(fixture::Cmov(inner));
  EXPECT_FALSE(movie.succeeded);
  EXPECT_NE(movie.box.movieHeaderBox, nullptr);
  EXPECT_TRUE(movie.box.tracks.empty());
}

TEST(CompressedMovie, InnerSizeCountsItsHeader) {
  // One byte behind the movie header makes the walk go on into the track.
  const auto header = static_cast<std::uint32_t>(Mvhd().size());
  Bytes inner = Box("moov", Mvhd() + TrackOf(3));
  EXPECT_EQ(Movie(fixture::Cmov(inner.PutBe32(0, 8 + header + 1))).box.tracks.size(), 1u);
  EXPECT_EQ(Movie(fixture::Cmov(inner.PutBe32(0, 8 + header))).box.tracks.size(), 0u);
}

TEST(CompressedMovie, InnerSizeZeroReadsNothing) {
  Bytes inner = Box("moov", Mvhd() + TrackOf(3));
  inner.PutBe32(0, 0);
  EXPECT_TRUE(Movie(WithCompressed(Mvhd() + TrackOf(4), inner)).succeeded);
  EXPECT_FALSE(Movie(fixture::Cmov(inner)).succeeded);
}

TEST(CompressedMovie, FailingInnerMovieDoesNotFailTheMovie) {
  const Bytes inner = Box("moov", Mvhd(600) + BrokenTrack(5) + Box("free", Bytes().Fill(300)));
  Movie movie(WithCompressed(Mvhd() + TrackOf(4), inner));
  EXPECT_TRUE(movie.succeeded);
  EXPECT_EQ(movie.box.tracks.size(), 2u);
  EXPECT_EQ(movie.context.GetTimescale(), 600);
}

TEST(CompressedMovie, FailingCompressionFailsTheMovie) {
  const Bytes children = Mvhd() + TrackOf(4);
  EXPECT_TRUE(Movie(children + Box("free", Bytes().Text("lzma"))).succeeded);
  EXPECT_FALSE(Movie(children + Box("cmov", Box("dcom", Bytes().Text("lzma")))).succeeded);
}

TEST(CompressedMovie, AnnouncedSizeNotAboveTheCompressedBoxFails) {
  const Bytes stream = fixture::Deflated(Box("moov", Mvhd() + TrackOf(3)));
  const auto boxSize = static_cast<std::uint32_t>(12 + stream.size());
  const Bytes cmvd = fixture::Cmvd(boxSize, stream);
  const Bytes cmov = Box("cmov", Box("dcom", Bytes().Text("zlib")) + cmvd);
  EXPECT_FALSE(Movie(Mvhd() + TrackOf(4) + cmov).succeeded);
}

TEST(CompressedMovie, FourLevelsAreReadFiveAreNot) {
  Movie four(PayloadOf(Nested(4)));
  EXPECT_TRUE(four.succeeded);
  EXPECT_EQ(four.box.tracks.count(6), 1u);
  Movie five(PayloadOf(Nested(5)));
  EXPECT_FALSE(five.succeeded);
  EXPECT_TRUE(five.box.tracks.empty());
}

TEST(CompressedMovie, DepthIsCountedForNestingNotForRepetition) {
  Bytes children;
  for (std::uint32_t id = 1; id <= 6; ++id) {
    children.Append(fixture::Cmov(Box("moov", Mvhd() + TrackOf(id))));
  }
  Movie movie(children);
  EXPECT_TRUE(movie.succeeded);
  EXPECT_EQ(movie.box.tracks.size(), 6u);
}

TEST(CompressedMovie, JudgingLeavesItsTablesUnread) {
  const Bytes children = fixture::Cmov(Box("moov", Mvhd() + TrackOf(3)));
  const auto size = static_cast<long long>(children.size());
  mp4::ScanControl loading(size);
  Movie loaded(children, size, &loading);
  ASSERT_TRUE(loaded.succeeded);
  EXPECT_EQ(loaded.context.GetTrack(3)->maxSampleSize, 40u);
  mp4::ScanControl judging(size);
  judging.tablesUnread = true;
  Movie judged(children, size, &judging);
  ASSERT_TRUE(judged.succeeded);
  EXPECT_EQ(judged.context.GetTrack(3)->maxSampleSize, 0u);
}

TEST(CompressedMovie, HeadersInsideCountForTheOpening) {
  const Bytes children = fixture::Cmov(Box("moov", Mvhd() + TrackOf(3)));
  const auto size = static_cast<long long>(children.size());
  mp4::ScanControl scan(size);
  while (scan.TakeHeader()) {
  }
  EXPECT_FALSE(Movie(children, size, &scan).succeeded);
}

TEST(CompressedMovie, EmptyBoxesByTheMillionAreRefused) {
  // 8 MiB of boxes without payload before the movie header: a million headers out of a few
  // kilobytes, of which an opening affords half.
  Bytes boxes = Bytes().Be32(0).Text("moov");
  const Bytes empty = Box("free");
  for (int i = 0; i < 1024 * 1024; ++i) boxes.Append(empty);
  boxes.Append(Mvhd() + TrackOf(3));
  boxes.PutBe32(0, static_cast<std::uint32_t>(boxes.size()));
  const Bytes children = Mvhd() + TrackOf(4) + fixture::Cmov(boxes);
  const auto size = static_cast<long long>(children.size());
  Movie unbounded(children);
  EXPECT_TRUE(unbounded.succeeded);
  EXPECT_EQ(unbounded.box.tracks.count(3), 1u);
  mp4::ScanControl scan(size);
  Movie movie(children, size, &scan);
  EXPECT_FALSE(scan.TakeHeader());
  EXPECT_EQ(movie.box.tracks.count(3), 0u);
  EXPECT_EQ(movie.box.tracks.count(4), 1u);
}

TEST(CompressedMovie, InflatingStopsWithTheOpeningsAllowance) {
  const Bytes children = Mvhd() + TrackOf(4) + fixture::Cmov(Box("moov", Mvhd() + TrackOf(3)));
  const auto size = static_cast<long long>(children.size());
  mp4::ScanControl scan(size);
  ASSERT_TRUE(scan.TakeInflated(mp4::limits::kInflatedTotal + 16 * size));
  Movie movie(children, size, &scan);
  EXPECT_FALSE(movie.succeeded);
  EXPECT_EQ(movie.box.tracks.count(3), 0u);
}
