#include <gtest/gtest.h>

#include "boxes/description/BoxESDS.h"
#include "io/ScanControl.h"
#include "tests/SampleEntries.h"

using namespace fixture;

namespace {

const Bytes kAac{0x12, 0x10};

std::uint32_t FormatAfter(unsigned objectType) {
  OneTrack one;
  one.track->format = mp4::FourCC("drms");
  const Bytes payload = EsdsPayload(objectType, kAac);
  mmBufReader reader(payload.data(), payload.size());
  EXPECT_TRUE(BoxESDS().ReadData(&reader, static_cast<long long>(payload.size()), &one.context));
  return one.track->format;
}

}  // namespace

TEST(BoxESDS, KeepsTheDecoderSpecificInfo) {
  OneTrack one;
  const Bytes payload = EsdsPayload(0x40, kAac) + Bytes().Fill(4, 0xAA);
  mmBufReader reader(payload.data(), payload.size());
  EXPECT_TRUE(BoxESDS().ReadData(&reader, 31, &one.context));
  EXPECT_EQ(AsText(kAac), one.ExtraData());
  EXPECT_EQ(31, reader.GetPos());
}

TEST(BoxESDS, LeavesTheFormatOfAacAlone) {
  EXPECT_EQ(mp4::FourCC("drms"), FormatAfter(0x40));
  EXPECT_EQ(mp4::FourCC("drms"), FormatAfter(0x20));
  EXPECT_EQ(mp4::FourCC("drms"), FormatAfter(0xFF));
}

TEST(BoxESDS, NamesMp3AndMpegVideo) {
  EXPECT_EQ(mp4::FourCC("MP3 "), FormatAfter(0x69));
  EXPECT_EQ(mp4::FourCC("MP3 "), FormatAfter(0x6B));
  EXPECT_EQ(mp4::FourCC("MP1V"), FormatAfter(0x6A));
  EXPECT_EQ(mp4::FourCC("MP2V"), FormatAfter(0x60));
  EXPECT_EQ(mp4::FourCC("MP2V"), FormatAfter(0x65));
}

TEST(BoxESDS, FoldsTheCaseOfObjectTypesThatAreLetters) {
  EXPECT_EQ(mp4::FourCC("MP3 "), FormatAfter(0x49));  // 'I' finds 'i', 0x69
  EXPECT_EQ(mp4::FourCC("MP1V"), FormatAfter(0x4A));  // 'J' finds 'j', 0x6A
  EXPECT_EQ(mp4::FourCC("MP2V"), FormatAfter(0x41));  // 'A' finds 'a', 0x61
}

TEST(BoxESDS, SkipsNoStreamFlagsWithoutTheOuterDescriptor) {
  OneTrack one;
  const Bytes payload = Bytes()
                            .Be32(0)
                            .Byte(2)
                            .Byte(30)
                            .Be16(1)
                            .Byte(4)
                            .Byte(17)
                            .Byte(0x40)
                            .Fill(12)
                            .Byte(5)
                            .Byte(2)
                            .Append(kAac)
                            .Fill(3);
  mmBufReader reader(payload.data(), payload.size());
  EXPECT_TRUE(BoxESDS().ReadData(&reader, 30, &one.context));
  EXPECT_EQ(AsText(kAac), one.ExtraData());
  EXPECT_EQ(30, reader.GetPos());
}

TEST(BoxESDS, DoesNotHandleTheOptionalFieldsOfTheStream) {
  OneTrack one;
  // Flags 0x80 announce two bytes more; they are taken for the next descriptor.
  const Bytes payload =
      Bytes().Be32(0).Byte(3).Byte(40).Be16(1).Byte(0x80).Be16(7).Byte(4).Byte(17).Fill(20);
  mmBufReader reader(payload.data(), payload.size());
  EXPECT_TRUE(BoxESDS().ReadData(&reader, 33, &one.context));
  EXPECT_EQ(nullptr, one.track->extraData[0]);
  EXPECT_EQ(33, reader.GetPos());
}

TEST(BoxESDS, ReadsLengthsOfUpToFourBytes) {
  OneTrack one;
  const Bytes info = Bytes().Fill(0x81, 0x5A);
  // 0x80 0x80 0x81 0x01 is 1 << 7 | 1 = 129.
  const Bytes payload = Bytes()
                            .Be32(0)
                            .Append({3, 0x80, 0x80, 0x81, 0x20})
                            .Be16(1)
                            .Byte(0)
                            .Append({4, 0x80, 0x80, 0x81, 0x10})
                            .Byte(0x40)
                            .Fill(12)
                            .Append({5, 0x80, 0x80, 0x81, 0x01})
                            .Append(info)
                            .Append({6, 1, 2});
  const auto size = static_cast<long long>(payload.size());
  mmBufReader reader(payload.data(), payload.size());
  EXPECT_TRUE(BoxESDS().ReadData(&reader, size, &one.context));
  EXPECT_EQ(AsText(info), one.ExtraData());
  EXPECT_EQ(size, reader.GetPos());
}

