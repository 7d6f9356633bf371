#include <gtest/gtest.h>

#include <algorithm>

#include "inspect/SystemNames.h"
#include "tests/Bytes.h"

namespace {

mp4::Id16 Id(std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d) {
  const Bytes bytes = Bytes().Be32(a).Be32(b).Be32(c).Be32(d);
  mp4::Id16 id{};
  std::copy_n(bytes.data(), id.size(), id.begin());
  return id;
}

}  // namespace

TEST(SystemNames, AreThoseOfTheRegistry) {
  EXPECT_STREQ("Widevine", mp4::NameOfSystem(Id(0xEDEF8BA9, 0x79D64ACE, 0xA3C827DC, 0xD51D21ED)));
  EXPECT_STREQ("Microsoft PlayReady",
               mp4::NameOfSystem(Id(0x9A04F079, 0x98404286, 0xAB92E65B, 0xE0885F95)));
  EXPECT_STREQ("Apple FairPlay",
               mp4::NameOfSystem(Id(0x94CE86FB, 0x07FF4F43, 0xADB893D2, 0xFA968CA2)));
  EXPECT_STREQ("W3C common pssh",
               mp4::NameOfSystem(Id(0x1077EFEC, 0xC0B24D02, 0xACE33C1E, 0x52E2FB4B)));
}

// The first three groups of a GUID are stored the other way round by some.
TEST(SystemNames, OneIsKnownInTheByteOrderOfAGuidToo) {
  EXPECT_STREQ("Microsoft PlayReady (byte order of a GUID)",
               mp4::NameOfSystem(Id(0x79F0049A, 0x40988642, 0xAB92E65B, 0xE0885F95)));
}

TEST(SystemNames, AreEmptyForIdsThatDifferInOneByte) {
  EXPECT_STREQ("", mp4::NameOfSystem(Id(0xEDEF8BA9, 0x79D64ACE, 0xA3C827DC, 0xD51D21EC)));
  EXPECT_STREQ("", mp4::NameOfSystem(Id(0xECEF8BA9, 0x79D64ACE, 0xA3C827DC, 0xD51D21ED)));
  EXPECT_STREQ("", mp4::NameOfSystem({}));
}
