#include <gtest/gtest.h>

#include "door/CodecInfo.h"
#include "io/FourCC.h"
#include "tests/MovieFixtures.h"
#include "tests/TreeFixtures.h"

namespace {

constexpr char kStsd[] = "moov/trak/mdia/minf/stbl/stsd/";

/// What is said of the only sample entry of a movie.
mp4::CodecInfo CodecOfEntry(const Bytes& entry, const char* type, const char* handler,
                            const mp4::Description& description) {
  const Bytes stbl = Box("stbl", fixture::Stsd(entry));
  const Bytes mdia = Box("mdia", fixture::Hdlr(handler) + Box("minf", stbl));
  fixture::TreeOver over(Box("moov", Box("trak", mdia)));
  const mp4::BoxId id = over.At(std::string(kStsd) + type);
  EXPECT_NE(mp4::kNoBox, id);
  return mp4::CodecOf(&over.tree, id, description);
}
mp4::CodecInfo OfVideo(const char* format, const Bytes& atoms) {
  mp4::Description description;
  description.format = mp4::LoadLe32(reinterpret_cast<const unsigned char*>(format));
  return CodecOfEntry(fixture::VisualEntry(format, atoms), format, "vide", description);
}
mp4::CodecInfo OfAudio(const Bytes& atoms) {
  mp4::Description description;
  description.format = mp4::FourCC("mp4a");
  description.rate = 48000;
  description.channels = 1;
  return CodecOfEntry(fixture::AudioEntry("mp4a", atoms), "mp4a", "soun", description);
}

/// An elementary stream of AAC LC, 44,100 Hz, two channels.
Bytes Esds(unsigned objectType = 0x40) {
  const Bytes specific = Bytes{5, 2, 0x12, 0x10};
  const Bytes decoder =
      Bytes{4, 17}.Byte(objectType).Byte(0x15).Be24(0).Be32(256000).Be32(128000).Append(specific);
  return FullBox("esds", 0, 0, Bytes{3, 22, 0, 1, 0} + decoder);
}

}  // namespace

TEST(CodecInfo, HasWhatTheDescriptionSays) {
  mp4::Description description;
  description.format = mp4::FourCC("encv");
  description.original = mp4::FourCC("avc1");
  description.isProtected = true;
  description.scheme = mp4::FourCC("cbcs");
  description.width = 640;
  description.height = 480;
  const mp4::CodecInfo info =
      CodecOfEntry(fixture::VisualEntry("encv"), "encv", "vide", description);
  EXPECT_EQ("encv", info.format);
  EXPECT_EQ("avc1", info.original);
  EXPECT_EQ("H.264/AVC", info.codec) << "below the protection";
  EXPECT_TRUE(info.isProtected);
  EXPECT_EQ("cbcs", info.scheme);
  EXPECT_EQ(640U, info.width);
  EXPECT_EQ(480U, info.height);
  EXPECT_EQ("", info.profile);
  EXPECT_EQ("", info.parameter);
}

TEST(CodecInfo, WithoutProtectionThereIsNoOriginal) {
  const mp4::CodecInfo info = OfVideo("avc1", {});
  EXPECT_EQ("", info.original);
  EXPECT_EQ("", info.scheme);
  EXPECT_FALSE(info.isProtected);
}

TEST(CodecInfo, OfVideoHasProfileLevelAndParameter) {
  const mp4::CodecInfo info =
      OfVideo("avc1", Box("avcC", {1, 100, 0, 40, 0xFF, 0xE0, 0, 1, 2, 2, 0}));
  EXPECT_EQ("High", info.profile);
  EXPECT_EQ("4", info.level);
  EXPECT_EQ("avc1.640028", info.parameter);
  EXPECT_EQ("4:2:0", info.chroma);
  EXPECT_EQ(10U, info.bitDepth) << "of luma";
}

TEST(CodecInfo, ConfigurationBoxesAloneAreLookedAt) {
  const mp4::CodecInfo info = OfVideo("avc1", Box("btrt", Bytes().Be32(0).Be32(9000).Be32(8000)) +
                                                  Box("avcX", {1, 100, 0, 40, 0xFF, 0xE0, 0}));
  EXPECT_EQ(8000U, info.averageBitrate);
  EXPECT_EQ("", info.profile);
}

TEST(CodecInfo, TheElementaryStreamTellsWhatAudioIs) {
  const mp4::CodecInfo info = OfAudio(Esds());
  EXPECT_EQ("MPEG-4 Audio", info.codec);
  EXPECT_EQ("AAC LC", info.profile);
  EXPECT_EQ("mp4a.40.2", info.parameter);
  EXPECT_EQ(44100, info.sampleRate) << "not the entry's";
  EXPECT_EQ(2U, info.channels);
  EXPECT_EQ(128000U, info.averageBitrate);
  const mp4::CodecInfo mp3 = OfAudio(Esds(0x6B));
  EXPECT_EQ("MPEG-1 Audio", mp3.codec);
  EXPECT_EQ("mp4a.6B", mp3.parameter);
  EXPECT_EQ(48000, mp3.sampleRate) << "the stream says nothing, so the entry's";
  EXPECT_EQ(1U, mp3.channels);
}

TEST(CodecInfo, QuickTimesAtomOfSoundIsEnteredOnce) {
  EXPECT_EQ("mp4a.40.2", OfAudio(Box("wave", Esds())).parameter);
  EXPECT_EQ("", OfAudio(Box("wave", Box("wave", Esds()))).parameter);
}

TEST(CodecInfo, ABitRateOfZeroIsNotSaid) {
  const Bytes said = Box("btrt", Bytes().Be32(0).Be32(1).Be32(8000));
  const Bytes zero = Box("btrt", Bytes().Be32(0).Be32(1).Be32(0));
  EXPECT_EQ(8000U, OfVideo("avc1", said + zero).averageBitrate);
}
