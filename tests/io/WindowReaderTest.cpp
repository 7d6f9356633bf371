#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "io/ScanControl.h"
#include "io/WindowReader.h"

namespace {

using Wanted = std::vector<std::pair<long long, std::size_t>>;

/// A source of as many bytes as it says that notes what is read of it.
class Noting : public mp4::WindowReader {
 public:
  explicit Noting(long long size = 1 << 20) : size(size) {}
  long long GetSize() override { return size; }
  using WindowReader::Restart;

  Wanted wanted;
  long long size;
  bool open = true;

 private:
  bool IsOpen() const override { return open; }
  std::size_t ReadAt(long long offset, void* dst, std::size_t n) override {
    wanted.emplace_back(offset, n);
    const long long there = std::clamp<long long>(size - offset, 0, static_cast<long long>(n));
    auto* bytes = static_cast<unsigned char*>(dst);
    for (long long i = 0; i < there; ++i) bytes[i] = static_cast<unsigned char>((offset + i) / 3);
    return static_cast<std::size_t>(there);
  }
};

/// Goes on by `n` bytes and reads one.
void Over(Noting* reader, long long n) {
  EXPECT_EQ(reader->Skip(n), 0);
  const long long at = reader->GetPos();
  EXPECT_EQ(reader->GetByte(), static_cast<unsigned char>(at / 3));
}

}  // namespace

TEST(WindowReader, ReadsMoreAtATimeWhileItGoesForward) {
  Noting reader;
  for (int i = 0; i < 50000; ++i) {
    ASSERT_EQ(reader.GetByte(), static_cast<unsigned char>(i / 3)) << i;
  }
  EXPECT_EQ(reader.wanted, (Wanted{{0, 1024},
                                   {1024, 2048},
                                   {3072, 4096},
                                   {7168, 8192},
                                   {15360, 16384},
                                   {31744, 16384},
                                   {48128, 16384}}));
}

TEST(WindowReader, ReadsOverShortGapsInSmallerSteps) {
  Noting reader;
  reader.GetByte();
  Over(&reader, 1023 + 1);     // a gap of one byte behind the window
  Over(&reader, 2047 + 2047);  // one less than the step
  Over(&reader, 4095 + 4095);
  EXPECT_EQ(reader.wanted, (Wanted{{0, 1024}, {1025, 2048}, {5120, 4096}, {13311, 4096}}));
  // What forward reading has gained is not lost again.
  unsigned char bytes[16383];
  for (int i = 0; i < 2; ++i) EXPECT_EQ(reader.GetData(bytes, sizeof bytes), sizeof bytes);
  const Wanted::value_type last = reader.wanted.back();
  EXPECT_EQ(last.second, 16384u);
  reader.SetPos(last.first + 16384 + 100);
  reader.GetByte();
  EXPECT_EQ(reader.wanted.back(), (Wanted::value_type{last.first + 16484, 16384}));
}

TEST(WindowReader, StartsSmallAfterAJump) {
  Noting reader;
  for (int i = 0; i < 1025; ++i) reader.GetByte();
  Over(&reader, 2047 + 2048);  // a gap of the whole step
  EXPECT_EQ(reader.wanted.back(), (Wanted::value_type{5120, 1024}));
  for (int i = 0; i < 1024; ++i) reader.GetByte();
  EXPECT_EQ(reader.wanted.back(), (Wanted::value_type{6144, 2048}));
  reader.SetPos(6143);  // back
  reader.GetByte();
  EXPECT_EQ(reader.wanted.back(), (Wanted::value_type{6143, 1024}));
}

TEST(WindowReader, LargeReadsGoStraightToTheirDestination) {
  Noting reader;
  std::vector<unsigned char> bytes(20000);
  EXPECT_EQ(reader.GetData(bytes.data(), 16384), 16384u);
  EXPECT_EQ(reader.wanted, (Wanted{{0, 16384}}));
  EXPECT_EQ(bytes[300], 100);
  EXPECT_EQ(reader.GetData(bytes.data(), 16383), 16383u);
  EXPECT_EQ(reader.wanted[1], (Wanted::value_type{16384, 1024}));
  // What the window holds comes from it, the rest does not.
  const std::size_t before = reader.wanted.size();
  EXPECT_EQ(reader.GetData(bytes.data(), 20000), 20000u);
  EXPECT_EQ(reader.wanted.size(), before + 1);
  EXPECT_EQ(bytes[19999], static_cast<unsigned char>((16384 + 16383 + 19999) / 3));
  EXPECT_EQ(reader.GetPos(), 16384 + 16383 + 20000);
}

TEST(WindowReader, ReadsStopAtTheEndAndSeeksDoNot) {
  Noting reader(10);
  unsigned char bytes[20000] = {};
  EXPECT_EQ(reader.GetData(bytes, 4), 4u);
  EXPECT_FALSE(reader.IsEnd());
  EXPECT_EQ(reader.GetData(bytes, 20000), 6u);
  EXPECT_TRUE(reader.IsEnd());
  EXPECT_EQ(reader.GetByte(), 0);
  EXPECT_EQ(reader.GetPos(), 10);
  EXPECT_EQ(reader.Skip(1), 0);
  EXPECT_FALSE(reader.IsEnd());
  EXPECT_EQ(reader.GetPos(), 11);
}

TEST(WindowReader, SeeksBeforeTheStartMoveNothing) {
  Noting reader;
  EXPECT_EQ(reader.SetPos(5), 0);
  EXPECT_EQ(reader.SetPos(-1), -1);
  EXPECT_EQ(reader.Skip(-6), -1);
  EXPECT_EQ(reader.GetPos(), 5);
  EXPECT_EQ(reader.Skip(-5), 0);
  EXPECT_EQ(reader.GetPos(), 0);
  EXPECT_EQ(reader.SetPos(0x7FFFFFFFFFFFFFFF), 0);
  EXPECT_EQ(reader.Skip(1), -1);
  EXPECT_EQ(reader.Skip(0), 0);
}

TEST(WindowReader, AnOpeningAsksForNothingBehindItsSource) {
  Noting reader(10);
  mp4::ScanControl scan(10);
  reader.AttachScan(&scan);
  EXPECT_EQ(reader.Scan(), &scan);
  unsigned char bytes[20000];
  reader.SetPos(10);
  EXPECT_EQ(reader.GetByte(), 0);
  EXPECT_EQ(reader.GetData(bytes, 20000), 0u);
  EXPECT_TRUE(reader.wanted.empty());
  reader.SetPos(9);
  EXPECT_EQ(reader.GetByte(), 3);
}

TEST(WindowReader, NothingOpenIsHarmless) {
  Noting reader;
  reader.open = false;
  unsigned char bytes[20000];
  EXPECT_EQ(reader.GetByte(), 0);
  EXPECT_EQ(reader.GetData(bytes, 20000), 0u);
  EXPECT_EQ(reader.SetPos(0), -1);
  EXPECT_EQ(reader.Skip(0), -1);
  EXPECT_EQ(reader.GetPos(), 0);
  EXPECT_TRUE(reader.wanted.empty());
}

TEST(WindowReader, RestartForgetsPositionAndWindow) {
  Noting reader;
  for (int i = 0; i < 1025; ++i) reader.GetByte();
  reader.Restart();
  EXPECT_EQ(reader.GetPos(), 0);
  reader.GetByte();
  EXPECT_EQ(reader.wanted.back(), (Wanted::value_type{0, 1024}));
}
