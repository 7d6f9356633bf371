#include <gtest/gtest.h>

#include "iso/EncryptionGroups.h"
#include "tests/Bytes.h"

using mp4::EncryptionGroup;
using mp4::FieldView;

namespace {

/// An entry of 20 bytes that turns encryption on, with an initialization vector of 8 bytes.
Bytes GroupEntry() { return Bytes().Byte(0).Byte(0).Byte(1).Byte(8).Fill(16, 0xAB); }

Bytes GroupBox(unsigned version, std::uint32_t length, std::uint32_t count, const Bytes& entries) {
  Bytes payload = Bytes().Byte(version).Fill(3).Text("seig");
  if (version >= 1) payload.Be32(length);
  if (version >= 2) payload.Be32(0);
  return payload.Be32(count).Append(entries);
}

bool ReadGroups(const Bytes& payload, std::vector<EncryptionGroup>* groups) {
  return mp4::ReadEncryptionGroups(FieldView(payload.data(), payload.size()), groups);
}

}  // namespace

TEST(EncryptionGroups, ReadsEntriesOfEveryVersion) {
  for (const unsigned version : {0U, 1U, 2U}) {
    std::vector<EncryptionGroup> groups;
    EXPECT_TRUE(ReadGroups(GroupBox(version, 20, 2, GroupEntry() + GroupEntry()), &groups));
    ASSERT_EQ(groups.size(), 2u) << version;
    EXPECT_TRUE(groups[1].isProtected);
    ASSERT_EQ(groups[1].keyIds.size(), 1u);
    EXPECT_EQ(groups[1].keyIds[0][15], 0xAB);
  }
}

TEST(EncryptionGroups, ReadsEntriesThatHaveLengthsOfTheirOwn) {
  std::vector<EncryptionGroup> groups;
  const Bytes entries = Bytes().Be32(20).Append(GroupEntry()).Be32(22).Append(GroupEntry()).Fill(2);
  EXPECT_TRUE(ReadGroups(GroupBox(1, 0, 2, entries), &groups));
  EXPECT_EQ(groups.size(), 2u);
}

TEST(EncryptionGroups, ACountThatIsNotHeldEndsWithTheBytes) {
  for (const std::uint32_t length : {20U, 21U, 0xFFFFFFFFU}) {
    std::vector<EncryptionGroup> groups;
    EXPECT_FALSE(ReadGroups(GroupBox(1, length, 0xFFFFFFFF, GroupEntry()), &groups));
    EXPECT_EQ(groups.size(), 1u) << length;
  }
  std::vector<EncryptionGroup> groups;
  EXPECT_FALSE(ReadGroups(GroupBox(0, 0, 0xFFFFFFFF, GroupEntry()), &groups));
  EXPECT_EQ(groups.size(), 1u);
}

TEST(EncryptionGroups, AnEntryShorterThanItsFieldsIsNone) {
  std::vector<EncryptionGroup> groups;
  EXPECT_FALSE(ReadGroups(GroupBox(1, 19, 1, GroupEntry()), &groups));
  EXPECT_TRUE(groups.empty());
  EXPECT_FALSE(ReadGroups(GroupBox(1, 20, 1, GroupEntry().Cut(19)), &groups));
  EXPECT_TRUE(groups.empty());
}

TEST(EncryptionGroups, ReadsSeveralKeysOfAnEntry) {
  const Bytes multi = Bytes{0x80, 0, 1}.Be16(2).Byte(8).Fill(16, 1).Byte(8).Fill(16, 2);
  std::vector<EncryptionGroup> groups;
  EXPECT_TRUE(ReadGroups(GroupBox(1, 39, 1, multi), &groups));
  ASSERT_EQ(groups.size(), 1u);
  ASSERT_EQ(groups[0].keyIds.size(), 2u);
  EXPECT_EQ(groups[0].keyIds[1][0], 2);
}

TEST(EncryptionGroups, ReadsAConstantVectorBetweenEntriesWithoutLengths) {
  const Bytes constant = Bytes{0, 0, 1, 0}.Fill(16, 7).Byte(8).Fill(8);
  std::vector<EncryptionGroup> groups;
  EXPECT_TRUE(ReadGroups(GroupBox(0, 0, 2, constant + GroupEntry()), &groups));
  ASSERT_EQ(groups.size(), 2u);
  EXPECT_EQ(groups[1].keyIds.at(0)[0], 0xAB);
}
