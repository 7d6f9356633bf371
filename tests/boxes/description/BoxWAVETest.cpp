#include <gtest/gtest.h>

#include "boxes/description/BoxWAVE.h"
#include "io/ScanControl.h"
#include "tests/SampleEntries.h"

using namespace fixture;

namespace {

/// Reads `payload` as a wave atom of a track with `format`, followed by 64 bytes of something else.
struct Read {
  Read(std::uint32_t format, const Bytes& payload, long long size) {
    one.track->format = format;
    const Bytes all = payload + Bytes().Fill(64, 0xAA);
    mmBufReader reader(all.data(), all.size());
    result = BoxWAVE().ReadData(&reader, size, &one.context);
    position = reader.GetPos();
  }
  Read(std::uint32_t format, const Bytes& payload)
      : Read(format, payload, static_cast<long long>(payload.size())) {}

  OneTrack one;
  bool result;
  long long position;
};

Bytes Enda(unsigned flag) { return Box("enda", Bytes().Be16(flag)); }
Bytes Frma(std::string_view format) { return Box("frma", Bytes().Text(format)); }

}  // namespace

TEST(BoxWAVE, MarksLittleEndianIntegers) {
  const Read in24(mp4::FourCC("in24"), Frma("in24") + Enda(1) + Bytes().Fill(8));
  EXPECT_TRUE(in24.result);
  EXPECT_EQ(mp4::FourCC("42ni"), in24.one.track->format);
  EXPECT_EQ(30, in24.position);
  const Read in32(mp4::FourCC("in32"), Frma("in32") + Enda(256) + Bytes().Fill(8));
  EXPECT_EQ(mp4::FourCC("23ni"), in32.one.track->format);
  EXPECT_EQ(30, in32.position);
}

TEST(BoxWAVE, LeavesBigEndianAndOtherFormatsAlone) {
  EXPECT_EQ(mp4::FourCC("in24"), Read(mp4::FourCC("in24"), Enda(0)).one.track->format);
  EXPECT_EQ(mp4::FourCC("twos"), Read(mp4::FourCC("twos"), Enda(1)).one.track->format);
}

TEST(BoxWAVE, EndsAtTheFirstEnda) {
  const Read read(mp4::FourCC("in24"), Enda(0) + Enda(1) + Bytes().Fill(4));
  EXPECT_EQ(mp4::FourCC("in24"), read.one.track->format);
  EXPECT_EQ(24, read.position);
}

TEST(BoxWAVE, WalksInStepsOfEightBytesWhateverTheChildSays) {
  // The 12 bytes of the unknown child end between two steps: "enda" is not seen.
  const Read missed(mp4::FourCC("in24"), Box("abcd", Bytes().Fill(4)) + Enda(1) + Bytes().Fill(8));
  EXPECT_EQ(mp4::FourCC("in24"), missed.one.track->format);
  EXPECT_EQ(30, missed.position);
  const Read met(mp4::FourCC("in24"), Box("abcd", Bytes().Fill(8)) + Enda(1) + Bytes().Fill(8));
  EXPECT_EQ(mp4::FourCC("42ni"), met.one.track->format);
}

TEST(BoxWAVE, FindsAnEndaInsideAnUnknownChild) {
  const Read read(mp4::FourCC("in24"), Box("abcd", Enda(1) + Bytes().Fill(8)));
  EXPECT_EQ(mp4::FourCC("42ni"), read.one.track->format);
  EXPECT_EQ(26, read.position);
}

TEST(BoxWAVE, DoesNotParseAStreamDescriptorInside) {
  const Read read(mp4::FourCC("mp4a"), Box("esds", EsdsPayload(0x69, {0x12, 0x10})));
  EXPECT_EQ(mp4::FourCC("mp4a"), read.one.track->format);
  EXPECT_EQ(nullptr, read.one.track->extraData[0]);
  EXPECT_EQ(39, read.position);
}

TEST(BoxWAVE, WalksOnlyWhileMoreThanAHeaderRemains) {
  // Of 16 bytes the second step would need more than 8: an "enda" header there is not read.
  const Bytes payload = Box("abcd") + Enda(1);
  EXPECT_EQ(mp4::FourCC("in24"), Read(mp4::FourCC("in24"), payload, 16).one.track->format);
  EXPECT_EQ(16, Read(mp4::FourCC("in24"), payload, 16).position);
  const Read more(mp4::FourCC("in24"), payload, 17);
  EXPECT_EQ(mp4::FourCC("42ni"), more.one.track->format);
  EXPECT_EQ(17, more.position);
}

