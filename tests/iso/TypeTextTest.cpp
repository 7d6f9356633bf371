#include <gtest/gtest.h>

#include "io/FourCC.h"
#include "iso/TypeText.h"

using mp4::FourCC;
using mp4::TypeText;

TEST(TypeText, PrintableCharactersStandForThemselves) {
  EXPECT_EQ(TypeText(FourCC("moov")), "moov");
  EXPECT_EQ(TypeText(FourCC("rtp ")), "rtp ");
  EXPECT_EQ(TypeText(FourCC("~!'\"")), "~!'\"");
}

TEST(TypeText, OthersStandInHexadecimal) {
  EXPECT_EQ(TypeText(FourCC("\251nam")), "\\xA9nam");
  EXPECT_EQ(TypeText(0), "\\x00\\x00\\x00\\x00");
  EXPECT_EQ(TypeText(FourCC("\x1F\x20\x7E\x7F")), "\\x1F ~\\x7F");
  EXPECT_EQ(TypeText(0xFF80FE10), "\\x10\\xFE\\x80\\xFF");
}

TEST(TypeText, CharactersOfPathsStandInHexadecimal) {
  EXPECT_EQ(TypeText(FourCC("\\/[]")), "\\x5C\\x2F\\x5B\\x5D");
}

TEST(TypeText, AppendsToWhatIsThere) {
  std::string text = "moov/";
  mp4::AppendType(FourCC("trak"), &text);
  EXPECT_EQ(text, "moov/trak");
}
