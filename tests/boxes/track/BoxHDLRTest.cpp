#include <gtest/gtest.h>

#include "boxes/track/BoxHDLR.h"
#include "io/Limits.h"
#include "io/Mp4StreamReader.h"
#include "io/ScanControl.h"
#include "tests/Fixtures.h"
#include "tests/TrackFixtures.h"

using fixture::Outcome;
using fixture::ReadBox;

namespace {

/// A handler box whose name bytes are given as they stand.
Bytes Handler(std::string_view type, const Bytes& name) {
  return FullBox("hdlr", 0, 0, Bytes().Text("mhlr").Text(type).Fill(12, 0xAA) + name);
}

}  // namespace

TEST(BoxHDLR, HandlerTypeIsPublished) {
  fixture::OneTrack one;
  BoxHDLR box;
  EXPECT_TRUE(ReadBox(&box, fixture::Hdlr("soun"), &one.context).ok);
  EXPECT_EQ(box.GetHandlerType(), 0x6E756F73u);
  EXPECT_EQ(one.track->handlerType, 0x6E756F73u);
  EXPECT_FALSE(box.IsVideo());
}

TEST(BoxHDLR, OnlyVideIsVideo) {
  for (const char* type : {"soun", "hint", "VIDE", "text"}) {
    BoxHDLR box;
    ReadBox(&box, fixture::Hdlr(type), nullptr);
    EXPECT_FALSE(box.IsVideo()) << type;
  }
  BoxHDLR box;
  EXPECT_FALSE(box.IsVideo());
  ReadBox(&box, fixture::Hdlr("vide"), nullptr);
  EXPECT_TRUE(box.IsVideo());
}

TEST(BoxHDLR, ZeroTerminatedNameIsTheWholeRemainder) {
  BoxHDLR box;
  const Outcome end = ReadBox(&box, Handler("vide", Bytes().Text("Video").Byte(0)), nullptr);
  EXPECT_TRUE(end.ok);
  EXPECT_EQ(end.pos, 30);
  ASSERT_NE(box.name, nullptr);
  EXPECT_STREQ(box.name.get(), "Video");
  EXPECT_EQ(box.name[6], 0);  // the terminator added behind the stored one
}

TEST(BoxHDLR, CountedNameLeavesItsLengthByteOut) {
  BoxHDLR box;
  const Outcome end = ReadBox(&box, Handler("vide", Bytes().Byte(5).Text("Video")), nullptr);
  EXPECT_EQ(end.pos, 30);
  EXPECT_STREQ(box.name.get(), "Video");
}

TEST(BoxHDLR, CountThatIsOneOffIsPartOfTheName) {
  for (const unsigned count : {4u, 6u}) {
    BoxHDLR box;
    const Outcome end = ReadBox(&box, Handler("vide", Bytes().Byte(count).Text("Video")), nullptr);
    EXPECT_EQ(end.pos, 30);
    EXPECT_EQ(std::string(box.name.get()), std::string(1, static_cast<char>(count)) + "Video");
  }
}

TEST(BoxHDLR, LongestCountedName) {
  BoxHDLR box;
  const Bytes name = Bytes().Byte(255).Fill(255, 'x');
  EXPECT_EQ(ReadBox(&box, Handler("vide", name), nullptr).pos, 24 + 256);
  EXPECT_EQ(std::string(box.name.get()), std::string(255, 'x'));
}

TEST(BoxHDLR, PayloadOf24HasAnEmptyName) {
  BoxHDLR box;
  EXPECT_EQ(ReadBox(&box, Handler("vide", Bytes()), nullptr).pos, 24);
  ASSERT_NE(box.name, nullptr);
  EXPECT_STREQ(box.name.get(), "");
}

TEST(BoxHDLR, PayloadOf25IsAnEmptyCountedNameOrOneCharacter) {
  BoxHDLR box;
  EXPECT_EQ(ReadBox(&box, Handler("vide", Bytes{0}), nullptr).pos, 25);
  EXPECT_STREQ(box.name.get(), "");
  EXPECT_EQ(ReadBox(&box, Handler("vide", Bytes{'n'}), nullptr).pos, 25);
  EXPECT_STREQ(box.name.get(), "n");
}