TEST(BoxWAVE, SkipsAPayloadOfEightBytesOrLess) {
  const Read eight(mp4::FourCC("in24"), Box("enda", Bytes().Be16(1)), 8);
  EXPECT_TRUE(eight.result);
  EXPECT_EQ(mp4::FourCC("in24"), eight.one.track->format);
  EXPECT_EQ(8, eight.position);
  EXPECT_EQ(1, Read(mp4::FourCC("in24"), Enda(1), 1).position);
}

TEST(BoxWAVE, EndsItsWalkAtTheEndOfTheSource) {
  OneTrack one;
  FileReader open(Bytes().Fill(16));
  EXPECT_TRUE(BoxWAVE().ReadData(&open.reader, 4000000000LL, &one.context));
  EXPECT_EQ(4000000000LL, open.reader.GetPos());  // 16 read, the rest skipped
}

TEST(BoxWAVE, EndsItsWalkPastTheEndOfTheSource) {
  OneTrack one;
  FileReader open(Bytes().Fill(16));
  open.reader.SetPos(20);
  EXPECT_TRUE(BoxWAVE().ReadData(&open.reader, 4000000000LL, &one.context));
  EXPECT_EQ(4000000020LL, open.reader.GetPos());
}

TEST(BoxWAVE, KeepsTheWholeAtomOfQdm2) {
  OneTrack one;
  one.track->format = mp4::FourCC("QDM2");
  const Bytes atom = Box("wave", Frma("QDM2") + Box("QDCA", Bytes().Fill(5, 7)));
  ASSERT_EQ(33U, atom.size());
  mmBufReader reader(atom.data(), atom.size());
  reader.SetPos(8);
  EXPECT_TRUE(BoxWAVE().ReadData(&reader, 25, &one.context));
  EXPECT_EQ(AsText(atom), one.ExtraData());
  EXPECT_EQ(33, reader.GetPos());
  for (int i = 33; i < 48; ++i) EXPECT_EQ(0, one.track->extraData[0][i]);  // (25 + 24) & ~15
}

TEST(BoxWAVE, KeepsTheBytesOfQdm2ThatExist) {
  OneTrack one;
  one.track->format = mp4::FourCC("QDM2");
  const Bytes atom = SizedBox(0x10000000, "wave", Frma("QDM2"));
  FileReader open(atom);
  open.reader.SetPos(8);
  EXPECT_TRUE(BoxWAVE().ReadData(&open.reader, 0x10000000 - 8, &one.context));
  EXPECT_EQ(AsText(atom), one.ExtraData());
  EXPECT_EQ(20, open.reader.GetPos());
}

TEST(BoxWAVE, WithoutATrackPassesOverItsPayloadTwice) {
  Mp4Context context;
  const Bytes bytes = Bytes().Fill(40);
  mmBufReader reader(bytes.data(), bytes.size());
  EXPECT_TRUE(BoxWAVE().ReadData(&reader, 10, &context));
  EXPECT_EQ(20, reader.GetPos());
}

TEST(BoxWAVE, FailsWithoutReaderContextOrPayload) {
  OneTrack one;
  const Bytes bytes = Bytes().Fill(40);
  mmBufReader reader(bytes.data(), bytes.size());
  EXPECT_FALSE(BoxWAVE().ReadData(nullptr, 10, &one.context));
  EXPECT_FALSE(BoxWAVE().ReadData(&reader, 10, nullptr));
  EXPECT_FALSE(BoxWAVE().ReadData(&reader, 0, &one.context));
  EXPECT_FALSE(BoxWAVE().ReadData(&reader, -1, &one.context));
  EXPECT_EQ(0, reader.GetPos());
}

TEST(BoxWAVE, FailsWhenTheAccountRefuses) {
  OneTrack one;
  const Bytes bytes = Bytes().Fill(40);
  mmBufReader reader(bytes.data(), bytes.size());
  mp4::ScanControl scan(40);
  while (scan.TakeHeader()) {
  }
  reader.AttachScan(&scan);
  EXPECT_FALSE(BoxWAVE().ReadData(&reader, 40, &one.context));
}
