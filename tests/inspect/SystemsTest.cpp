#include <gtest/gtest.h>

#include "inspect/SystemNames.h"
#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;

TEST(InspectSystems, ALeftOverSystemIsANoteAndNoProtection) {
  for (const Bytes& system : {p::Pssh(), p::PiffPssh()}) {
    const mp4::Report report = p::InspectBytes(p::Movie(p::VideoTrak() + system));
    EXPECT_EQ(p::kClear, report.verdict) << report.reason;
    ASSERT_EQ(1U, report.systems.size());
    EXPECT_EQ("Widevine", report.systems[0].name);
    EXPECT_EQ(4U, report.systems[0].payloadSize);
    EXPECT_EQ(1U, report.notes.size());
    EXPECT_TRUE(report.evidence.empty());
  }
}

TEST(InspectSystems, KeyIdsOfVersionOneAreListed) {
  const Bytes pssh = FullBox(
      "pssh", 1, 0, p::SystemId().Be32(2).Append(p::KeyId()).Append(p::KeyId()).Be32(1).Byte(0));
  const mp4::Report report = p::InspectBytes(p::Movie(p::VideoTrak() + pssh));
  ASSERT_EQ(2U, report.systems.at(0).keyIds.size());
  EXPECT_EQ(9, report.systems[0].keyIds[1][9]);
  EXPECT_EQ("moov/pssh[1]", report.systems[0].boxPath);
}

TEST(InspectSystems, SeveralOfOneSystemAreListedAndRepetitionsAreNot) {
  const Bytes other = FullBox("pssh", 0, 0, p::SystemId().Be32(5).Text("other"));
  const mp4::Report report =
      p::InspectBytes(p::Movie(p::VideoTrak() + p::Pssh() + p::Pssh() + other));
  EXPECT_EQ(2U, report.systems.size());
}

TEST(InspectSystems, ACutSystemIsAProblemOnly) {
  const Bytes cut = FullBox("pssh", 0, 0, p::SystemId().Be16(0));
  const mp4::Report report = p::InspectBytes(p::Movie(p::VideoTrak() + cut));
  EXPECT_EQ(p::kClear, report.verdict);
  EXPECT_EQ(1U, report.systems.size());
  EXPECT_EQ(1U, report.problems.size());
  const Bytes shorter = FullBox("pssh", 0, 0, Bytes().Fill(15));
  EXPECT_TRUE(p::InspectBytes(p::Movie(p::VideoTrak() + shorter)).systems.empty());
}

TEST(InspectSystems, AHugeCountOfKeyIdsCostsNothing) {
  const Bytes huge = FullBox("pssh", 1, 0, p::SystemId().Be32(0xFFFFFFFF).Append(p::KeyId()));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::Movie(p::VideoTrak() + huge)));
}

TEST(InspectSystems, UnknownSystemsHaveNoName) { EXPECT_STREQ("", mp4::NameOfSystem({})); }

}  // namespace
