#include <gtest/gtest.h>

#include "boxes/base/FullBoxHeader.h"
#include "io/Mp4StreamReader.h"
#include "io/mmBufReader.h"
#include "tests/Bytes.h"
#include "tests/Fixtures.h"

namespace {

TEST(FullBoxHeader, IsAVersionAndThreeBytesOfFlags) {
  const Bytes bytes = Bytes().Be32(0x01020304).Be32(5);
  mmBufReader reader(bytes.data(), bytes.size());
  const mp4::FullBoxHeader header = mp4::ReadFullBoxHeader(&reader);
  EXPECT_EQ(header.version, 1u);
  EXPECT_EQ(header.flags, 0x020304u);
  EXPECT_EQ(reader.GetBe32(), 5u);
}

TEST(FullBoxHeader, VersionAloneAndNeitherEndAtTheSamePlace) {
  const Bytes bytes = Bytes().Be32(0x01020304).Be32(5);
  mmBufReader reader(bytes.data(), bytes.size());
  EXPECT_EQ(mp4::ReadVersion(&reader), 1u);
  EXPECT_EQ(reader.GetPos(), 4);
  reader.SetPos(0);
  mp4::SkipFullBoxHeader(&reader);
  EXPECT_EQ(reader.GetPos(), 4);
}

// Where a file ends inside the header, a seek goes on and a read does not.
TEST(FullBoxHeader, EndOfAFileTellsTheThreeWaysApart) {
  const TempFile file(Bytes().Be32(0).Be16(0x0102));
  const auto positionBehind = [&](auto pass) {
    Mp4StreamReader reader;
    EXPECT_TRUE(reader.SetFilePath(file.wide().c_str()));
    reader.SetPos(5);
    pass(&reader);
    return reader.GetPos();
  };
  EXPECT_EQ(positionBehind([](auto* reader) { mp4::ReadFullBoxHeader(reader); }), 6);
  EXPECT_EQ(positionBehind([](auto* reader) { mp4::ReadVersion(reader); }), 9);
  EXPECT_EQ(positionBehind([](auto* reader) { mp4::SkipFullBoxHeader(reader); }), 9);
}

}  // namespace
