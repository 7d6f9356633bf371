#include <gtest/gtest.h>

#include "inspect/FieldText.h"
#include "tests/Bytes.h"

namespace {

constexpr std::uint64_t kDay = 86400;

}  // namespace

TEST(FieldText, TimesCountFromTheBeginningOf1904) {
  EXPECT_EQ("unset", mp4::TimeText(0));
  EXPECT_EQ("1904-01-01T00:00:01Z", mp4::TimeText(1));
  EXPECT_EQ("1904-01-01T23:59:59Z", mp4::TimeText(kDay - 1));
  EXPECT_EQ("1970-01-01T00:00:00Z", mp4::TimeText(2082844800));
  EXPECT_EQ("2026-11-21T09:30:05Z", mp4::TimeText(std::uint64_t{2082844800} + 1795253405));
}

TEST(FieldText, LeapDaysAreThoseOfTheCalendar) {
  EXPECT_EQ("1904-02-29T00:00:00Z", mp4::TimeText((31 + 28) * kDay));
  EXPECT_EQ("1904-03-01T00:00:00Z", mp4::TimeText((31 + 29) * kDay));
  // 96 years with 24 leap days; then 196 years with 49, the last of them in 2096.
  EXPECT_EQ("2000-02-29T00:00:00Z", mp4::TimeText((96 * 365 + 24 + 59) * kDay));
  EXPECT_EQ("2100-02-28T00:00:00Z", mp4::TimeText((196 * 365 + 49 + 58) * kDay));
  EXPECT_EQ("2100-03-01T00:00:00Z", mp4::TimeText((196 * 365 + 49 + 59) * kDay));
}

// 8,096 years from 1904 to 9999, 1,964 of them with a leap day.
TEST(FieldText, YearsEndWith9999) {
  constexpr std::uint64_t kEnd = (8096 * 365 + 1964) * kDay;
  EXPECT_EQ("9999-12-31T23:59:59Z", mp4::TimeText(kEnd - 1));
  EXPECT_EQ("beyond the year 9999", mp4::TimeText(kEnd));
  EXPECT_EQ("beyond the year 9999", mp4::TimeText(UINT64_MAX));
}

TEST(FieldText, LanguagesAreThreePackedLetters) {
  EXPECT_EQ("eng", mp4::LanguageText(5 << 10 | 14 << 5 | 7));
  EXPECT_EQ("und", mp4::LanguageText(21 << 10 | 14 << 5 | 4));
  EXPECT_EQ("zaa", mp4::LanguageText(26 << 10 | 1 << 5 | 1));
}

TEST(FieldText, OldLanguageCodesAreNumbers) {
  EXPECT_EQ("Macintosh 0", mp4::LanguageText(0));
  EXPECT_EQ("Macintosh 1023", mp4::LanguageText(0x3FF));
  EXPECT_EQ("a``", mp4::LanguageText(0x400)) << "the smallest that has a first letter";
  EXPECT_EQ("und", mp4::LanguageText(0x7FFF)) << "QuickTime's \"unspecified\"";
}

TEST(FieldText, BytesAreTwoDigitsEach) {
  const Bytes bytes{0x00, 0x0A, 0x9F, 0xF0};
  EXPECT_EQ("000a9ff0", mp4::HexText(bytes.data(), 4));
  EXPECT_EQ("", mp4::HexText(bytes.data(), 0));
}

TEST(FieldText, IdsHaveDashesBetweenTheirFiveGroups) {
  Bytes id;
  for (unsigned i = 0; i < 16; ++i) id.Byte(i * 17);
  EXPECT_EQ("00112233-4455-6677-8899-aabbccddeeff", mp4::DashedId(id.data()));
}
