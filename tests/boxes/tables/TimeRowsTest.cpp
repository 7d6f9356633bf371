#include <gtest/gtest.h>

#include <climits>
#include <cstdint>

#include "boxes/tables/TimeRows.h"
#include "io/mmBufReader.h"
#include "tests/Bytes.h"

namespace {

mp4::TimeRows Read(const Bytes& rows, std::uint32_t declared) {
  mmBufReader reader(rows.data(), rows.size());
  mp4::TimeRows table;
  EXPECT_TRUE(table.Read(&reader, static_cast<long long>(rows.size()), declared));
  return table;
}

TEST(TimeRows, NothingIsHeldAtFirst) {
  mp4::TimeRows table;
  EXPECT_EQ(table.Count(), 0);
  EXPECT_EQ(table.Bytes(), nullptr);
  EXPECT_EQ(table.DurationOf(0), 0);
  EXPECT_EQ(table.TimeOf(0), 0);
  EXPECT_EQ(table.SampleAt(100), 0);
}

TEST(TimeRows, HoldsNoMoreThanDeclaredAndNoMoreThanThere) {
  const Bytes rows = Bytes().Be32(2).Be32(10).Be32(3).Be32(20);
  EXPECT_EQ(Read(rows, 1).Count(), 1);
  EXPECT_EQ(Read(rows, 2).Count(), 2);
  EXPECT_EQ(Read(rows, 3).Count(), 2);
  EXPECT_EQ(Read(rows, 0xFFFFFFFF).Count(), -1);
}

// Two samples of 10 units, three of 20: decode times 0 10 20 40 60, 80 in all.
TEST(TimeRows, AnswersInWholeNumbersOfTheMedia) {
  mp4::TimeRows table = Read(Bytes().Be32(2).Be32(10).Be32(3).Be32(20), 2);
  const std::int64_t times[] = {0, 10, 20, 40, 60, 80, 80};
  for (int i = 0; i < 7; ++i) EXPECT_EQ(table.TimeOf(i), times[i]) << i;
  EXPECT_EQ(table.DurationOf(1), 10);
  EXPECT_EQ(table.DurationOf(2), 20);
  EXPECT_EQ(table.DurationOf(5), 0);
  EXPECT_EQ(table.SampleAt(9), 0);
  EXPECT_EQ(table.SampleAt(10), 1);
  EXPECT_EQ(table.SampleAt(79), 4);
  EXPECT_EQ(table.SampleAt(80), 5);
}

TEST(TimeRows, DurationsAreWholeAndSigned) {
  mp4::TimeRows table = Read(Bytes().Be32(1).Be32(3003).Be32(1).Be32(0xFFFFFFFE), 2);
  EXPECT_EQ(table.DurationOf(0), 3003);
  EXPECT_EQ(table.DurationOf(1), -2);
  EXPECT_EQ(table.TimeOf(2), 3001);
}

TEST(TimeRows, EqualDurationsShareARow) {
  mp4::TimeRows table;
  EXPECT_TRUE(table.Append(5, 3));
  EXPECT_TRUE(table.Append(5, 1));
  EXPECT_EQ(table.Count(), 1);
  EXPECT_TRUE(table.Append(6, 1));
  EXPECT_EQ(table.Count(), 2);
  EXPECT_TRUE(table.Append(6, 0));
  EXPECT_EQ(table.TimeOf(5), 26);
}

TEST(TimeRows, SaysHowManyRowsAnAppendAdds) {
  mp4::TimeRows table;
  EXPECT_EQ(table.MostRowsFor(5, 9), 1);
  ASSERT_TRUE(table.Append(5, 3));
  EXPECT_EQ(table.MostRowsFor(5, 9), 0);
  EXPECT_EQ(table.MostRowsFor(6, 9), 1);
  EXPECT_EQ(table.MostRowsFor(6, 0), 0);
}

// A negative count has the first samples join no row: one a sample until the count is positive.
TEST(TimeRows, NegativeCountCostsARowForEachSampleAtFirst) {
  mp4::TimeRows table = Read(Bytes().Be32(1).Be32(5), 0xFFFFFFFE);
  EXPECT_EQ(table.Count(), -2);
  EXPECT_EQ(table.MostRowsFor(5, 9), 4);
  EXPECT_TRUE(table.Append(5, 9));
  EXPECT_EQ(table.Count(), 1);
}

}  // namespace
