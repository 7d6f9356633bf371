#include <gtest/gtest.h>

#include <string>

#include "io/Utf8Path.h"

namespace {

std::string Converted(const std::wstring& path) {
  mp4::PathBuffer out;
  out.fill('?');
  mp4::WidePathToUtf8(path.c_str(), &out);
  return out.data();
}

std::string One(unsigned c) { return Converted(std::wstring(1, static_cast<wchar_t>(c))); }

}  // namespace

TEST(Utf8Path, FirstAndLastCodePointOfEachLength) {
  EXPECT_EQ(One(0x01), "\x01");
  EXPECT_EQ(One(0x7F), "\x7F");
  EXPECT_EQ(One(0x80), "\xC2\x80");
  EXPECT_EQ(One(0x7FF), "\xDF\xBF");
  EXPECT_EQ(One(0x800), "\xE0\xA0\x80");
  EXPECT_EQ(One(0xFFFF), "\xEF\xBF\xBF");
  EXPECT_EQ(One(0x10000), "\xF0\x90\x80\x80");
  EXPECT_EQ(One(0x10FFFF), "\xF4\x8F\xBF\xBF");
}

TEST(Utf8Path, ValuesAboveTheLastCodePointAreReplaced) {
  EXPECT_EQ(One(0x110000), "\xEF\xBF\xBD");
  EXPECT_EQ(One(0x7FFFFFFF), "\xEF\xBF\xBD");
  EXPECT_EQ(One(0xFFFFFFFF), "\xEF\xBF\xBD");
}

TEST(Utf8Path, SurrogatesAreEncodedLikeAnyOther) {
  EXPECT_EQ(One(0xD800), "\xED\xA0\x80");
  EXPECT_EQ(One(0xDFFF), "\xED\xBF\xBF");
}

TEST(Utf8Path, NullIsTheEmptyName) {
  mp4::PathBuffer out;
  out.fill('?');
  mp4::WidePathToUtf8(nullptr, &out);
  EXPECT_STREQ(out.data(), "");
}

TEST(Utf8Path, TheRestOfTheBufferIsZero) {
  mp4::PathBuffer out;
  out.fill('?');
  mp4::WidePathToUtf8(L"ab", &out);
  for (std::size_t i = 2; i < out.size(); ++i) ASSERT_EQ(out[i], 0);
}

TEST(Utf8Path, NamesUpTo2047BytesSurviveWhole) {
  EXPECT_EQ(Converted(std::wstring(2046, L'a')), std::string(2046, 'a'));
  EXPECT_EQ(Converted(std::wstring(2047, L'a')), std::string(2047, 'a'));
  EXPECT_EQ(Converted(std::wstring(2048, L'a')), std::string(2047, 'a'));
  EXPECT_EQ(Converted(std::wstring(9000, L'a')), std::string(2047, 'a'));
}

TEST(Utf8Path, CharacterThatCrossesTheLimitGoesWithAllBehindIt) {
  const std::wstring tail = std::wstring(1, static_cast<wchar_t>(0x20AC)) + L"zz";
  EXPECT_EQ(Converted(std::wstring(2044, L'a') + tail), std::string(2044, 'a') + "\xE2\x82\xAC");
  EXPECT_EQ(Converted(std::wstring(2045, L'a') + tail), std::string(2045, 'a'));
  EXPECT_EQ(Converted(std::wstring(2046, L'a') + tail), std::string(2046, 'a'));
}
