#include "inspect/FieldText.h"

#include <cstdio>

namespace mp4 {

namespace {

constexpr std::uint64_t kDay = 86400;
/// Days from the first of March of the year 0 to the beginning of 1904: with years that begin in
/// March the day that leap years add comes last.
constexpr std::uint64_t kDaysTo1904 = 695361;
constexpr std::uint64_t kDaysIn400Years = 146097;
/// Dates beyond the year 9999 say nothing.
constexpr std::uint64_t kLastDay = 2957003;

}  // namespace

std::string TimeText(std::uint64_t since1904) {
  if (since1904 == 0) return "unset";
  if (since1904 / kDay > kLastDay) return "beyond the year 9999";
  const std::uint64_t days = since1904 / kDay + kDaysTo1904;
  const std::uint64_t era = days / kDaysIn400Years;
  const std::uint64_t day = days % kDaysIn400Years;
  const std::uint64_t yearOfEra = (day - day / 1460 + day / 36524 - day / 146096) / 365;
  const std::uint64_t dayOfYear = day - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::uint64_t march = (5 * dayOfYear + 2) / 153;  // months since March
  const std::uint64_t month = march < 10 ? march + 3 : march - 9;
  const std::uint64_t year = era * 400 + yearOfEra + (month <= 2 ? 1 : 0);
  const std::uint64_t second = since1904 % kDay;
  char text[48];
  std::snprintf(text, sizeof text, "%04u-%02u-%02uT%02u:%02u:%02uZ", static_cast<unsigned>(year),
                static_cast<unsigned>(month),
                static_cast<unsigned>(dayOfYear - (153 * march + 2) / 5 + 1),
                static_cast<unsigned>(second / 3600), static_cast<unsigned>(second / 60 % 60),
                static_cast<unsigned>(second % 60));
  return text;
}

std::string LanguageText(std::uint16_t packed) {
  if (packed == 0x7FFF) return "und";
  if (packed < 0x400) return "Macintosh " + std::to_string(packed);
  std::string text;
  for (int shift = 10; shift >= 0; shift -= 5) {
    text.push_back(static_cast<char>(0x60 + (packed >> shift & 0x1F)));
  }
  return text;
}

std::string HexText(const unsigned char* bytes, std::size_t n) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  text.reserve(2 * n);
  for (std::size_t i = 0; i < n; ++i) {
    text.push_back(kDigits[bytes[i] >> 4]);
    text.push_back(kDigits[bytes[i] & 15]);
  }
  return text;
}

std::string DashedId(const unsigned char* bytes) {
  std::string text;
  for (std::size_t i = 0; i < 16; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text.push_back('-');
    text += HexText(bytes + i, 1);
  }
  return text;
}

}  // namespace mp4
