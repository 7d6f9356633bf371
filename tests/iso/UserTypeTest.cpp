#include <gtest/gtest.h>

#include "io/MemorySource.h"
#include "iso/UserType.h"
#include "tests/Bytes.h"

namespace {

mp4::UserTypeKind KindOf(const Bytes& box) {
  mp4::MemorySource memory(box.data(), box.size());
  mp4::CachedSource source(&memory);
  mp4::BoxTree tree(&source);
  return mp4::KindOfUserType(&tree, tree.FirstChild(mp4::kRootBox));
}

Bytes SampleType() {
  return {0xA2, 0x39, 0x4F, 0x52, 0x5A, 0x9B, 0x4F, 0x14,
          0xA2, 0x44, 0x6C, 0x42, 0x7C, 0x64, 0x8D, 0xF4};
}

TEST(UserType, AllSixteenBytesTell) {
  EXPECT_EQ(mp4::UserTypeKind::kSampleEncryption, KindOf(Box("uuid", SampleType())));
  EXPECT_EQ(mp4::UserTypeKind::kOther, KindOf(Box("uuid", Bytes(SampleType()).Cut(15).Byte(0xF5))));
}

TEST(UserType, ABoxTooShortOrOfAnotherTypeHasNone) {
  EXPECT_EQ(mp4::UserTypeKind::kOther, KindOf(Box("uuid", Bytes(SampleType()).Cut(15))));
  EXPECT_EQ(mp4::UserTypeKind::kOther, KindOf(Box("free", SampleType())));
}

}  // namespace
