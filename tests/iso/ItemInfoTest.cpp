#include <gtest/gtest.h>

#include "io/FourCC.h"
#include "io/MemorySource.h"
#include "iso/ItemInfo.h"
#include "tests/Bytes.h"

namespace {

bool Read(const Bytes& bytes, mp4::ItemInfo* item) {
  return mp4::ReadItemInfo({bytes.data(), bytes.size()}, item);
}

TEST(ItemInfo, VersionTwoAndThreeNameTheType) {
  mp4::ItemInfo item;
  ASSERT_TRUE(Read(Bytes{2, 0, 0, 0}.Be16(5).Be16(6).Text("hvc1"), &item));
  EXPECT_EQ(5U, item.id);
  EXPECT_EQ(6U, item.protection);
  EXPECT_EQ(mp4::FourCC("hvc1"), item.type);
  ASSERT_TRUE(Read(Bytes{3, 0, 0, 0}.Be32(70000).Be16(1).Text("av01"), &item));
  EXPECT_EQ(70000U, item.id);
  EXPECT_EQ(1U, item.protection);
}

TEST(ItemInfo, EarlierVersionsHaveNoType) {
  mp4::ItemInfo item;
  for (const int version : {0, 1}) {
    ASSERT_TRUE(Read(Bytes{version, 0, 0, 0}.Be16(5).Be16(6), &item));
    EXPECT_EQ(6U, item.protection);
    EXPECT_EQ(0U, item.type);
  }
}

TEST(ItemInfo, CutAndUnknownVersionsAreSaid) {
  mp4::ItemInfo item;
  EXPECT_FALSE(Read(Bytes{2, 0, 0, 0}.Be16(5).Be16(6).Text("hvc"), &item));
  EXPECT_FALSE(Read(Bytes{0, 0, 0, 0}.Be16(5).Byte(0), &item));
  EXPECT_FALSE(Read(Bytes{4, 0, 0, 0}.Fill(20), &item));
}

/// The references of the first child of an "iref" box of this version.
bool ReadReferences(unsigned version, const Bytes& reference, mp4::ItemReferences* references) {
  const Bytes file =
      Box("meta", Bytes().Be32(0).Append(FullBox("iref", version, 0, Box("dimg", reference))));
  mp4::MemorySource memory(file.data(), file.size());
  mp4::CachedSource source(&memory);
  mp4::BoxTree tree(&source);
  const mp4::BoxId iref = tree.Child(tree.FirstChild(mp4::kRootBox), mp4::FourCC("iref"));
  return mp4::ReadItemReferences(&tree, tree.FirstChild(iref), references);
}

TEST(ItemReferences, BothWidthsAreRead) {
  const mp4::ItemReferences expected = {{1, 2}, {1, 3}};
  mp4::ItemReferences narrow;
  ASSERT_TRUE(ReadReferences(0, Bytes().Be16(1).Be16(2).Be16(2).Be16(3), &narrow));
  EXPECT_EQ(expected, narrow);
  mp4::ItemReferences wide;
  ASSERT_TRUE(ReadReferences(1, Bytes().Be32(1).Be16(2).Be32(2).Be32(3), &wide));
  EXPECT_EQ(expected, wide);
}

TEST(ItemReferences, MoreThanOnePieceIsRead) {
  Bytes reference = Bytes().Be32(1).Be16(0xFFFF);
  for (std::uint32_t i = 0; i < 0xFFFF; ++i) reference.Be32(i);
  mp4::ItemReferences references;
  ASSERT_TRUE(ReadReferences(1, reference, &references));
  ASSERT_EQ(0xFFFFU, references.size());
  EXPECT_EQ(0xFFFEU, references.back().second);
}

TEST(ItemReferences, OneByteShortIsSaid) {
  mp4::ItemReferences references;
  EXPECT_FALSE(ReadReferences(0, Bytes().Be16(1).Be16(2).Be16(2).Byte(0), &references));
  EXPECT_FALSE(ReadReferences(0, Bytes().Be16(1).Byte(0), &references));
}

}  // namespace
