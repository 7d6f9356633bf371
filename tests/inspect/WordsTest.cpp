#include <gtest/gtest.h>

#include "inspect/Words.h"

TEST(Words, NumbersAreGroupedByThousands) {
  EXPECT_EQ("0", mp4::Grouped(0));
  EXPECT_EQ("999", mp4::Grouped(999));
  EXPECT_EQ("1,000", mp4::Grouped(1000));
  EXPECT_EQ("18,446,744,073,709,551,615", mp4::Grouped(UINT64_MAX));
}

TEST(Words, TypesStandInDoubleQuotes) { EXPECT_EQ("\"trak\"", mp4::Quoted("trak")); }

TEST(Words, IdsAreWrittenInFiveGroups) {
  mp4::Id16 id{};
  for (std::size_t i = 0; i < id.size(); ++i) id[i] = static_cast<std::uint8_t>(i * 17);
  EXPECT_EQ("00112233-4455-6677-8899-aabbccddeeff", mp4::IdText(id));
}
