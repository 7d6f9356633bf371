#include <gtest/gtest.h>

#include <cstring>

#include "boxes/movie/BoxCMOV.h"
#include "io/Limits.h"
#include "io/Mp4StreamReader.h"
#include "io/ScanControl.h"
#include "tests/Bytes.h"
#include "tests/Fixtures.h"
#include "tests/MovieFixtures.h"

namespace {

/// 500 bytes that compress well.
Bytes Plain() { return Box("moov", Bytes().Fill(492, 'a')); }

Bytes Dcom() { return Box("dcom", Bytes().Text("zlib")); }

/// A compressed movie that announces `announced` bytes.
Bytes Announcing(std::uint32_t announced, const Bytes& stream) {
  return Dcom() + fixture::Cmvd(announced, stream);
}

/// One reading of a "cmov" payload from memory.
struct Reading {
  explicit Reading(const Bytes& payload)
      : Reading(payload, static_cast<long long>(payload.size())) {}
  Reading(const Bytes& payload, long long size, mp4::ScanControl* scan = nullptr)
      : reader(payload.data(), payload.size()) {
    reader.AttachScan(scan);
    succeeded = box.ReadData(&reader, size, nullptr);
  }
  mmBufReader* movie() { return box.GetMOOVDataStream(); }

  mmBufReader reader;
  BoxCMOV box;
  bool succeeded = false;
};

/// The payload is refused, and the reader stands behind it all the same.
void ExpectRefused(const Bytes& payload) {
  Reading reading(payload);
  EXPECT_FALSE(reading.succeeded);
  EXPECT_EQ(reading.movie(), nullptr);
  EXPECT_EQ(reading.reader.GetPos(), static_cast<long long>(payload.size()));
}

}  // namespace

TEST(BoxCMOV, InflatesTheMovie) {
  const Bytes plain = Plain();
  const Bytes payload = Announcing(500, fixture::Deflated(plain));
  Reading reading(payload);
  ASSERT_TRUE(reading.succeeded);
  ASSERT_NE(reading.movie(), nullptr);
  EXPECT_EQ(reading.movie()->GetSize(), 500);
  EXPECT_EQ(reading.movie()->capacity, 500);
  EXPECT_EQ(reading.movie()->GetPos(), 0);
  EXPECT_EQ(std::memcmp(reading.movie()->data.get(), plain.data(), 500), 0);
  EXPECT_EQ(reading.reader.GetPos(), static_cast<long long>(payload.size()));
}

TEST(BoxCMOV, MovieIsAsLongAsAnnouncedWithAZeroTail) {
  Reading reading(Announcing(600, fixture::Deflated(Plain())));
  ASSERT_TRUE(reading.succeeded);
  EXPECT_EQ(reading.movie()->GetSize(), 600);
  EXPECT_EQ(reading.movie()->data[499], 'a');
  for (std::size_t i = 500; i < 600; ++i) ASSERT_EQ(reading.movie()->data[i], 0) << i;
}

TEST(BoxCMOV, MovieLongerThanAnnouncedFails) {
  ExpectRefused(Announcing(499, fixture::Deflated(Plain())));
}

TEST(BoxCMOV, NullReaderOrNegativeSizeFails) {
  BoxCMOV box;
  EXPECT_FALSE(box.ReadData(nullptr, 10, nullptr));
  Reading reading(Announcing(500, fixture::Deflated(Plain())), -1);
  EXPECT_FALSE(reading.succeeded);
  EXPECT_EQ(reading.reader.GetPos(), 0);
}

TEST(BoxCMOV, FirstChildMustNameTheCompression) {
  ExpectRefused(Box("free", Bytes().Text("zlib")) + fixture::Cmvd(500, fixture::Deflated(Plain())));
}

TEST(BoxCMOV, CompressionMustBeZlib) {
  ExpectRefused(Box("dcom", Bytes().Text("Zlib")) + fixture::Cmvd(500, fixture::Deflated(Plain())));
}

TEST(BoxCMOV, RestOfTheCompressionBoxIsSkipped) {
  Reading reading(Box("dcom", Bytes().Text("zlib").Fill(5, 0xEE)) +
                  fixture::Cmvd(500, fixture::Deflated(Plain())));
  EXPECT_TRUE(reading.succeeded);
}

TEST(BoxCMOV, CompressionBoxBelowTwelveBytesFails) {
  const Bytes cmvd = fixture::Cmvd(500, fixture::Deflated(Plain()));
  ExpectRefused(SizedBox(11, "dcom", Bytes().Text("zlib")) + cmvd);
  ExpectRefused(SizedBox(0, "dcom", Bytes().Text("zlib")) + cmvd);
}

