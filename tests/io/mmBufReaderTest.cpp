#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "io/mmBufReader.h"
#include "tests/ReaderFixtures.h"

TEST(mmBufReader, HoldsItsOwnCopyOfTheBytes) {
  unsigned char bytes[3] = {1, 2, 3};
  mmBufReader reader(bytes, 3);
  bytes[0] = 9;
  EXPECT_EQ(reader.capacity, 3);
  EXPECT_EQ(reader.size, 3);
  EXPECT_EQ(reader.pos, 0);
  EXPECT_EQ(reader.GetByte(), 1);
}

TEST(mmBufReader, EmptyReaderIsAtItsEnd) {
  mmBufReader empty;
  EXPECT_EQ(empty.data, nullptr);
  EXPECT_EQ(empty.capacity, 0);
  EXPECT_EQ(empty.GetSize(), 0);
  EXPECT_TRUE(empty.IsEnd());
  EXPECT_EQ(empty.GetBe32(), 0u);
  EXPECT_EQ(empty.GetPos(), 4);
}

TEST(mmBufReader, NullBytesGiveAnEmptyReader) {
  mmBufReader copied(nullptr, 5);
  EXPECT_EQ(copied.GetSize(), 0);
  EXPECT_EQ(copied.GetByte(), 0);
  mmBufReader taken(std::unique_ptr<unsigned char[]>(), 5);
  EXPECT_EQ(taken.GetSize(), 0);
  EXPECT_EQ(taken.GetByte(), 0);
}

TEST(mmBufReader, TakesOverAnArray) {
  auto bytes = std::make_unique<unsigned char[]>(2);
  bytes[1] = 7;
  mmBufReader reader(std::move(bytes), 2);
  EXPECT_EQ(reader.GetSize(), 2);
  EXPECT_EQ(reader.GetBe16(), 7u);
}

TEST(mmBufReader, ComposedGettersReadItsBytes) {
  const Bytes bytes = CountingFromOne(34);
  mmBufReader reader(bytes.data(), bytes.size());
  ExpectComposedGetters(reader);
  EXPECT_EQ(reader.GetPos(), 34);
}

TEST(mmBufReader, OverridingGetByteChangesEveryComposedGetter) {
  CountingReader<mmBufReader> reader;
  ExpectComposedGetters(reader);
}

TEST(mmBufReader, BoxTypeHoldsItsFirstCharacterInTheLowestByte) {
  mmBufReader reader("moov", 4);
  EXPECT_EQ(reader.GetLe32(), 0x766F6F6Du);
}

TEST(mmBufReader, SeeksReturnTheNewPosition) {
  const Bytes bytes = CountingFromOne(10);
  mmBufReader reader(bytes.data(), bytes.size());
  EXPECT_EQ(reader.SetPos(6), 6);
  EXPECT_EQ(reader.Skip(3), 9);
  EXPECT_EQ(reader.Skip(-5), 4);
  EXPECT_EQ(reader.GetByte(), 5);
  EXPECT_EQ(reader.Skip(100), 105);
  EXPECT_EQ(reader.SetPos(-3), -3);
  EXPECT_EQ(reader.GetPos(), -3);
}

TEST(mmBufReader, EndIsReachedAtTheSizeAndStays) {
  const Bytes bytes = CountingFromOne(3);
  mmBufReader reader(bytes.data(), bytes.size());
  reader.Skip(2);
  EXPECT_FALSE(reader.IsEnd());
  reader.Skip(1);
  EXPECT_TRUE(reader.IsEnd());
  reader.Skip(50);
  EXPECT_TRUE(reader.IsEnd());
  reader.SetPos(-1);
  EXPECT_FALSE(reader.IsEnd());
}

TEST(mmBufReader, BytesPastTheSizeAreZeroAndAdvance) {
  mmBufReader reader("\xAA\xBB", 2);
  EXPECT_EQ(reader.GetBe32(), 0xAABB0000u);
  EXPECT_EQ(reader.GetPos(), 4);
  EXPECT_EQ(reader.GetLe64(), 0u);
  EXPECT_EQ(reader.GetPos(), 12);
}

