#include <gtest/gtest.h>

#include "io/FourCC.h"
#include "iso/BoxRun.h"
#include "tests/Bytes.h"

namespace {

using mp4::BoxBytes;
using mp4::BoxRun;
using mp4::FourCC;

/// The box at the front of bytes of which the parent has `left`.
bool ReadFront(const Bytes& bytes, std::uint64_t left, BoxBytes* box) {
  return mp4::ReadBoxAt(bytes.data(), bytes.size(), left, box);
}

}  // namespace

TEST(BoxRun, GivesOneBoxAfterTheOther) {
  const Bytes bytes = Box("trun", Bytes().Be32(7)) + Box("free") + Box("tfdt", Bytes().Fill(3));
  BoxRun run(bytes.data(), bytes.size());
  BoxBytes box;
  ASSERT_TRUE(run.Next(&box));
  EXPECT_EQ(box.type, FourCC("trun"));
  EXPECT_EQ(box.at, 0u);
  EXPECT_EQ(box.size, 12u);
  EXPECT_EQ(box.headerSize, 8);
  EXPECT_FALSE(box.cut);
  EXPECT_EQ(box.userType, nullptr);
  EXPECT_EQ(box.payload.Left(), 4u);
  EXPECT_EQ(box.payload.U32(), 7u);
  ASSERT_TRUE(run.Next(&box));
  EXPECT_EQ(box.type, FourCC("free"));
  EXPECT_EQ(box.at, 12u);
  EXPECT_EQ(box.payload.Left(), 0u);
  ASSERT_TRUE(run.Next(&box));
  EXPECT_EQ(box.at, 20u);
  EXPECT_EQ(box.size, 11u);
  EXPECT_FALSE(run.Next(&box));
  EXPECT_FALSE(run.Next(&box));
}

TEST(BoxRun, ReadsTheBoxesOfAPayload) {
  const Bytes bytes = Bytes().Fill(4) + Box("moof");
  mp4::FieldView payload(bytes.data(), bytes.size());
  payload.Skip(4);
  BoxRun run(payload);
  BoxBytes box;
  ASSERT_TRUE(run.Next(&box));
  EXPECT_EQ(box.type, FourCC("moof"));
  EXPECT_FALSE(BoxRun(mp4::FieldView(bytes.data(), 0)).Next(&box));
}

TEST(BoxRun, EndsBeforeHalfAHeader) {
  BoxBytes box;
  const Bytes seven = Bytes().Be32(7).Text("fre");
  EXPECT_FALSE(BoxRun(seven.data(), seven.size()).Next(&box));
  const Bytes eight = Box("free");
  EXPECT_TRUE(BoxRun(eight.data(), eight.size()).Next(&box));
}

TEST(BoxRun, EndsAtASizeBelowTheHeader) {
  const Bytes bytes = SizedBox(7, "free") + Box("free");
  BoxRun run(bytes.data(), bytes.size());
  BoxBytes box;
  EXPECT_FALSE(run.Next(&box));
  EXPECT_FALSE(run.Next(&box)) << "what follows is not taken for a box";
}

TEST(ReadBoxAt, SizeOfZeroIsTheRestOfTheParent) {
  BoxBytes box;
  ASSERT_TRUE(ReadFront(SizedBox(0, "mdat", Bytes().Fill(4)), 100, &box));
  EXPECT_EQ(box.size, 100u);
  EXPECT_FALSE(box.cut);
  EXPECT_EQ(box.payload.Left(), 4u) << "the bytes at hand";
}

TEST(ReadBoxAt, SizesOf64Bits) {
  BoxBytes box;
  const Bytes header = SizedBox(1, "mdat", Bytes().Be64(24)) + Bytes().Fill(8);
  ASSERT_TRUE(ReadFront(header, 24, &box));
  EXPECT_EQ(box.headerSize, 16);
  EXPECT_EQ(box.size, 24u);
  EXPECT_EQ(box.payload.Left(), 8u);
  EXPECT_TRUE(ReadFront(SizedBox(1, "mdat", Bytes().Be64(16)), 16, &box));
  EXPECT_FALSE(ReadFront(SizedBox(1, "mdat", Bytes().Be64(15)), 16, &box));
  EXPECT_FALSE(ReadFront(SizedBox(1, "mdat", Bytes().Be32(0)), 100, &box)) << "the size is cut";
}

TEST(ReadBoxAt, UserTypesBelongToTheHeader) {
  BoxBytes box;
  const Bytes user = Box("uuid", Bytes().Fill(16, 5) + Bytes().Be32(9));
  ASSERT_TRUE(ReadFront(user, 28, &box));
  EXPECT_EQ(box.headerSize, 24);
  ASSERT_NE(box.userType, nullptr);
  EXPECT_EQ(box.userType, user.data() + 8);
  EXPECT_EQ(box.payload.U32(), 9u);
  EXPECT_FALSE(ReadFront(Box("uuid", Bytes().Fill(15)), 100, &box));
}

TEST(ReadBoxAt, BoxesThatReachPastTheParentAreCut) {
  BoxBytes box;
  const Bytes bytes = SizedBox(50, "free", Bytes().Fill(12));
  ASSERT_TRUE(ReadFront(bytes, 49, &box));
  EXPECT_TRUE(box.cut);
  EXPECT_EQ(box.size, 49u);
  ASSERT_TRUE(ReadFront(bytes, 50, &box));
  EXPECT_FALSE(box.cut);
  EXPECT_EQ(box.payload.Left(), 12u);
}