TEST(BoxCMOV, SecondChildMustHoldTheMovie) {
  const Bytes stream = fixture::Deflated(Plain());
  ExpectRefused(Dcom() + Box("cmvx", Bytes().Be32(500) + stream));
  ExpectRefused(Dcom() + Box("free") + fixture::Cmvd(500, stream));
}

TEST(BoxCMOV, MovieBoxBelowTwelveBytesFails) {
  const Bytes stream = fixture::Deflated(Plain());
  ExpectRefused(Dcom() + SizedBox(11, "cmvd", Bytes().Be32(500) + stream));
}

TEST(BoxCMOV, MovieBoxOfTwelveBytesIsInflatedFromNothing) {
  // Refused for want of a stream, not for its size: its announced bytes are charged.
  const Bytes payload = Announcing(13, {}) + Bytes().Fill(20, 0xEE);
  const auto size = static_cast<long long>(payload.size());
  mp4::ScanControl scan(size);
  Reading reading(payload, size, &scan);
  EXPECT_FALSE(reading.succeeded);
  EXPECT_EQ(reading.reader.GetPos(), size);
  const long long allowance = mp4::limits::kInflatedTotal + 16 * size;
  EXPECT_FALSE(scan.TakeInflated(allowance - 64 * 1024 - 12));
}

TEST(BoxCMOV, MovieBoxOfElevenBytesIsNotInflated) {
  const Bytes payload = Dcom() + SizedBox(11, "cmvd", Bytes().Be32(13)) + Bytes().Fill(20, 0xEE);
  const auto size = static_cast<long long>(payload.size());
  mp4::ScanControl scan(size);
  EXPECT_FALSE(Reading(payload, size, &scan).succeeded);
  EXPECT_TRUE(scan.TakeInflated(mp4::limits::kInflatedTotal + 16 * size));
}

TEST(BoxCMOV, MovieBoxOfSizeZeroMustBeExceededToo) {
  const Bytes stream = fixture::Deflated(Bytes().Text("abcde"));
  const auto boxSize = static_cast<std::uint32_t>(12 + stream.size());
  EXPECT_TRUE(Reading(Dcom() + SizedBox(0, "cmvd", Bytes().Be32(boxSize + 1) + stream)).succeeded);
  ExpectRefused(Dcom() + SizedBox(0, "cmvd", Bytes().Be32(boxSize) + stream));
}

TEST(BoxCMOV, MovieBoxOfSizeZeroTakesTheRest) {
  Reading reading(Dcom() + SizedBox(0, "cmvd", Bytes().Be32(500) + fixture::Deflated(Plain())));
  ASSERT_TRUE(reading.succeeded);
  EXPECT_EQ(reading.movie()->GetSize(), 500);
}

TEST(BoxCMOV, MovieBoxOfSizeZeroNeedsRoom) {
  // 11 bytes are left for the box: one less than its fixed part.
  Reading reading(Dcom() + SizedBox(0, "cmvd", Bytes().Be32(500)), 12 + 11);
  EXPECT_FALSE(reading.succeeded);
  EXPECT_EQ(reading.reader.GetPos(), 23);
}

TEST(BoxCMOV, AnnouncedSizeMustExceedTheCompressedBox) {
  const Bytes stream = fixture::Deflated(Bytes().Text("abcde"));
  const auto boxSize = static_cast<std::uint32_t>(12 + stream.size());
  ExpectRefused(Announcing(boxSize - 1, stream));
  ExpectRefused(Announcing(boxSize, stream));
  EXPECT_TRUE(Reading(Announcing(boxSize + 1, stream)).succeeded);
}

TEST(BoxCMOV, DamagedStreamFails) {
  Bytes stream = fixture::Deflated(Plain());
  stream.PutBe32(0, 0xFFFFFFFF);
  ExpectRefused(Announcing(500, stream));
}

TEST(BoxCMOV, StreamCutShortFails) {
  Bytes stream = fixture::Deflated(Plain());
  ExpectRefused(Announcing(500, stream.Cut(stream.size() - 1)));
}

TEST(BoxCMOV, BytesBehindTheStreamAreIgnored) {
  EXPECT_TRUE(Reading(Announcing(500, fixture::Deflated(Plain()).Fill(40, 0xEE))).succeeded);
}

TEST(BoxCMOV, AnnouncedSizeIsBoundByTheCompressedBytes) {
  const Bytes stream = fixture::Deflated(Plain());
  const auto most = static_cast<std::uint32_t>(1040 * stream.size() + 64 * 1024);
  EXPECT_TRUE(Reading(Announcing(most, stream)).succeeded);
  ExpectRefused(Announcing(most + 1, stream));
}

