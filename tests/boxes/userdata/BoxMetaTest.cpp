#include <gtest/gtest.h>

#include "boxes/userdata/BoxMeta.h"
#include "io/mmBufReader.h"
#include "tests/MetadataFixtures.h"

namespace {

struct Read {
  explicit Read(const Bytes& payload) : Read(payload, static_cast<long long>(payload.size())) {}
  Read(const Bytes& payload, long long size) : reader(payload.data(), payload.size()) {
    ok = box.ReadData(&reader, size, &context);
  }
  mmBufReader reader;
  BoxMeta box;
  Mp4Context context;
  bool ok = false;
};

Bytes VersionAndFlags() { return Bytes().Be32(0x01FFFFFF); }

}  // namespace

TEST(BoxMeta, ItemListIsReadBehindVersionAndFlags) {
  const Read meta(VersionAndFlags() + Box("ilst", DataItem("alb", "Album")));
  EXPECT_TRUE(meta.ok);
  ASSERT_NE(meta.box.itemListBox, nullptr);
  EXPECT_TRUE(HoldsExactly(meta.context.metadata.album, L"Album"));
}

TEST(BoxMeta, HandlerAndOtherChildrenAreSkipped) {
  const Read meta(VersionAndFlags() + Box("hdlr", Bytes().Fill(25, 'm')) + Box("free") +
                  Box("ilst", DataItem("alb", "Album")) + Box("free", Bytes().Fill(3)));
  EXPECT_TRUE(meta.ok);
  EXPECT_TRUE(HoldsExactly(meta.context.metadata.album, L"Album"));
  EXPECT_EQ(meta.reader.pos, meta.reader.size);
}

TEST(BoxMeta, FourBytesOrFewerHaveNoChildren) {
  const Bytes payload = VersionAndFlags() + Box("ilst", DataItem("alb", "Album"));
  for (int size = 0; size <= 4; ++size) {
    const Read meta(payload, size);
    EXPECT_TRUE(meta.ok) << size;
    EXPECT_EQ(meta.box.itemListBox, nullptr) << size;
    EXPECT_EQ(meta.reader.pos, size);
  }
}

TEST(BoxMeta, FiveBytesReadAChildAndStepBackToTheEnd) {
  const Read meta(VersionAndFlags() + Box("ilst", DataItem("alb", "Album")), 5);
  EXPECT_TRUE(meta.ok);
  EXPECT_TRUE(HoldsExactly(meta.context.metadata.album, L"Album"));
  EXPECT_EQ(meta.reader.pos, 5);
}

TEST(BoxMeta, ItemListBoxIsReused) {
  const Bytes payload =
      VersionAndFlags() + Box("ilst", DataItem("alb", "one")) + Box("ilst", DataItem("nam", "two"));
  mmBufReader reader(payload.data(), payload.size());
  Mp4Context context;
  BoxMeta box;
  ASSERT_TRUE(box.ReadData(&reader, static_cast<long long>(payload.size()), &context));
  const BoxIlst* created = box.itemListBox.get();
  reader.SetPos(0);
  ASSERT_TRUE(box.ReadData(&reader, static_cast<long long>(payload.size()), &context));
  EXPECT_EQ(box.itemListBox.get(), created);
  EXPECT_TRUE(HoldsExactly(context.metadata.album, L"one"));
  EXPECT_TRUE(HoldsExactly(context.metadata.name, L"two"));
}

TEST(BoxMeta, FailingItemListDoesNotFailIt) {
  // A size of 7 leaves a negative payload; the next header follows all the same.
  const Read meta(VersionAndFlags() + SizedBox(7, "ilst") + Box("ilst", DataItem("alb", "Album")) +
                  Bytes().Fill(1));
  EXPECT_TRUE(meta.ok);
  EXPECT_TRUE(HoldsExactly(meta.context.metadata.album, L"Album"));
}

TEST(BoxMeta, ChildOfSizeZeroIsTheRest) {
  const Bytes payload = VersionAndFlags() + SizedBox(0, "ilst", DataItem("alb", "Album"));
  const Read meta(payload);
  EXPECT_TRUE(HoldsExactly(meta.context.metadata.album, L"Album"));
  EXPECT_EQ(meta.reader.pos, static_cast<int>(payload.size()));
}

TEST(BoxMeta, NullReaderOrNegativeSizeFails) {
  mmBufReader reader("\0\0\0\0", 4);
  Mp4Context context;
  BoxMeta box;
  EXPECT_FALSE(box.ReadData(nullptr, 8, &context));
  EXPECT_FALSE(box.ReadData(&reader, -1, &context));
  EXPECT_EQ(reader.pos, 0);
}

TEST(BoxMeta, WithoutContextTheItemListIsPassedOver) {
  const Bytes payload = VersionAndFlags() + Box("ilst", DataItem("alb", "Album"));
  mmBufReader reader(payload.data(), payload.size());
  BoxMeta box;
  EXPECT_TRUE(box.ReadData(&reader, static_cast<long long>(payload.size()), nullptr));
  EXPECT_TRUE(reader.IsEnd());
}
