#include <gtest/gtest.h>

#include "io/MemorySource.h"
#include "iso/BoxTree.h"
#include "iso/ChildLayout.h"
#include "tests/Bytes.h"

namespace {

/// The layout of the first top-level box.
mp4::ChildLayout LayoutOfFirst(const Bytes& bytes) {
  mp4::MemorySource memory(bytes.data(), bytes.size());
  mp4::CachedSource cached(&memory);
  mp4::BoxTree tree(&cached);
  return LayoutOf(&tree, tree.FirstChild(mp4::kRootBox));
}

}  // namespace

TEST(ChildLayout, PlainContainersBeginWithABox) {
  for (const char* type :
       {"moov", "trak", "mdia", "minf", "stbl", "moof", "traf", "sinf", "schi"}) {
    const mp4::ChildLayout layout = LayoutOfFirst(Box(type, Bytes().Fill(16)));
    EXPECT_TRUE(layout.container) << type;
    EXPECT_FALSE(layout.compressed) << type;
    EXPECT_EQ(layout.fixed, 0u) << type;
    EXPECT_LT(layout.counted, 0) << type;
  }
}

TEST(ChildLayout, UnknownTypesHoldNoBoxes) {
  EXPECT_FALSE(LayoutOfFirst(Box("zzzz", Box("moov"))).container);
  EXPECT_FALSE(LayoutOfFirst(Box("mdat", Box("moov"))).container);
}

TEST(ChildLayout, SampleDescriptionsAnnounceTheirEntries) {
  const auto layout = LayoutOfFirst(FullBox("stsd", 0, 0, Bytes().Be32(7)));
  EXPECT_TRUE(layout.container);
  EXPECT_EQ(layout.fixed, 8u);
  EXPECT_EQ(layout.counted, 7);
}

TEST(ChildLayout, ACountThatIsNotThereIsNone) {
  EXPECT_LT(LayoutOfFirst(FullBox("stsd", 0, 0, Bytes().Be16(7))).counted, 0);
}
