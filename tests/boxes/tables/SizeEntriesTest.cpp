#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <vector>

#include "boxes/tables/SizeEntries.h"
#include "io/mmBufReader.h"
#include "tests/Bytes.h"

namespace {

mp4::SizeEntries Read(const Bytes& rows) {
  mmBufReader reader(rows.data(), rows.size());
  mp4::SizeEntries table;
  EXPECT_TRUE(table.Read(&reader, static_cast<long long>(rows.size())));
  return table;
}

TEST(SizeEntries, NothingIsHeldAtFirst) {
  mp4::SizeEntries table;
  EXPECT_TRUE(table.IsEmpty());
  EXPECT_EQ(table.SizeOf(0), 0u);
  EXPECT_EQ(table.Sum(0, INT_MAX), 0u);
}

TEST(SizeEntries, ReadsARowASample) {
  mp4::SizeEntries table = Read(Bytes().Be32(5).Be32(0xFFFFFFFF).Be32(7));
  EXPECT_FALSE(table.IsEmpty());
  EXPECT_EQ(table.Held(), 3);
  EXPECT_EQ(table.SizeOf(0), 5u);
  EXPECT_EQ(table.SizeOf(1), 0xFFFFFFFFu);
  EXPECT_EQ(table.SizeOf(2), 7u);
  EXPECT_EQ(table.SizeOf(3), 0u);
  EXPECT_EQ(table.SizeOf(-1), 0u);
  EXPECT_EQ(table.Sum(0, 3), 0xFFFFFFFFu + std::uint64_t{12});
}

TEST(SizeEntries, RowThatIsCutShortIsNotHeld) {
  EXPECT_EQ(Read(Bytes().Be32(5).Be16(1)).Held(), 1);
}

TEST(SizeEntries, SamplesBeforeTheRowsShareASize) {
  mp4::SizeEntries table;
  ASSERT_TRUE(table.StartWith(10, 3));
  EXPECT_FALSE(table.IsEmpty());
  ASSERT_TRUE(table.MakeRoom(2));
  table.Append(8, 2);
  EXPECT_EQ(table.Held(), 2);
  EXPECT_EQ(table.SizeOf(9), 3u);
  EXPECT_EQ(table.SizeOf(10), 8u);
  EXPECT_EQ(table.SizeOf(12), 0u);
  EXPECT_EQ(table.Sum(0, 12), 46u);
  EXPECT_EQ(table.Sum(9, 11), 11u);
  EXPECT_EQ(table.Sum(-5, 1), 3u);
  EXPECT_EQ(table.Sum(11, 11), 0u);
  EXPECT_EQ(table.Sum(12, 11), 0u);
}

TEST(SizeEntries, StartingAnewDropsTheRows) {
  mp4::SizeEntries table = Read(Bytes().Be32(5).Be32(6));
  ASSERT_TRUE(table.StartWith(1, 9));
  EXPECT_EQ(table.Held(), 0);
  EXPECT_EQ(table.SizeOf(0), 9u);
  EXPECT_EQ(table.SizeOf(1), 0u);
  table.Clear();
  EXPECT_TRUE(table.IsEmpty());
}

TEST(SizeEntries, SumsOfManyRowsFollowAppends) {
  mp4::SizeEntries table;
  ASSERT_TRUE(table.StartWith(0, 0));
  EXPECT_TRUE(table.IsEmpty());
  std::vector<std::uint32_t> sizes;
  for (std::uint32_t i = 0; i < 1000; ++i) sizes.push_back(i);
  for (int round = 1; round <= 3; ++round) {
    ASSERT_TRUE(table.MakeRoom(sizes.size()));
    table.Append(sizes.data(), sizes.size());
    EXPECT_EQ(table.Sum(0, INT_MAX), static_cast<std::uint64_t>(round) * 499500);
    EXPECT_EQ(table.Sum(129, 999), 490245u);
  }
}

}  // namespace
