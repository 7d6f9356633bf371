#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "io/BulkRead.h"
#include "io/ScanControl.h"
#include "tests/ReaderFixtures.h"

namespace {

/// Passes over `n` bytes one at a time: the position every bulk read must leave.
long long PositionAfterSingleReads(mmStreamReader& reader, long long n) {
  for (long long i = 0; i < n; ++i) reader.GetByte();
  return reader.GetPos();
}

}  // namespace

TEST(BulkRead, RemainingCountsToTheEnd) {
  OnBothReaders(CountingFromOne(10), [](mmStreamReader& reader) {
    EXPECT_EQ(mp4::Remaining(&reader), 10);
    reader.SetPos(7);
    EXPECT_EQ(mp4::Remaining(&reader), 3);
    reader.SetPos(10);
    EXPECT_EQ(mp4::Remaining(&reader), 0);
    reader.SetPos(11);
    EXPECT_EQ(mp4::Remaining(&reader), 0);
  });
}

TEST(BulkRead, RemainingTakesTheSizeFromTheAccount) {
  const Bytes bytes = CountingFromOne(10);
  mmBufReader reader(bytes.data(), bytes.size());
  mp4::ScanControl scan(8);
  reader.AttachScan(&scan);
  reader.SetPos(3);
  EXPECT_EQ(mp4::Remaining(&reader), 5);
}

TEST(BulkRead, PassingStopsAtTheEndOfAFileAndAdvancesInMemory) {
  const Bytes bytes = CountingFromOne(10);
  FileReader file(bytes);
  mp4::PassAsRead(&file.reader, 25);
  EXPECT_EQ(file.reader.GetPos(), 10);
  file.reader.SetPos(30);
  mp4::PassAsRead(&file.reader, 25);
  EXPECT_EQ(file.reader.GetPos(), 30);
  mmBufReader memory(bytes.data(), bytes.size());
  mp4::PassAsRead(&memory, 25);
  EXPECT_EQ(memory.GetPos(), 25);
}

TEST(BulkRead, PassingNothingOrLessDoesNotMove) {
  OnBothReaders(CountingFromOne(10), [](mmStreamReader& reader) {
    reader.SetPos(4);
    mp4::PassAsRead(&reader, 0);
    mp4::PassAsRead(&reader, -3);
    EXPECT_EQ(reader.GetPos(), 4);
  });
}

TEST(BulkRead, EveryReadLeavesThePositionOfSingleReads) {
  std::mt19937 random(11);
  OnBothReaders(CountingFromOne(120), [&](mmStreamReader& reader) {
    for (int step = 0; step < 1500; ++step) {
      const long long at = random() % 200;
      const long long n = random() % 250;
      reader.SetPos(at);
      const long long expected = PositionAfterSingleReads(reader, n);

      reader.SetPos(at);
      mp4::PassAsRead(&reader, n);
      ASSERT_EQ(reader.GetPos(), expected) << at << " " << n;

      unsigned char some[40];
      reader.SetPos(at);
      mp4::ReadBytes(&reader, some, random() % 41, n);
      ASSERT_EQ(reader.GetPos(), expected) << at << " " << n;

      std::unique_ptr<mmBuffer> entries;
      reader.SetPos(at);
      ASSERT_TRUE(mp4::ReadTable(&reader, n, 8, &entries));
      ASSERT_EQ(reader.GetPos(), expected) << at << " " << n;

      std::size_t held = 0;
      reader.SetPos(at);
      ASSERT_NE(mp4::ReadArray(&reader, n, &held), nullptr);
      ASSERT_EQ(reader.GetPos(), expected) << at << " " << n;
    }
  });
}

TEST(BulkRead, BytesAreReadUpToTheCapacity) {
  OnBothReaders(CountingFromOne(10), [](mmStreamReader& reader) {
    unsigned char bytes[5] = {9, 9, 9, 9, 9};
    EXPECT_EQ(mp4::ReadBytes(&reader, bytes, 4, 7), 4u);
    const unsigned char kExpected[5] = {1, 2, 3, 4, 9};
    EXPECT_EQ(std::memcmp(bytes, kExpected, 5), 0);
    EXPECT_EQ(reader.GetPos(), 7);
  });
}