TEST(BoxHDLR, PayloadOf4To23HasNoNameAndEndsWhereItEnds) {
  const Bytes bytes = Handler("vide", Bytes().Text("name").Byte(0));
  for (long long size = 4; size <= 23; ++size) {
    fixture::OneTrack one;
    BoxHDLR box;
    mmBufReader reader(bytes.data(), bytes.size());
    reader.SetPos(8);
    EXPECT_TRUE(box.ReadData(&reader, size, &one.context));
    EXPECT_EQ(reader.GetPos(), 8 + size);
    EXPECT_EQ(box.name, nullptr);
    EXPECT_EQ(one.track->handlerType, 0x65646976u);
  }
}

TEST(BoxHDLR, FailsWithoutReaderOrBelow4Bytes) {
  fixture::OneTrack one;
  BoxHDLR box;
  const Bytes bytes = fixture::Hdlr("vide");
  mmBufReader reader(bytes.data(), bytes.size());
  EXPECT_FALSE(box.ReadData(nullptr, 40, &one.context));
  EXPECT_FALSE(box.ReadData(&reader, 3, &one.context));
  EXPECT_FALSE(box.ReadData(&reader, -8, &one.context));
  EXPECT_EQ(reader.GetPos(), 0);
  EXPECT_EQ(one.track->handlerType, 0u);
}

TEST(BoxHDLR, SecondReadingReplacesTheName) {
  BoxHDLR box;
  ReadBox(&box, Handler("vide", Bytes().Text("first").Byte(0)), nullptr);
  ReadBox(&box, Handler("soun", Bytes().Text("2nd").Byte(0)), nullptr);
  EXPECT_STREQ(box.name.get(), "2nd");
  Bytes nameless = Handler("soun", Bytes());
  ReadBox(&box, nameless.Cut(8 + 20), nullptr);
  EXPECT_EQ(box.name, nullptr);
}

TEST(BoxHDLR, NameLongerThanMemoryKeepsWhatExists) {
  BoxHDLR box;
  const Bytes bytes = Handler("vide", Bytes().Text("abc"));
  mmBufReader reader(bytes.data(), bytes.size());
  reader.SetPos(8);
  EXPECT_TRUE(box.ReadData(&reader, 0xFFFFFFF7, nullptr));
  EXPECT_STREQ(box.name.get(), "abc");
}

TEST(BoxHDLR, NameLongerThanTheFileKeepsWhatExists) {
  const Bytes bytes = Handler("vide", Bytes().Text("abc"));
  const TempFile file(bytes);
  Mp4StreamReader reader;
  ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
  reader.SetPos(8);
  BoxHDLR box;
  EXPECT_TRUE(box.ReadData(&reader, 1000, nullptr));
  EXPECT_STREQ(box.name.get(), "abc");
  EXPECT_EQ(reader.GetPos(), static_cast<long long>(bytes.size()));
}

TEST(BoxHDLR, NameAtTheEndOfTheFileTakesTheByteBefore) {
  // Nothing is left to read, so the step back over the first name byte lands in the reserved bytes.
  const TempFile file(Handler("vide", Bytes()));
  Mp4StreamReader reader;
  ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
  reader.SetPos(8);
  BoxHDLR box;
  EXPECT_TRUE(box.ReadData(&reader, 30, nullptr));
  EXPECT_STREQ(box.name.get(), "\xAA");
  EXPECT_EQ(reader.GetPos(), 32);
}

TEST(BoxHDLR, WithoutTrackNothingIsPublished) {
  Mp4Context context;
  BoxHDLR box;
  EXPECT_TRUE(ReadBox(&box, fixture::Hdlr("vide"), &context).ok);
  EXPECT_TRUE(box.IsVideo());
}

TEST(BoxHDLR, SpentAccountFailsItAtItsEnd) {
  fixture::OneTrack one;
  BoxHDLR box;
  const Bytes bytes = Handler("vide", Bytes().Text("Video").Byte(0));
  mmBufReader reader(bytes.data(), bytes.size());
  mp4::ScanControl scan(reader.GetSize());
  reader.AttachScan(&scan);
  reader.SetPos(8);
  const std::int64_t everything =
      reader.GetSize() * mp4::limits::kMemoryPerSourceByte + mp4::limits::kSpareMemory;
  ASSERT_TRUE(scan.TakeMemory(everything - 5));
  EXPECT_FALSE(box.ReadData(&reader, 30, &one.context));
  EXPECT_EQ(reader.GetPos(), 38);
  EXPECT_EQ(box.name, nullptr);
  EXPECT_EQ(one.track->handlerType, 0u);
}
