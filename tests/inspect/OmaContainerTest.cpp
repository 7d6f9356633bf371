#include <gtest/gtest.h>

#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;

TEST(OmaContainer, AnEncryptionMethodProtects) {
  for (const unsigned method : {1U, 2U, 3U, 4U, 0xFEU}) {
    const mp4::Report report = p::InspectBytes(p::OmaFile(method));
    EXPECT_EQ(p::kProtected, report.verdict) << method;
    EXPECT_EQ("odrm/odhe/ohdr", report.evidence.at(0).boxPath);
    EXPECT_EQ(std::vector<std::string>{"odkm"}, report.schemes);
  }
}

TEST(OmaContainer, WithoutEncryptionItsContentIsUnknown) {
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::OmaFile(0)));
}

TEST(OmaContainer, WithoutReadableHeadersItIsNotClear) {
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(FullBox("odrm", 0, 0)));
  EXPECT_EQ(p::kUndetermined,
            p::VerdictOf(FullBox("odrm", 0, 0, FullBox("odhe", 0, 0, Bytes().Byte(0)))));
}

}  // namespace
