#include <gtest/gtest.h>

#include "boxes/description/BoxSTSD.h"
#include "io/ScanControl.h"
#include "tests/SampleEntries.h"

using namespace fixture;

namespace {

/// Reads an entry of `size` bytes from its format on, followed by 64 bytes of something else.
struct Read {
  Read(const Bytes& bytes, long long size, std::uint32_t format = 0) {
    one.track->format = format;
    const Bytes all = bytes + Bytes().Fill(64, 0xAA);
    mmBufReader reader(all.data(), all.size());
    result = entry.ReadData(&reader, size, &one.context);
    position = reader.GetPos();
  }
  explicit Read(const Bytes& bytes) : Read(bytes, static_cast<long long>(bytes.size())) {}

  OneTrack one;
  BoxSTSD::VisualSampleEntry entry;
  bool result;
  long long position;
};

std::string Name(const Read& read) {
  return std::string(read.one.track->compressorName, sizeof read.one.track->compressorName);
}

/// A sequence header atom: tag, length and `data` bytes numbered from 1.
Bytes Sequence(std::uint32_t length, unsigned data) {
  Bytes bytes = Bytes().Text("SEQH").Be32(length);
  for (unsigned i = 1; i <= data; ++i) bytes.Byte(i);
  return bytes;
}

const Bytes kAvcc{1, 0x64, 0, 0x1F, 0xFF};

}  // namespace

TEST(VisualSampleEntry, RecordsPictureAndFormat) {
  const Read read(VisualFields("avc1"));
  EXPECT_TRUE(read.result);
  EXPECT_EQ(mp4::FourCC("avc1"), read.one.track->format);
  EXPECT_EQ(640U, read.one.track->videoWidth);
  EXPECT_EQ(480U, read.one.track->videoHeight);
  EXPECT_EQ(24U, read.one.track->videoDepth);
  EXPECT_EQ(82, read.position);
}

TEST(VisualSampleEntry, KeepsAFormatAlreadyRecorded) {
  const Read read(VisualFields("avc1"), 82, mp4::FourCC("MP2V"));
  EXPECT_EQ(mp4::FourCC("MP2V"), read.one.track->format);
  EXPECT_EQ(640U, read.one.track->videoWidth);
}

TEST(VisualSampleEntry, ReadsTheCompressorNameBehindItsLength) {
  const Read read(VisualFields("avc1", Bytes().Byte(5).Text("codec").Fill(26, 'z')));
  EXPECT_EQ("codec" + std::string(26, 'z') + std::string(1, '\0'), Name(read));
  EXPECT_EQ(24U, read.one.track->videoDepth);
}

TEST(VisualSampleEntry, ReadsANameLengthOf31AsALength) {
  const Read read(VisualFields("avc1", Bytes().Byte(31).Fill(31, 'x')));
  EXPECT_EQ(std::string(31, 'x') + std::string(1, '\0'), Name(read));
}

TEST(VisualSampleEntry, ReadsALengthAbove31AsTheFirstLetter) {
  const Read read(VisualFields("avc1", Bytes().Byte(32).Fill(31, 'x')));
  EXPECT_EQ(" " + std::string(31, 'x'), Name(read));
  EXPECT_EQ(24U, read.one.track->videoDepth);
  EXPECT_EQ(82, read.position);
}

TEST(VisualSampleEntry, ReadsTheAvcConfiguration) {
  const Read read(VisualFields("avc1") + Box("pasp", Bytes().Fill(8)) + Box("avcC", kAvcc));
  EXPECT_TRUE(read.result);
  EXPECT_EQ(AsText(kAvcc), read.one.ExtraData());
  EXPECT_NE(nullptr, read.entry.avcc);
  EXPECT_EQ(111, read.position);
}

TEST(VisualSampleEntry, ReadsTheStreamDescriptor) {
  const Read read(VisualFields("mp4v") + Box("esds", EsdsPayload(0x60, {9, 8, 7})));
  EXPECT_EQ(AsText({9, 8, 7}), read.one.ExtraData());
  EXPECT_EQ(mp4::FourCC("MP2V"), read.one.track->format);
  EXPECT_NE(nullptr, read.entry.esds);
  EXPECT_EQ(122, read.position);
}

