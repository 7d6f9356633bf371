#include <gtest/gtest.h>
#include <zlib.h>

#include <vector>

#include "iso/Inflate.h"

namespace {

using Buffer = std::vector<unsigned char>;

/// Bytes that hardly compress, so that their stream has several pieces.
Buffer Noise(std::size_t n) {
  Buffer bytes(n);
  std::uint32_t state = 1;
  for (unsigned char& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<unsigned char>(state >> 24);
  }
  return bytes;
}

Buffer Deflated(const Buffer& plain, int windowBits) {
  z_stream z{};
  EXPECT_EQ(deflateInit2(&z, 6, Z_DEFLATED, windowBits, 8, Z_DEFAULT_STRATEGY), Z_OK);
  Buffer packed(deflateBound(&z, plain.size()));
  z.next_in = const_cast<unsigned char*>(plain.data());
  z.avail_in = static_cast<uInt>(plain.size());
  z.next_out = packed.data();
  z.avail_out = static_cast<uInt>(packed.size());
  EXPECT_EQ(deflate(&z, Z_FINISH), Z_STREAM_END);
  packed.resize(z.total_out);
  deflateEnd(&z);
  return packed;
}

struct Result {
  bool whole;
  Buffer plain;
};

Result Inflate(const Buffer& packed, std::uint64_t most) {
  Result result{false, {1, 2, 3}};
  const auto view = [&](std::uint64_t at, std::size_t n) {
    return at + n <= packed.size() ? packed.data() + at : nullptr;
  };
  result.whole = mp4::InflateBytes(view, packed.size(), most, &result.plain);
  return result;
}

constexpr std::uint64_t kPlenty = 1 << 24;

}  // namespace

TEST(InflateBytes, ReadsZlibAndBareDeflate) {
  for (const std::size_t n : {0u, 1u, 1000u, 16384u, 16385u, 100000u}) {
    const Buffer plain = Noise(n);
    for (const int windowBits : {15, -15}) {
      const Result result = Inflate(Deflated(plain, windowBits), kPlenty);
      EXPECT_TRUE(result.whole) << n << " " << windowBits;
      EXPECT_EQ(result.plain, plain) << n << " " << windowBits;
    }
  }
}

TEST(InflateBytes, KeepsWhatACutStreamHolds) {
  const Buffer plain = Noise(100000);
  Buffer packed = Deflated(plain, 15);
  packed.resize(packed.size() / 2);
  const Result result = Inflate(packed, kPlenty);
  EXPECT_FALSE(result.whole);
  ASSERT_GT(result.plain.size(), 40000u);
  EXPECT_TRUE(std::equal(result.plain.begin(), result.plain.end(), plain.begin()));
}

TEST(InflateBytes, StopsAtTheMostItMayHold) {
  const Buffer plain = Noise(50000);
  const Buffer packed = Deflated(plain, 15);
  EXPECT_TRUE(Inflate(packed, 50000).whole);
  const Result cut = Inflate(packed, 49999);
  EXPECT_FALSE(cut.whole);
  EXPECT_EQ(cut.plain, Buffer(plain.begin(), plain.end() - 1));
  EXPECT_EQ(Inflate(packed, 0).plain, Buffer{});
}

TEST(InflateBytes, BytesBehindTheStreamAreIgnored) {
  Buffer packed = Deflated(Noise(1000), 15);
  packed.insert(packed.end(), 50, 0xEE);
  EXPECT_TRUE(Inflate(packed, kPlenty).whole);
}

TEST(InflateBytes, NothingInflatesFromBrokenOrMissingBytes) {
  EXPECT_FALSE(Inflate({}, kPlenty).whole);
  EXPECT_FALSE(Inflate({0x78}, kPlenty).whole);
  EXPECT_EQ(Inflate({0x78}, kPlenty).plain, Buffer{});
  EXPECT_FALSE(Inflate({0x78, 0x9C, 0xFF, 0xFF, 0xFF}, kPlenty).whole);
  Buffer plain;
  EXPECT_FALSE(
      mp4::InflateBytes([](std::uint64_t, std::size_t) { return nullptr; }, 100, 100, &plain));
}
