#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "io/CachedSource.h"
#include "io/CallbackSource.h"
#include "io/FileSource.h"
#include "io/RangeSource.h"
#include "tests/Fixtures.h"
#include "tests/SourceFixtures.h"

TEST(CachedSource, ShowsBytesInPlaceAndReadsFew) {
  const Bytes bytes = CountingFromZero(100000);
  const TempFile file(bytes);
  const auto below = mp4::FileSource::Open(file.path().c_str(), nullptr);
  mp4::CachedSource source(below.get());
  const unsigned char* view = source.View(0, 16);
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(view[15], 15);
  EXPECT_NE(source.View(1000, 24), nullptr);
  EXPECT_EQ(source.Reads(), 1u);
  EXPECT_EQ(source.BytesRead(), 1024u);
  // Going on forward doubles the step; a jump starts small again.
  EXPECT_NE(source.View(1024, 1), nullptr);
  EXPECT_EQ(source.BytesRead(), 1024u + 2048);
  EXPECT_NE(source.View(50000, 1), nullptr);
  EXPECT_EQ(source.BytesRead(), 1024u + 2048 + 1024);
  // Going back costs nothing.
  EXPECT_NE(source.View(10, 100), nullptr);
  EXPECT_EQ(source.Reads(), 3u);
}

TEST(CachedSource, ManyShortHopsInARowReadMoreAndMore) {
  const TempFile file(CountingFromZero(100000));
  const auto below = mp4::FileSource::Open(file.path().c_str(), nullptr);
  mp4::CachedSource source(below.get());
  // The first read and 16 hops, then 2 KiB from 51,000, 4 KiB from 54,000, 8 KiB from 60,000.
  const auto hopTo = [&](std::uint64_t last) {
    for (std::uint64_t at = 0; at <= last; at += 3000) ASSERT_NE(source.View(at, 8), nullptr);
  };
  hopTo(48000);
  EXPECT_EQ(source.Reads(), 17u);
  EXPECT_EQ(source.BytesRead(), 17u * 1024);
  hopTo(51000);
  EXPECT_EQ(source.BytesRead(), 17u * 1024 + 2048);
  hopTo(66000);
  EXPECT_EQ(source.Reads(), 20u);
  EXPECT_EQ(source.BytesRead(), 17u * 1024 + 2048 + 4096 + 8192);
  // A way back ends it.
  EXPECT_NE(source.View(1500, 8), nullptr);
  EXPECT_NE(source.View(4500, 8), nullptr);
  EXPECT_EQ(source.BytesRead(), 17u * 1024 + 2048 + 4096 + 8192 + 2 * 1024);
}

TEST(CachedSource, LongHopsReadLittle) {
  const TempFile file(CountingFromZero(700000));
  const auto below = mp4::FileSource::Open(file.path().c_str(), nullptr);
  for (const std::uint64_t distance : {5119U, 5120U}) {
    mp4::CachedSource source(below.get());
    for (std::uint64_t i = 0; i < 30; ++i) ASSERT_NE(source.View(i * distance, 8), nullptr);
    // 4 KiB behind a piece of 1 KiB is a long hop.
    EXPECT_EQ(source.BytesRead() == 30u * 1024, distance == 5120);
  }
}

TEST(CachedSource, ShortHopsOnASlowSourceReadMoreSooner) {
  Caller caller{CountingFromZero(400000)};
  mp4::CallbackSource below(Caller::Read, Caller::Size, &caller);
  mp4::CachedSource source(&below);
  for (const std::uint64_t at : {0U, 80000U, 110000U, 140000U})
    EXPECT_NE(source.View(at, 8), nullptr);
  EXPECT_EQ(source.BytesRead(), 69632u + 3 * 16384);
  EXPECT_NE(source.View(170000, 8), nullptr);
  EXPECT_EQ(source.BytesRead(), 69632u + 3 * 16384 + 32768);
  EXPECT_NE(source.View(210000, 8), nullptr);
  EXPECT_NE(source.View(300000, 8), nullptr);
  EXPECT_EQ(source.BytesRead(), 69632u + 3 * 16384 + 32768 + 2 * 65536);
}