TEST(VisualSampleEntry, ReadsNoChildBelow90Bytes) {
  const Read read(VisualFields("avc1") + Box("avcC", kAvcc), 89);
  EXPECT_TRUE(read.result);
  EXPECT_EQ(nullptr, read.entry.avcc);
  EXPECT_EQ(nullptr, read.one.track->extraData[0]);
  EXPECT_EQ(89, read.position);
}

TEST(VisualSampleEntry, ReadsAChildFrom90Bytes) {
  const Read read(VisualFields("avc1") + Box("avcC", kAvcc), 90);
  EXPECT_NE(nullptr, read.entry.avcc);
  EXPECT_EQ(AsText(kAvcc), read.one.ExtraData());
  EXPECT_EQ(90, read.position);
}

TEST(VisualSampleEntry, StopsWhereNoChildHeaderFits) {
  const Bytes bytes = VisualFields("avc1") + Box("pasp") + Box("avcC", kAvcc);
  EXPECT_EQ(nullptr, Read(bytes, 97).entry.avcc);  // 90 + 8 > 97
  EXPECT_EQ(97, Read(bytes, 97).position);
  EXPECT_NE(nullptr, Read(bytes, 98).entry.avcc);
  EXPECT_EQ(98, Read(bytes, 98).position);
}

TEST(VisualSampleEntry, TakesAChildSizeOfZeroAsTheRest) {
  const Read read(VisualFields("avc1") + SizedBox(0, "avcC", kAvcc));
  EXPECT_EQ(AsText(kAvcc), read.one.ExtraData());
  EXPECT_EQ(95, read.position);
}

TEST(VisualSampleEntry, IgnoresAChildThatFails) {
  const Read read(VisualFields("mp4v") + Box("esds") + Box("avcC", kAvcc));
  EXPECT_TRUE(read.result);
  EXPECT_EQ(AsText(kAvcc), read.one.ExtraData());
  EXPECT_EQ(103, read.position);
}

TEST(VisualSampleEntry, EndsAtItsOwnEndWhenAChildReachesPastIt) {
  const Read read(VisualFields("avc1") + SizedBox(0xFFFFFFFF, "avcC", kAvcc));
  EXPECT_TRUE(read.result);
  EXPECT_EQ(95, read.position);
}

TEST(VisualSampleEntry, ReadsOnFromInsideAChildBelowEightBytes) {
  // A size of 4 steps back over the type, which is then the next size.
  const Bytes bytes = VisualFields("avc1") + SizedBox(4, "abcd", Box("avcC", kAvcc));
  const Read read(bytes);
  EXPECT_TRUE(read.result);
  EXPECT_EQ(nullptr, read.entry.avcc);
  EXPECT_EQ(static_cast<long long>(bytes.size()), read.position);
}

TEST(VisualSampleEntry, BuildsTheSvq3Extradata) {
  const Read read(VisualFields("SVQ3") + Box("SMI ", Sequence(4, 4)));
  EXPECT_TRUE(read.result);
  const Bytes expected = Bytes().Text("SVQ3").Fill(86).Text("SEQH").Be32(4).Append({1, 2, 3, 4});
  EXPECT_EQ(102U, read.one.track->extraDataSize[0]);
  EXPECT_EQ(AsText(expected), read.one.ExtraData());
  EXPECT_EQ(102, read.position);
  for (int i = 102; i < 112; ++i) EXPECT_EQ(0, read.one.track->extraData[0][i]);  // 126 & ~15
}

// 104 bytes take (104 + 24) & ~15 = 128; a sanitizer sees any fewer.
TEST(VisualSampleEntry, ZerosFollowTheSvq3Extradata) {
  const Read read(VisualFields("SVQ3") + Box("SMI ", Sequence(6, 6)));
  ASSERT_EQ(104U, read.one.track->extraDataSize[0]);
  for (int i = 104; i < 128; ++i) EXPECT_EQ(0, read.one.track->extraData[0][i]) << i;
}

TEST(VisualSampleEntry, FindsTheChildBehindTheSvq3Header) {
  const Bytes smi = Box("SMI ", Sequence(4, 9));
  const Read read(VisualFields("SVQ3") + smi + Box("avcC", kAvcc));
  EXPECT_EQ(AsText(kAvcc), read.one.ExtraData());
}

