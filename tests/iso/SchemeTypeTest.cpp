#include <gtest/gtest.h>

#include "io/FourCC.h"
#include "iso/SchemeType.h"
#include "tests/Bytes.h"

namespace {

using mp4::FourCC;

mp4::SchemeType Read(const Bytes& payload, bool expected = true) {
  mp4::SchemeType scheme;
  EXPECT_EQ(expected, mp4::ReadSchemeType(mp4::FieldView(payload.data(), payload.size()), &scheme));
  return scheme;
}

TEST(SchemeType, TypeVersionAndUriAreRead) {
  const mp4::SchemeType scheme =
      Read(Bytes{0, 0, 0, 1}.Text("cenc").Be32(0x10002).Text("urn:x").Byte(0).Text("rest"));
  EXPECT_EQ(FourCC("cenc"), scheme.type);
  EXPECT_EQ(0x10002U, scheme.version);
  EXPECT_EQ("urn:x", scheme.uri);
}

TEST(SchemeType, AUriMayLackItsZero) {
  EXPECT_EQ("urn:x", Read(Bytes{0, 0, 0, 1}.Text("cenc").Be32(1).Text("urn:x")).uri);
}

TEST(SchemeType, WithoutItsFlagThereIsNoUri) {
  EXPECT_EQ("", Read(Bytes{0, 0, 0, 0}.Text("cenc").Be32(1).Text("urn:x")).uri);
}

TEST(SchemeType, TheShortVersionIsRead) {
  EXPECT_EQ(0x100U, Read(Bytes{0, 0, 0, 0}.Text("abcd").Be16(0x100)).version);
  const mp4::SchemeType marlin = Read(Bytes{0, 0, 0, 1}.Text("ACBC").Be16(0x100).Text("urn"));
  EXPECT_EQ(0x100U, marlin.version);
  EXPECT_EQ("urn", marlin.uri);
}

TEST(SchemeType, TheTypeIsEnough) {
  EXPECT_EQ(FourCC("cenc"), Read(Bytes{0, 0, 0, 0}.Text("cenc")).type);
  Read(Bytes{0, 0, 0, 0}.Text("cen"), false);
  Read({}, false);
}

}  // namespace