TEST(BulkRead, ZerosFillWhatTheSourceDoesNotHold) {
  OnBothReaders(CountingFromOne(3), [](mmStreamReader& reader) {
    unsigned char bytes[6] = {9, 9, 9, 9, 9, 9};
    EXPECT_EQ(mp4::ReadBytes(&reader, bytes, 6, 5), 3u);
    const unsigned char kExpected[6] = {1, 2, 3, 0, 0, 9};
    EXPECT_EQ(std::memcmp(bytes, kExpected, 6), 0);
  });
}

TEST(BulkRead, NegativeLengthReadsNothing) {
  OnBothReaders(CountingFromOne(3), [](mmStreamReader& reader) {
    unsigned char byte = 9;
    reader.SetPos(2);
    EXPECT_EQ(mp4::ReadBytes(&reader, &byte, 1, -5), 0u);
    EXPECT_EQ(byte, 9);
    EXPECT_EQ(reader.GetPos(), 2);
  });
}

TEST(BulkRead, TableHoldsTheWholeEntriesThatExist) {
  OnBothReaders(CountingFromOne(30), [](mmStreamReader& reader) {
    std::unique_ptr<mmBuffer> entries;
    reader.SetPos(10);
    ASSERT_TRUE(mp4::ReadTable(&reader, 100, 8, &entries));
    EXPECT_EQ(entries->used, 16u);
    EXPECT_EQ(entries->Be32At(0), 0x0B0C0D0Eu);
    EXPECT_EQ(entries->Be32At(12), 0x1718191Au);
    EXPECT_EQ(entries->Be32At(16), 0u);
  });
}

TEST(BulkRead, TableTakesNoMoreMemoryThanThereAreBytes) {
  OnBothReaders(CountingFromOne(64), [](mmStreamReader& reader) {
    std::unique_ptr<mmBuffer> entries;
    ASSERT_TRUE(mp4::ReadTable(&reader, 1LL << 40, 4, &entries));
    EXPECT_EQ(entries->used, 64u);
    EXPECT_EQ(entries->capacity, 64u);
  });
}

TEST(BulkRead, TableShorterThanItsHeaderStepsBack) {
  OnBothReaders(CountingFromOne(30), [](mmStreamReader& reader) {
    std::unique_ptr<mmBuffer> entries;
    reader.SetPos(20);
    ASSERT_TRUE(mp4::ReadTable(&reader, -5, 8, &entries));
    EXPECT_EQ(entries->used, 0u);
    EXPECT_EQ(reader.GetPos(), 15);
  });
}

TEST(BulkRead, TableReplacesTheEarlierOne) {
  OnBothReaders(CountingFromOne(30), [](mmStreamReader& reader) {
    auto entries = std::make_unique<mmBuffer>();
    ASSERT_TRUE(entries->AppendBe32(0xFFFFFFFF));
    ASSERT_TRUE(mp4::ReadTable(&reader, 4, 4, &entries));
    EXPECT_EQ(entries->used, 4u);
    EXPECT_EQ(entries->Be32At(0), 0x01020304u);
  });
}

TEST(BulkRead, TableIsPassedOverWhileAnOpeningOnlyJudges) {
  FileReader file(CountingFromOne(30));
  mp4::ScanControl scan(30);
  scan.tablesUnread = true;
  file.reader.AttachScan(&scan);
  std::unique_ptr<mmBuffer> entries;
  ASSERT_TRUE(mp4::ReadTable(&file.reader, 16, 8, &entries));
  EXPECT_EQ(entries->used, 0u);
  EXPECT_EQ(file.reader.GetPos(), 16);
}