TEST(mmBufReader, BytesBeforeTheStartAreZeroAndAdvance) {
  mmBufReader reader("\xAA\xBB", 2);
  reader.SetPos(-2);
  EXPECT_EQ(reader.GetBe32(), 0x0000AABBu);
  EXPECT_EQ(reader.GetPos(), 2);
}

TEST(mmBufReader, DataAlwaysDeliversAllBytes) {
  mmBufReader reader("\xAA\xBB", 2);
  unsigned char bytes[6];
  std::memset(bytes, 0x5A, sizeof bytes);
  EXPECT_EQ(reader.GetData(bytes, 5), 5u);
  EXPECT_EQ(reader.GetPos(), 5);
  const unsigned char kPastEnd[6] = {0xAA, 0xBB, 0, 0, 0, 0x5A};
  EXPECT_EQ(std::memcmp(bytes, kPastEnd, 6), 0);

  reader.SetPos(-2);
  std::memset(bytes, 0x5A, sizeof bytes);
  EXPECT_EQ(reader.GetData(bytes, 5), 5u);
  EXPECT_EQ(reader.GetPos(), 3);
  const unsigned char kBothSides[6] = {0, 0, 0xAA, 0xBB, 0, 0x5A};
  EXPECT_EQ(std::memcmp(bytes, kBothSides, 6), 0);

  reader.SetPos(-9);
  std::memset(bytes, 0x5A, sizeof bytes);
  EXPECT_EQ(reader.GetData(bytes, 5), 5u);
  EXPECT_EQ(reader.GetPos(), -4);
  const unsigned char kBefore[6] = {0, 0, 0, 0, 0, 0x5A};
  EXPECT_EQ(std::memcmp(bytes, kBefore, 6), 0);

  EXPECT_EQ(reader.GetData(nullptr, 0), 0u);
  EXPECT_EQ(reader.GetPos(), -4);
}

TEST(mmBufReader, PositionsAreTruncatedTo32BitsAndSignExtended) {
  mmBufReader reader("\x01\x02", 2);
  EXPECT_EQ(reader.SetPos(0x100000001ll), 1);
  EXPECT_EQ(reader.GetByte(), 2);
  EXPECT_EQ(reader.SetPos(0x80000000ll), -0x80000000ll);
  EXPECT_EQ(reader.GetPos(), -0x80000000ll);
  reader.SetPos(1);
  EXPECT_EQ(reader.Skip(0x100000000ll), 1);
  EXPECT_EQ(reader.Skip(0xFFFFFFFFll), 0);
  EXPECT_EQ(reader.Skip(LLONG_MAX), -1);
  EXPECT_EQ(reader.Skip(LLONG_MIN), -1);
}

TEST(mmBufReader, PositionWrapsBehindTheLargest) {
  mmBufReader reader("\x01\x02", 2);
  reader.SetPos(INT_MAX);
  EXPECT_EQ(reader.GetByte(), 0);
  EXPECT_EQ(reader.GetPos(), INT_MIN);
  reader.SetPos(INT_MAX);
  unsigned char bytes[2] = {9, 9};
  EXPECT_EQ(reader.GetData(bytes, 2), 2u);
  EXPECT_EQ(bytes[0] | bytes[1], 0);
  EXPECT_EQ(reader.GetPos(), -0x7FFFFFFFll);
}

TEST(mmBufReader, DataEqualsSingleBytesWhereverItStands) {
  const Bytes bytes = CountingFromOne(200);
  mmBufReader bulk(bytes.data(), bytes.size());
  mmBufReader single(bytes.data(), bytes.size());
  std::mt19937 random(7);
  for (int step = 0; step < 2000; ++step) {
    const long long at = static_cast<long long>(random() % 600) - 200;
    const unsigned n = random() % 300;
    bulk.SetPos(at);
    single.SetPos(at);
    std::vector<unsigned char> delivered(n + 1, 0x5A), expected(n + 1, 0x5A);
    ASSERT_EQ(bulk.GetData(delivered.data(), n), n);
    for (unsigned i = 0; i < n; ++i) expected[i] = single.GetByte();
    ASSERT_EQ(delivered, expected);
    ASSERT_EQ(bulk.GetPos(), single.GetPos());
  }
}
