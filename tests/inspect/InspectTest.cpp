#include <gtest/gtest.h>

#include "inspect/Inspect.h"
#include "io/CallbackSource.h"
#include "io/FileSource.h"
#include "io/RangeSource.h"
#include "tests/Fixtures.h"
#include "tests/SourceFixtures.h"
#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;

mp4::Report InspectCallbacks(Caller* caller) {
  mp4::CallbackSource source(Caller::Read, Caller::Size, caller);
  return mp4::Inspect(&source, {});
}

std::string Summary(const mp4::Report& report) {
  std::string text = std::to_string(static_cast<int>(report.verdict)) + report.reason;
  for (const auto& evidence : report.evidence)
    text += evidence.boxPath + std::to_string(evidence.offset.value_or(0)) + evidence.text;
  for (const auto& problem : report.problems) text += problem.boxPath + problem.text;
  return text + std::to_string(report.tracks.size());
}

/// Samples' tables so long that a look at them would be seen.
Bytes LongMovie(const Bytes& entry) {
  const Bytes sizes =
      FullBox("stsz", 0, 0, Bytes().Be32(0).Be32(250000).Fill(std::size_t{1000000}, 1));
  Bytes tracks;
  for (unsigned id = 1; id <= 2; ++id)
    tracks.Append(
        Box("trak", p::Tkhd(id) + p::Mdia("vide", p::Stsd({entry}) + p::NoSamples() + sizes)));
  return p::FileType() + p::Moov(tracks) + p::MediaData();
}

TEST(Inspect, FileMemoryAndCallbacksAnswerAlike) {
  for (const Bytes& file : {p::ClearMovie(), p::ProtectedMovie(), Bytes(p::ClearMovie()).Cut(700),
                            p::ObjectMovie(p::ObjectSample(1, "ACBC")), Bytes()}) {
    const std::string expected = Summary(p::InspectBytes(file));
    const TempFile onDisk(file);
    const auto source = mp4::FileSource::Open(onDisk.path().c_str(), nullptr);
    ASSERT_NE(nullptr, source);
    EXPECT_EQ(expected, Summary(mp4::Inspect(source.get(), {})));
    Caller caller{file};
    EXPECT_EQ(expected, Summary(InspectCallbacks(&caller)));
    Caller drop{file};
    drop.most = 7;
    EXPECT_EQ(expected, Summary(InspectCallbacks(&drop)));
  }
}

TEST(Inspect, ASourceThatFailsIsUndeterminedWithTheByte) {
  const Bytes file = p::ClearMovie();
  for (std::size_t at = 0; at < file.size(); at += 13) {
    Caller caller{file};
    caller.most = 1;
    caller.failFrom = at;
    const mp4::Report report = InspectCallbacks(&caller);
    EXPECT_EQ(p::kUndetermined, report.verdict) << at;
    EXPECT_EQ("reading failed at byte " + std::to_string(at), report.reason);
    EXPECT_FALSE(report.everything);
  }
}

TEST(Inspect, EvidenceSeenBeforeASourceFailedCounts) {
  const Bytes file = LongMovie(p::ProtectedVideo());
  Caller caller{file};
  caller.failFrom = file.size() - 2000;
  EXPECT_EQ(p::kProtected, InspectCallbacks(&caller).verdict);
}

TEST(Inspect, ASizeThatFailsIsUndetermined) {
  Caller caller{p::ClearMovie()};
  mp4::CallbackSource source(Caller::Read, Caller::NoSize, &caller);
  const mp4::Report report = mp4::Inspect(&source, {});
  EXPECT_EQ(p::kUndetermined, report.verdict);
  EXPECT_FALSE(report.reason.empty());
}

TEST(Inspect, RangesAreAskedForUntilTheVerdictStands) {
  const Bytes file = LongMovie(p::ClearVideo());
  mp4::RangeSource source(file.size());
  std::uint64_t brought = 0;
  for (int rounds = 0; rounds < 24; ++rounds) {
    source.StartOver();
    const mp4::Report report = mp4::Inspect(&source, {});
    if (!report.needed.has_value()) {
      EXPECT_EQ(p::kClear, report.verdict) << report.reason;
      EXPECT_LT(brought, file.size() / 2);
      return;
    }
    EXPECT_EQ(p::kUndetermined, report.verdict);
    const std::uint64_t from = report.needed->offset;
    const std::uint64_t size = std::min<std::uint64_t>(report.needed->size, file.size() - from);
    ASSERT_GT(size, 0U);
    source.Add(from, file.data() + from, size);
    brought += size;
  }
  FAIL() << "asks on and on";
}