TEST(BulkRead, RefusedAccountFailsButPassesOver) {
  FileReader file(CountingFromOne(30));
  mp4::ScanControl scan(30);
  EXPECT_FALSE(scan.TakeBytes(1LL << 60));
  file.reader.AttachScan(&scan);
  std::unique_ptr<mmBuffer> entries;
  EXPECT_FALSE(mp4::ReadTable(&file.reader, 16, 8, &entries));
  EXPECT_EQ(entries, nullptr);
  EXPECT_EQ(file.reader.GetPos(), 16);
  std::size_t held = 5;
  EXPECT_EQ(mp4::ReadArray(&file.reader, 10, &held), nullptr);
  EXPECT_EQ(held, 0u);
  EXPECT_EQ(file.reader.GetPos(), 26);
}

TEST(BulkRead, TableChargesItsBytesAndThreeTimesTheirMemory) {
  const Bytes bytes = CountingFromOne(100);
  mmBufReader reader(bytes.data(), bytes.size());
  mp4::ScanControl scan(100);
  reader.AttachScan(&scan);
  std::unique_ptr<mmBuffer> entries;
  ASSERT_TRUE(mp4::ReadTable(&reader, 100, 4, &entries));
  // 100 * 4 + 16 MiB bytes and 100 * 6 + 64 MiB memory at first.
  EXPECT_TRUE(scan.TakeBytes(16 * 1024 * 1024 + 300));
  EXPECT_FALSE(scan.TakeBytes(1));
  EXPECT_TRUE(scan.TakeMemory(64 * 1024 * 1024 + 300));
  EXPECT_FALSE(scan.TakeMemory(1));
}

TEST(BulkRead, ArrayIsRoundedUpWithZerosBehindTheContent) {
  OnBothReaders(CountingFromOne(40), [](mmStreamReader& reader) {
    for (const std::size_t n : {0u, 1u, 15u, 16u, 17u}) {
      reader.SetPos(0);
      std::size_t held = 99;
      const auto bytes = mp4::ReadArray(&reader, static_cast<long long>(n), &held);
      ASSERT_NE(bytes, nullptr);
      EXPECT_EQ(held, n);
      const std::size_t allocated = (n + 16) / 16 * 16;
      for (std::size_t i = 0; i < allocated; ++i) {
        EXPECT_EQ(bytes[i], i < n ? i + 1 : 0) << n;
      }
    }
  });
}

TEST(BulkRead, ArrayBeyondTheSourceHoldsWhatExists) {
  OnBothReaders(CountingFromOne(5), [](mmStreamReader& reader) {
    std::size_t held = 0;
    reader.SetPos(2);
    const auto bytes = mp4::ReadArray(&reader, 1000000000000LL, &held);
    ASSERT_NE(bytes, nullptr);
    EXPECT_EQ(held, 3u);
    EXPECT_EQ(bytes[2], 5);
    EXPECT_EQ(bytes[3], 0);
  });
}

TEST(BulkRead, NegativeArrayIsEmptyAndDoesNotMove) {
  OnBothReaders(CountingFromOne(5), [](mmStreamReader& reader) {
    std::size_t held = 9;
    reader.SetPos(2);
    EXPECT_NE(mp4::ReadArray(&reader, -4, &held), nullptr);
    EXPECT_EQ(held, 0u);
    EXPECT_EQ(reader.GetPos(), 2);
  });
}

TEST(BulkRead, ASmallTableHasRoomFor32Bytes) {
  OnBothReaders(CountingFromOne(64), [](mmStreamReader& reader) {
    const struct {
      long long bytes;
      std::size_t capacity;
    } cases[] = {{-8, 32}, {0, 32}, {1, 32}, {31, 32}, {32, 32}, {33, 33}};
    for (const auto& c : cases) {
      std::unique_ptr<mmBuffer> entries;
      reader.SetPos(8);
      ASSERT_TRUE(mp4::ReadTable(&reader, c.bytes, 4, &entries));
      EXPECT_EQ(entries->capacity, c.capacity) << c.bytes;
    }
  });
}
