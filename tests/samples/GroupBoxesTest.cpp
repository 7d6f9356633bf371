#include <gtest/gtest.h>

#include "samples/GroupBoxes.h"
#include "tests/TreeFixtures.h"

namespace {

Bytes Sbgp(const char* type, std::uint32_t samples, std::uint32_t count = 1) {
  return FullBox("sbgp", 0, 0, Bytes().Text(type).Be32(count).Be32(samples).Be32(1));
}
/// One entry of 20 bytes.
Bytes Sgpd(const char* type, unsigned isProtected) {
  return FullBox("sgpd", 1, 0,
                 Bytes().Text(type).Be32(20).Be32(1).Be16(0).Byte(isProtected).Byte(8).Fill(16));
}
/// A pattern of one index over up to 15 samples: a nibble each for its length, the samples and the
/// index.
Bytes Csgp(const char* type, unsigned samples) {
  return FullBox("csgp", 0, 0, Bytes().Text(type).Be32(1).Byte(0x10 | samples).Byte(0x10));
}

mp4::GroupBoxes Find(const Bytes& children) {
  fixture::TreeOver over(Box("moof", Box("traf", children)));
  return mp4::FindGroupBoxes(&over.tree, over.At("moof/traf"));
}

}  // namespace

TEST(GroupBoxes, MapAndDescriptionsAreFound) {
  const mp4::GroupBoxes groups = Find(Sgpd("seig", 1) + Sbgp("seig", 7));
  EXPECT_TRUE(groups.map.there);
  ASSERT_EQ(1U, groups.map.stretches.size());
  EXPECT_EQ(7U, groups.map.stretches[0].samples);
  EXPECT_FALSE(groups.map.cut);
  EXPECT_TRUE(groups.descriptions.there);
  EXPECT_EQ(mp4::Guard::kProtected, groups.descriptions.At(1));
}

TEST(GroupBoxes, ThoseOfOtherGroupsAreNot) {
  const mp4::GroupBoxes groups = Find(Sgpd("roll", 1) + Sbgp("roll", 7) + Csgp("rap ", 7));
  EXPECT_FALSE(groups.map.there);
  EXPECT_FALSE(groups.descriptions.there);
}

TEST(GroupBoxes, TheFirstOfEachCounts) {
  const mp4::GroupBoxes groups = Find(Sbgp("roll", 1) + Sbgp("seig", 7) + Sbgp("seig", 9) +
                                      Csgp("seig", 5) + Sgpd("seig", 0) + Sgpd("seig", 1));
  ASSERT_EQ(1U, groups.map.stretches.size());
  EXPECT_EQ(7U, groups.map.stretches[0].samples);
  EXPECT_EQ(mp4::Guard::kClear, groups.descriptions.At(1));
}

TEST(GroupBoxes, ACompactMapIsAMapToo) {
  const mp4::GroupBoxes groups = Find(Csgp("seig", 5));
  EXPECT_TRUE(groups.map.there);
  ASSERT_EQ(1U, groups.map.stretches.size());
  EXPECT_EQ(5U, groups.map.stretches[0].samples);
}

TEST(GroupBoxes, AMapThatClaimsMoreThanItHoldsIsCut) {
  EXPECT_TRUE(Find(Sbgp("seig", 7, 2)).map.cut);
}