TEST(VisualSampleEntry, StoresNoSvq3HeaderWithoutData) {
  for (const std::uint32_t length : {0U, 0xFFFFFFFFU, 0x80000000U}) {
    const Read read(VisualFields("SVQ3") + Box("SMI ", Sequence(length, 4)));
    EXPECT_TRUE(read.result);
    EXPECT_EQ(nullptr, read.one.track->extraData[0]);
    EXPECT_EQ(102, read.position);
  }
}

TEST(VisualSampleEntry, OneByteOfDataMakesAnSvq3Header) {
  const Read read(VisualFields("SVQ3") + Box("SMI ", Sequence(1, 1)));
  EXPECT_EQ(99U, read.one.track->extraDataSize[0]);
  EXPECT_EQ(99, read.position);
}

TEST(VisualSampleEntry, StoresAnSvq3HeaderOfUpToAThousandBytes) {
  const Read fits(VisualFields("SVQ3") + Box("SMI ", Sequence(992, 992)));
  EXPECT_EQ(1090U, fits.one.track->extraDataSize[0]);
  EXPECT_EQ(1090, fits.position);
  const Read tooLong(VisualFields("SVQ3") + Box("SMI ", Sequence(993, 993)));
  EXPECT_TRUE(tooLong.result);
  EXPECT_EQ(nullptr, tooLong.one.track->extraData[0]);
  EXPECT_EQ(1091, tooLong.position);
}

TEST(VisualSampleEntry, StoresNoSvq3HeaderThatEndsEarly) {
  OneTrack one;
  FileReader open(VisualFields("SVQ3") + SizedBox(116, "SMI ", Sequence(100, 50)));
  BoxSTSD::VisualSampleEntry entry;
  EXPECT_TRUE(entry.ReadData(&open.reader, 198, &one.context));
  EXPECT_EQ(nullptr, one.track->extraData[0]);
  EXPECT_EQ(198, open.reader.GetPos());
}

TEST(VisualSampleEntry, ReplacesAChildOfTheSameKind) {
  const Read read(VisualFields("avc1") + Box("avcC", kAvcc) + Box("avcC", Bytes{1, 2, 3, 4}));
  EXPECT_EQ(AsText({1, 2, 3, 4}), read.one.ExtraData());
}

TEST(VisualSampleEntry, ReadsZerosBehindTheEndOfTheFile) {
  OneTrack one;
  FileReader open(VisualFields("avc1").Cut(31));  // the width is whole, the height lacks a byte
  BoxSTSD::VisualSampleEntry entry;
  EXPECT_TRUE(entry.ReadData(&open.reader, 82, &one.context));
  EXPECT_EQ(640U, one.track->videoWidth);
  EXPECT_EQ(0x100U, one.track->videoHeight);  // 0x01E0 without its low byte
  EXPECT_EQ(0U, one.track->videoDepth);
}

TEST(VisualSampleEntry, WithoutATrackPassesOverItsPayload) {
  const Bytes bytes = VisualFields("SVQ3") + Box("SMI ", Sequence(4, 4)) + Box("avcC", kAvcc);
  const auto size = static_cast<long long>(bytes.size());
  mmBufReader reader(bytes.data(), bytes.size());
  BoxSTSD::VisualSampleEntry entry;
  EXPECT_TRUE(entry.ReadData(&reader, size, nullptr));
  EXPECT_EQ(size, reader.GetPos());
  EXPECT_FALSE(entry.ReadData(nullptr, size, nullptr));
}

TEST(VisualSampleEntry, FailsWhenTheAccountRefuses) {
  OneTrack one;
  const Bytes bytes = VisualFields("SVQ3") + Box("SMI ", Sequence(4, 4));
  mmBufReader reader(bytes.data(), bytes.size());
  mp4::ScanControl scan(static_cast<std::int64_t>(bytes.size()));
  scan.TakeBytes(INT64_MAX);
  reader.AttachScan(&scan);
  BoxSTSD::VisualSampleEntry entry;
  EXPECT_FALSE(entry.ReadData(&reader, 102, &one.context));
  EXPECT_EQ(102, reader.GetPos());
}