TEST(BoxESDS, EndsALengthAfterItsFourthByte) {
  OneTrack one;
  const Bytes payload = Bytes()
                            .Be32(0)
                            .Append({3, 0xFF, 0xFF, 0xFF, 0xFF})
                            .Be16(1)
                            .Byte(0)
                            .Append({4, 0x80, 0x80, 0x80, 0x80})
                            .Byte(0x40)
                            .Fill(12)
                            .Append({5, 0x80, 0x80, 0x80, 0x82})  // 2, top bit set
                            .Append(kAac)
                            .Append({6, 1, 2});
  mmBufReader reader(payload.data(), payload.size());
  EXPECT_TRUE(BoxESDS().ReadData(&reader, static_cast<long long>(payload.size()), &one.context));
  EXPECT_EQ(AsText(kAac), one.ExtraData());
}

TEST(BoxESDS, KeepsNothingWithoutADecoderConfiguration) {
  OneTrack one;
  one.track->format = mp4::FourCC("mp4a");
  const Bytes other = Bytes().Be32(0).Append({3, 25, 0, 1, 0, 6, 17, 0x69}).Fill(23);
  mmBufReader reader(other.data(), other.size());
  EXPECT_TRUE(BoxESDS().ReadData(&reader, 31, &one.context));
  EXPECT_EQ(mp4::FourCC("mp4a"), one.track->format);
  EXPECT_EQ(nullptr, one.track->extraData[0]);
  EXPECT_EQ(31, reader.GetPos());
}

TEST(BoxESDS, KeepsEarlierExtradataWithoutDecoderSpecificInfo) {
  OneTrack one;
  Bytes payload = EsdsPayload(0x40, kAac);
  mmBufReader first(payload.data(), payload.size());
  BoxESDS().ReadData(&first, 31, &one.context);
  const Bytes none =
      Bytes().Be32(0).Append({3, 20, 0, 1, 0, 4, 13, 0x40}).Fill(12).Append({6, 1, 2, 0});
  mmBufReader second(none.data(), none.size());
  EXPECT_TRUE(BoxESDS().ReadData(&second, 28, &one.context));
  EXPECT_EQ(AsText(kAac), one.ExtraData());
  EXPECT_EQ(28, second.GetPos());
}

TEST(BoxESDS, StepsBackToItsEndWhenTheDescriptorsReachPastIt) {
  OneTrack one;
  const Bytes payload = EsdsPayload(0x40, kAac) + Bytes().Fill(8);
  mmBufReader reader(payload.data(), payload.size());
  EXPECT_TRUE(BoxESDS().ReadData(&reader, 10, &one.context));
  EXPECT_EQ(AsText(kAac), one.ExtraData());
  EXPECT_EQ(10, reader.GetPos());
}

TEST(BoxESDS, CountsTheBytesThatExist) {
  OneTrack one;
  // Up to the info's length byte: 4 + 2 + 2 + 1 + 2 + 13 + 2 = 26 bytes; it announces 127, 2 exist.
  Bytes payload = EsdsPayload(0x40, kAac).Cut(25).Byte(127).Append(kAac);
  FileReader open(payload);
  EXPECT_TRUE(BoxESDS().ReadData(&open.reader, 156, &one.context));
  EXPECT_EQ(AsText(kAac), one.ExtraData());
  // Declared: 26 + 127 + 3 = 156 bytes. Reading stopped at 28, then 3 bytes were skipped.
  EXPECT_EQ(31, open.reader.GetPos());
}

TEST(BoxESDS, WithoutATrackPassesOverItsPayload) {
  Mp4Context context;
  const Bytes payload = EsdsPayload(0x69, kAac);
  mmBufReader reader(payload.data(), payload.size());
  EXPECT_TRUE(BoxESDS().ReadData(&reader, 31, &context));
  EXPECT_EQ(31, reader.GetPos());
  reader.SetPos(0);
  EXPECT_TRUE(BoxESDS().ReadData(&reader, 31, nullptr));
  EXPECT_EQ(31, reader.GetPos());
}

TEST(BoxESDS, FailsWithoutReaderOrPayload) {
  OneTrack one;
  const Bytes payload = EsdsPayload(0x40, kAac);
  mmBufReader reader(payload.data(), payload.size());
  EXPECT_FALSE(BoxESDS().ReadData(nullptr, 31, &one.context));
  EXPECT_FALSE(BoxESDS().ReadData(&reader, 0, &one.context));
  EXPECT_FALSE(BoxESDS().ReadData(&reader, -1, &one.context));
  EXPECT_EQ(0, reader.GetPos());
}

TEST(BoxESDS, FailsWhenTheAccountRefuses) {
  OneTrack one;
  const Bytes payload = EsdsPayload(0x40, kAac);
  mmBufReader reader(payload.data(), payload.size());
  mp4::ScanControl scan(31);
  scan.TakeMemory(INT64_MAX);
  reader.AttachScan(&scan);
  EXPECT_FALSE(BoxESDS().ReadData(&reader, 31, &one.context));
  EXPECT_EQ(0U, one.track->extraDataSize[0]);
  EXPECT_EQ(31, reader.GetPos());
}