TEST(CachedSource, AViewHasAllItsBytesOrIsNull) {
  const Bytes bytes = CountingFromZero(100);
  const TempFile file(bytes);
  const auto below = mp4::FileSource::Open(file.path().c_str(), nullptr);
  mp4::CachedSource source(below.get());
  EXPECT_NE(source.View(90, 10), nullptr);
  EXPECT_EQ(source.View(90, 11), nullptr);
  EXPECT_NE(source.View(100, 0), nullptr);
  EXPECT_EQ(source.View(101, 0), nullptr);
  EXPECT_FALSE(source.Failed());
}

TEST(CachedSource, AViewAcrossTwoPiecesIsReadAnew) {
  const Bytes bytes = CountingFromZero(5000);
  const TempFile file(bytes);
  const auto below = mp4::FileSource::Open(file.path().c_str(), nullptr);
  mp4::CachedSource source(below.get());
  ASSERT_NE(source.View(0, 1), nullptr);
  const unsigned char* view = source.View(1020, 8);
  ASSERT_NE(view, nullptr);
  EXPECT_EQ(std::memcmp(view, bytes.data() + 1020, 8), 0);
}

TEST(CachedSource, TheLargestViewAndOneMore) {
  const Bytes bytes = CountingFromZero(70000);
  Caller caller{bytes};
  mp4::CallbackSource below(Caller::Read, Caller::Size, &caller);
  mp4::CachedSource source(&below);
  EXPECT_NE(source.View(0, 65536), nullptr);
  EXPECT_EQ(source.View(0, 65537), nullptr);
}

TEST(CachedSource, ASlowSourceIsReadInLargePieces) {
  Caller caller{CountingFromZero(300000)};
  mp4::CallbackSource below(Caller::Read, Caller::Size, &caller);
  mp4::CachedSource source(&below);
  for (std::uint64_t at = 0; at < 69000; at += 100) ASSERT_NE(source.View(at, 100), nullptr);
  EXPECT_EQ(caller.calls, 1);
  EXPECT_NE(source.View(200000, 8), nullptr);
  EXPECT_EQ(caller.calls, 2);
}

TEST(CachedSource, FailuresBelowAreItsOwn) {
  Caller caller{CountingFromZero(300000)};
  caller.failFrom = 100000;
  mp4::CallbackSource below(Caller::Read, Caller::Size, &caller);
  mp4::CachedSource source(&below);
  EXPECT_NE(source.View(10, 10), nullptr);
  EXPECT_FALSE(source.Failed());
  EXPECT_EQ(source.View(200000, 10), nullptr);
  EXPECT_EQ(source.Trouble().error, -5);
}

TEST(CachedSource, OfRangesNeedsOnlyWhatIsWanted) {
  const Bytes bytes = CountingFromZero(100000);
  mp4::RangeSource below(bytes.size());
  below.Add(0, bytes.data(), 100);
  below.Add(100, bytes.data() + 100, 100);
  mp4::CachedSource source(&below);
  EXPECT_NE(source.View(90, 20), nullptr);
  EXPECT_FALSE(source.Failed());
  EXPECT_EQ(source.View(190, 20), nullptr);
  EXPECT_EQ(source.Trouble().offset, 200u);
}

TEST(CachedSource, ReadingDeliversTheSameBytesInAnyOrder) {
  const Bytes bytes = CountingFromZero(400000);
  const TempFile file(bytes);
  const auto below = mp4::FileSource::Open(file.path().c_str(), nullptr);
  mp4::CachedSource source(below.get());
  std::vector<unsigned char> got(40000);
  std::uint64_t at = 1;
  for (int i = 0; i < 200; ++i) {
    at = (at * 48271 + 11) % 400000;
    const std::size_t n = static_cast<std::size_t>(at * 7 % 40000);
    const std::size_t there = std::min<std::size_t>(n, 400000 - at);
    ASSERT_EQ(source.ReadAt(at, got.data(), n), there);
    ASSERT_EQ(std::memcmp(got.data(), bytes.data() + at, there), 0);
  }
}
