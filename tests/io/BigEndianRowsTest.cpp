#include <gtest/gtest.h>

#include <array>
#include <random>
#include <vector>

#include "io/BigEndianRows.h"
#include "tests/Bytes.h"

namespace {

/// Both forms, on a machine that has but one too: the plain one then stands for the other.
const mp4::RowPasses* const kForms[] = {&mp4::PlainRows(), &mp4::WidestRows()};

TEST(BigEndianRows, TotalsOfNothingAreZero) {
  for (const mp4::RowPasses* form : kForms) {
    EXPECT_EQ(form->total(nullptr, 0).sum, 0u);
    EXPECT_EQ(form->total(nullptr, 0).largest, 0u);
    EXPECT_EQ(form->times(nullptr, 0).samples, 0u);
    EXPECT_EQ(form->times(nullptr, 0).duration, 0u);
  }
}

TEST(BigEndianRows, SumsAreWiderThanTheNumbers) {
  const Bytes rows = Bytes().Be32(0xFFFFFFFF).Be32(1).Be32(0x80000000);
  for (const mp4::RowPasses* form : kForms) {
    EXPECT_EQ(form->total(rows.data(), 3).sum, 0x180000000u);
    EXPECT_EQ(form->total(rows.data(), 3).largest, 0xFFFFFFFFu);
    EXPECT_EQ(form->total(rows.data() + 4, 2).largest, 0x80000000u);
  }
}

TEST(BigEndianRows, NumbersAreStoredInTheHostsOrder) {
  const Bytes rows = Bytes().Be32(0x01020304).Be32(0xFFFFFFFE);
  for (const mp4::RowPasses* form : kForms) {
    std::array<std::uint32_t, 3> out = {7, 7, 7};
    form->copy(rows.data(), 2, out.data());
    EXPECT_EQ(out, (std::array<std::uint32_t, 3>{0x01020304, 0xFFFFFFFE, 7}));
  }
}

TEST(BigEndianRows, CountsAndDurationsAreSigned) {
  const Bytes rows = Bytes().Be32(3).Be32(0xFFFFFFFE).Be32(0xFFFFFFFF).Be32(10).Be32(2).Be32(5);
  for (const mp4::RowPasses* form : kForms) {
    const mp4::TimeTotals totals = form->times(rows.data(), 3);
    EXPECT_EQ(totals.samples, 4u);
    EXPECT_EQ(static_cast<std::int64_t>(totals.duration), 3 * -2 + -1 * 10 + 2 * 5);
  }
}

TEST(BigEndianRows, TotalsWrap) {
  Bytes rows;
  for (int i = 0; i < 4; ++i) rows.Be32(0x80000000).Be32(0x80000000);
  for (const mp4::RowPasses* form : kForms) {
    EXPECT_EQ(form->times(rows.data(), 4).samples, 0u);
    EXPECT_EQ(form->times(rows.data(), 4).duration, 0u);
    EXPECT_EQ(form->times(rows.data(), 2).duration, 1ull << 63);
  }
}

// Every length, so that whatever is left behind a wide part counts as well, at odd addresses.
TEST(BigEndianRows, EveryLengthAgreesWithOneByOneInBothForms) {
  std::mt19937 random(5);
  Bytes rows{0};
  for (int i = 0; i < 200; ++i) rows.Be32(static_cast<std::uint32_t>(random()));
  const unsigned char* const data = rows.data() + 1;
  const mp4::RowPasses& plain = mp4::PlainRows();
  mp4::RowTotals totals;
  mp4::TimeTotals times;
  std::vector<std::uint32_t> numbers;
  for (std::size_t n = 0; n < 100; ++n) {
    for (const mp4::RowPasses* form : kForms) {
      EXPECT_EQ(form->total(data, n).sum, totals.sum) << n;
      EXPECT_EQ(form->total(data, n).largest, totals.largest) << n;
      EXPECT_EQ(form->times(data, n).samples, times.samples) << n;
      EXPECT_EQ(form->times(data, n).duration, times.duration) << n;
      std::vector<std::uint32_t> copied(n);
      form->copy(data, n, copied.data());
      EXPECT_EQ(copied, numbers) << n;
    }

    const auto one = plain.total(data + 4 * n, 1);
    totals.sum += one.sum;
    totals.largest = std::max(totals.largest, one.largest);
    const auto row = plain.times(data + 8 * n, 1);
    times.samples += row.samples;
    times.duration += row.duration;
    numbers.push_back(one.largest);
  }
}

}  // namespace