TEST(BoxCMOV, BytesBehindTheMovieBoxJustifyNothing) {
  const Bytes stream = fixture::Deflated(Plain());
  const auto most = static_cast<std::uint32_t>(1040 * stream.size() + 64 * 1024);
  const Bytes behind = Box("free", Bytes().Fill(5000));
  EXPECT_TRUE(Reading(Announcing(most, stream) + behind).succeeded);
  ExpectRefused(Announcing(most + 1, stream) + behind);
}

TEST(BoxCMOV, OnlyCompressedBytesThatExistJustifyASize) {
  const Bytes stream = fixture::Deflated(Plain());
  const auto most = static_cast<std::uint32_t>(1040 * stream.size() + 64 * 1024);
  // The box claims ten thousand bytes more than there are.
  Bytes payload = Announcing(most, stream);
  payload.PutBe32(12, static_cast<std::uint32_t>(12 + stream.size() + 10000));
  Reading enough(payload, static_cast<long long>(payload.size()) + 10000);
  EXPECT_TRUE(enough.succeeded);
  EXPECT_EQ(enough.reader.GetPos(), static_cast<long long>(payload.size()) + 10000);
  payload.PutBe32(20, most + 1);
  EXPECT_FALSE(Reading(payload, static_cast<long long>(payload.size()) + 10000).succeeded);
}

TEST(BoxCMOV, LargestInflatedMovie) {
  // 258,112 compressed bytes justify more than 256 MiB; the stream itself is short.
  const Bytes stream = fixture::Deflated(Plain()).Fill(258112);
  EXPECT_TRUE(Reading(Announcing(256u << 20, stream)).succeeded);
  ExpectRefused(Announcing((256u << 20) + 1, stream));
}

TEST(BoxCMOV, AnnouncedSizeFromTwoGigabytesFails) {
  const Bytes stream = fixture::Deflated(Plain());
  ExpectRefused(Announcing(0x80000000u, stream));
  ExpectRefused(Announcing(0xFFFFFFFFu, stream));
}

TEST(BoxCMOV, WhatFollowsTheMovieIsSkipped) {
  const Bytes payload = Announcing(500, fixture::Deflated(Plain())) + Box("free", Bytes().Fill(9));
  Reading reading(payload);
  EXPECT_TRUE(reading.succeeded);
  EXPECT_EQ(reading.reader.GetPos(), static_cast<long long>(payload.size()));
}

TEST(BoxCMOV, ChildrenThatOverrunAreSteppedBackOver) {
  const Bytes payload = Announcing(500, fixture::Deflated(Plain()));
  for (const long long size : {0, 20}) {
    Reading reading(payload, size);
    EXPECT_TRUE(reading.succeeded);
    EXPECT_EQ(reading.reader.GetPos(), size);
  }
}

TEST(BoxCMOV, EveryTruncationOfAFileEndsInsideIt) {
  const Bytes whole = Announcing(500, fixture::Deflated(Plain()));
  for (std::size_t n = 0; n < whole.size(); ++n) {
    const TempFile file(Bytes(whole).Cut(n));
    Mp4StreamReader reader;
    ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
    EXPECT_FALSE(BoxCMOV().ReadData(&reader, static_cast<long long>(whole.size()), nullptr)) << n;
  }
}

TEST(BoxCMOV, OpeningBoundsTheInflatedBytes) {
  const Bytes payload = Announcing(500, fixture::Deflated(Plain()));
  const auto size = static_cast<long long>(payload.size());
  mp4::ScanControl scan(size);
  const long long allowance = mp4::limits::kInflatedTotal + 16 * size;
  ASSERT_TRUE(scan.TakeInflated(allowance - 500 - 64 * 1024));
  EXPECT_TRUE(Reading(payload, size, &scan).succeeded);
  EXPECT_FALSE(Reading(payload, size, &scan).succeeded);
}

TEST(BoxCMOV, OpeningBoundsTheBytesRead) {
  const Bytes payload = Announcing(500, fixture::Deflated(Plain()));
  const auto size = static_cast<long long>(payload.size());
  mp4::ScanControl scan(size);
  ASSERT_TRUE(scan.TakeBytes(mp4::limits::kSpareBytesRead + 4 * size - (size - 24)));
  EXPECT_TRUE(Reading(payload, size, &scan).succeeded);
  Reading refused(payload, size, &scan);
  EXPECT_FALSE(refused.succeeded);
  EXPECT_EQ(refused.reader.GetPos(), size);
}
