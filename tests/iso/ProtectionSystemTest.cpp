#include <gtest/gtest.h>

#include "iso/ProtectionSystem.h"
#include "tests/Bytes.h"

namespace {

bool Read(const Bytes& bytes, mp4::ProtectionSystem* system) {
  return mp4::ReadProtectionSystem({bytes.data(), bytes.size()}, system);
}

TEST(ProtectionSystem, VersionZeroHasNoKeyIds) {
  mp4::ProtectionSystem system;
  ASSERT_TRUE(Read(Bytes().Be32(0).Fill(16, 5).Be32(77), &system));
  EXPECT_EQ(5, system.id[15]);
  EXPECT_EQ(77U, system.dataSize);
  EXPECT_TRUE(system.keyIds.empty());
}

TEST(ProtectionSystem, VersionOneListsKeyIds) {
  mp4::ProtectionSystem system;
  ASSERT_TRUE(Read(Bytes{1, 0, 0, 0}.Fill(16).Be32(2).Fill(16, 1).Fill(16, 2).Be32(3), &system));
  ASSERT_EQ(2U, system.keyIds.size());
  EXPECT_EQ(2, system.keyIds[1][0]);
  EXPECT_EQ(3U, system.dataSize);
}

TEST(ProtectionSystem, KeyIdsThatAreThereAreReadWhenTheCountLies) {
  mp4::ProtectionSystem system;
  EXPECT_FALSE(Read(Bytes{1, 0, 0, 0}.Fill(16, 9).Be32(0xFFFFFFFF).Fill(16, 1), &system));
  EXPECT_EQ(9, system.id[0]);
  EXPECT_EQ(1U, system.keyIds.size());
}

TEST(ProtectionSystem, OneByteShortIsCut) {
  mp4::ProtectionSystem system;
  EXPECT_FALSE(Read(Bytes().Be32(0).Fill(16).Fill(3), &system));
}

}  // namespace