TEST(Inspect, ASmallMovieBoxInFrontCostsThreeSlowReads) {
  const Bytes tables =
      FullBox("stsz", 0, 0, Bytes().Be32(0).Be32(7000).Fill(std::size_t{28000}, 1));
  const auto track = [&](unsigned id) {
    return Box("trak", p::Tkhd(id) + p::Mdia("vide", p::Stsd({p::ClearVideo()}) + tables));
  };
  const Bytes media = Box("mdat", Bytes().Fill(std::size_t{1} << 20));
  const Bytes movie = p::FileType() + p::Moov(track(1) + track(2));
  ASSERT_LT(movie.size(), std::size_t{64} << 10);
  Caller progressive{movie + media + Box("free") + media + Box("free")};
  EXPECT_EQ(p::kClear, InspectCallbacks(&progressive).verdict);
  EXPECT_LE(progressive.calls, 3);
  Bytes fragmented = p::FileType() + p::Moov(track(1) + p::Mvex());
  for (int i = 0; i < 10; ++i) fragmented.Append(p::Moof({})).Append(media);
  Caller caller{fragmented};
  EXPECT_EQ(p::kClear, InspectCallbacks(&caller).verdict);
  EXPECT_LE(caller.calls, 3);
}

TEST(Inspect, TwoTracksOfAnyLengthCostFewQuickReads) {
  const TempFile onDisk(LongMovie(p::ClearVideo()));
  const auto file = mp4::FileSource::Open(onDisk.path().c_str(), nullptr);
  mp4::CachedSource source(file.get());
  EXPECT_EQ(p::kClear, mp4::Inspect(&source, {}).verdict);
  EXPECT_LE(source.Reads(), 24U);
  EXPECT_LE(source.BytesRead(), std::uint64_t{64} << 10);
}

TEST(Inspect, ManySmallBoxesAreAllWalked) {
  Bytes boxes;
  for (int i = 0; i < 300000; ++i) boxes.Be32(8).Text("free");
  EXPECT_EQ(p::kClear, p::VerdictOf(p::ClearMovie() + boxes));
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::ClearMovie() + boxes + p::ProtectedMovie()));
}

TEST(Inspect, WithinTightLimitsNothingIsClearThatWasNotSeen) {
  const Bytes file = p::ClearMovie();
  mp4::TreeLimits limits = mp4::TreeLimits::For(file.size());
  std::uint64_t needed = 0;
  for (limits.boxes = 1; limits.boxes < 100; ++limits.boxes) {
    mp4::MemorySource source(file.data(), file.size());
    const mp4::Report report = mp4::Inspect(&source, {false, limits});
    if (report.verdict == p::kClear && needed == 0) needed = limits.boxes;
    EXPECT_EQ(needed == 0 ? p::kUndetermined : p::kClear, report.verdict) << limits.boxes;
    EXPECT_EQ(needed != 0, report.everything);
  }
  // The file as a whole, its file type, movie and media data, the movie's header, and two tracks
  // with 14 boxes and an entry each, of which one has a box; but not "dref" nor what it holds.
  EXPECT_EQ(36U, needed);
}

TEST(Inspect, NestingDeeperThanTheLimitIsNotClear) {
  Bytes moov = p::Moov(p::VideoTrak());
  for (int i = 0; i < 20; ++i) moov = p::Compressed(moov);
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::FileType() + moov));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::FileType() + p::Compressed(p::Moov(p::VideoTrak()))));
}

TEST(Inspect, ManyTracksAndEntriesAreAllLookedAt) {
  std::vector<Bytes> entries(3000, p::ClearVideo());
  entries.back() = p::ProtectedVideo();
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::Movie(p::Trak(1, "vide", entries))));
  Bytes tracks;
  for (unsigned id = 1; id <= 3000; ++id) tracks.Append(p::VideoTrak(id));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::Movie(tracks)));
  EXPECT_EQ(p::kProtected,
            p::VerdictOf(p::Movie(tracks + p::Trak(1, "soun", {p::ProtectedAudio()}))));
}

}  // namespace
