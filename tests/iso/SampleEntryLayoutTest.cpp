#include <gtest/gtest.h>

#include "io/FourCC.h"
#include "io/MemorySource.h"
#include "iso/BoxTree.h"
#include "iso/SampleEntryLayout.h"
#include "tests/Bytes.h"

namespace {

using mp4::BoxId;
using mp4::FourCC;

/// The sample description of a track with this handler and one entry.
class Description {
 public:
  Description(const Bytes& handler, const Bytes& entry)
      : bytes_(Box("mdia", handler + Box("minf", Box("stbl", Stsd(entry))))),
        memory_(bytes_.data(), bytes_.size()),
        cached_(&memory_),
        tree(&cached_) {}

  BoxId stsd() {
    BoxId id = tree.FirstChild(mp4::kRootBox);
    for (const char* type : {"minf", "stbl", "stsd"}) id = tree.Child(id, FourCC(type));
    return id;
  }
  mp4::ChildLayout layout() { return SampleEntryLayout(&tree, tree.FirstChild(stsd())); }

 private:
  static Bytes Stsd(const Bytes& entry) { return FullBox("stsd", 0, 0, Bytes().Be32(1) + entry); }
  static std::uint32_t FourCC(const char* type) {
    return mp4::LoadLe32(reinterpret_cast<const unsigned char*>(type));
  }

  Bytes bytes_;
  mp4::MemorySource memory_;
  mp4::CachedSource cached_;

 public:
  mp4::BoxTree tree;
};

Bytes Handler(std::string_view type) {
  return FullBox("hdlr", 0, 0, Bytes().Be32(0).Text(type).Fill(13));
}

}  // namespace

TEST(SampleEntryLayout, HandlerIsThatOfTheMedia) {
  Description video(Handler("vide"), Box("avc1", Bytes().Fill(78)));
  EXPECT_EQ(HandlerOf(&video.tree, video.stsd()), FourCC("vide"));
  Description none(Box("free"), Box("avc1", Bytes().Fill(78)));
  EXPECT_EQ(HandlerOf(&none.tree, none.stsd()), 0u);
}

TEST(SampleEntryLayout, HandlerOfABoxElsewhereIsUnknown) {
  Description video(Handler("vide"), Box("avc1", Bytes().Fill(78)));
  const BoxId stbl = video.tree.At(video.stsd()).parent;
  EXPECT_EQ(HandlerOf(&video.tree, stbl), 0u);
  EXPECT_EQ(HandlerOf(&video.tree, mp4::kRootBox), 0u);
}

TEST(SampleEntryLayout, EntriesWithoutBoxesHaveTheirUsualLength) {
  EXPECT_EQ(Description(Handler("vide"), Box("zzzz", Bytes().Fill(78))).layout().fixed, 78u);
  EXPECT_EQ(Description(Handler("soun"), Box("zzzz", Bytes().Fill(28))).layout().fixed, 28u);
  EXPECT_EQ(Description(Handler("text"), Box("zzzz", Bytes().Fill(8))).layout().fixed, 8u);
}

TEST(SampleEntryLayout, BoxesElsewhereAreFound) {
  // A visual entry below a sound handler.
  const Bytes entry = Box("zzzz", Bytes().Fill(78) + Box("sinf", Box("frma", Bytes().Fill(4))));
  Description odd(Handler("soun"), entry);
  EXPECT_EQ(odd.layout().fixed, 78u);
  EXPECT_TRUE(odd.tree.Problems().empty());
}
