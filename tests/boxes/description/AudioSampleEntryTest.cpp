#include <gtest/gtest.h>

#include "boxes/description/BoxSTSD.h"
#include "io/ScanControl.h"
#include "tests/SampleEntries.h"

using namespace fixture;

namespace {

constexpr bool kQuickTime = true;

/// Reads an entry of `size` bytes from its format on, followed by 64 bytes of something else.
struct Read {
  Read(const Bytes& bytes, bool quickTime, long long size)
      : one(0, quickTime ? MP4_FILE_MODE_MOV : MP4_FILE_MODE_UNKNOWN) {
    const Bytes all = bytes + Bytes().Fill(64, 0xAA);
    mmBufReader reader(all.data(), all.size());
    result = entry.ReadData(&reader, size, &one.context);
    position = reader.GetPos();
  }
  explicit Read(const Bytes& bytes, bool quickTime = false)
      : Read(bytes, quickTime, static_cast<long long>(bytes.size())) {}

  OneTrack one;
  Mp4Context::TRACK* track = one.track;
  BoxSTSD::AudioSampleEntry entry;
  bool result;
  long long position;
};

Bytes Version1(std::string_view format, std::uint32_t samples, std::uint32_t packet,
               std::uint32_t frame) {
  return AudioFields(format, 2, 16, 44100, 1).Be32(samples).Be32(packet).Be32(frame).Fill(4, 0xEE);
}

Bytes Version2(std::string_view format, std::uint64_t rate, std::uint32_t channels) {
  return AudioFields(format, 3, 16, 1, 2).Be32(72).Be64(rate).Be32(channels).Fill(20, 0xEE);
}

std::uint32_t Rate(std::uint64_t bits) { return Read(Version2("lpcm", bits, 2)).track->sampleRate; }

Bytes Enda() { return Box("enda", Bytes().Be16(1)); }

}  // namespace

TEST(AudioSampleEntry, RecordsFormatChannelsAndRate) {
  const Read read(AudioFields("mp4a", 6, 16, 48000));
  EXPECT_TRUE(read.result);
  EXPECT_EQ(mp4::FourCC("mp4a"), read.track->format);
  EXPECT_EQ(6U, read.track->channels);
  EXPECT_EQ(48000U, read.track->sampleRate);
  EXPECT_EQ(0U, read.track->bitsPerSample);
  EXPECT_EQ(32, read.position);
}

TEST(AudioSampleEntry, OverwritesAFormatAlreadyRecorded) {
  OneTrack one;
  one.track->format = mp4::FourCC("drms");
  const Bytes bytes = AudioFields("mp4a", 2, 16, 44100);
  mmBufReader reader(bytes.data(), bytes.size());
  BoxSTSD::AudioSampleEntry().ReadData(&reader, 32, &one.context);
  EXPECT_EQ(mp4::FourCC("mp4a"), one.track->format);
}

TEST(AudioSampleEntry, TakesTheBitsFromTheCodec) {
  EXPECT_EQ(32U, Read(AudioFields("in32", 2, 16, 44100)).track->bitsPerSample);
  EXPECT_EQ(24U, Read(AudioFields("in24", 2, 16, 44100)).track->bitsPerSample);
  EXPECT_EQ(16U, Read(AudioFields("sowt", 2, 16, 44100)).track->bitsPerSample);
  EXPECT_EQ(8U, Read(AudioFields("ulaw", 2, 16, 44100)).track->bitsPerSample);
  EXPECT_EQ(0U, Read(AudioFields("ima4", 2, 16, 44100)).track->bitsPerSample);
  EXPECT_EQ(0U, Read(AudioFields("drms", 2, 16, 44100)).track->bitsPerSample);
}

TEST(AudioSampleEntry, RecordsRawSamplesOf16BitsAsTwos) {
  for (const char* format : {"raw ", "NONE"}) {
    const Read read(AudioFields(format, 2, 16, 44100));
    EXPECT_EQ(mp4::FourCC("twos"), read.track->format);
    EXPECT_EQ(16U, read.track->bitsPerSample);
  }
  const Read eight(AudioFields("raw ", 2, 8, 44100));
  EXPECT_EQ(mp4::FourCC("raw "), eight.track->format);
  EXPECT_EQ(8U, eight.track->bitsPerSample);
}

TEST(AudioSampleEntry, RecordsPcmOf8BitsAsSowt) {
  for (const char* format : {"twos", "sowt", "lpcm"}) {
    const Read read(AudioFields(format, 2, 8, 44100));
    EXPECT_EQ(mp4::FourCC("sowt"), read.track->format);
    EXPECT_EQ(8U, read.track->bitsPerSample);
  }
}

TEST(AudioSampleEntry, RecordsPcmOf24BitsAsIn24) {
  for (const char* format : {"twos", "sowt", "lpcm"}) {
    const Read read(AudioFields(format, 2, 24, 44100));
    EXPECT_EQ(mp4::FourCC("in24"), read.track->format);
    EXPECT_EQ(24U, read.track->bitsPerSample);
  }
  EXPECT_EQ(mp4::FourCC("twos"), Read(AudioFields("twos", 2, 32, 44100)).track->format);
}

TEST(AudioSampleEntry, KnowsFormatsInEitherCaseButKeepsTheirText) {
  const Read read(AudioFields("TWOS", 2, 16, 44100));
  EXPECT_EQ(mp4::FourCC("TWOS"), read.track->format);
  EXPECT_EQ(16U, read.track->bitsPerSample);
  EXPECT_EQ(mp4::FourCC("sowt"), Read(AudioFields("TWOS", 2, 8, 44100)).track->format);
}

TEST(AudioSampleEntry, FixesRateChannelsAndBitsOfSamr) {
  for (const unsigned version : {0U, 1U}) {
    const Bytes bytes = AudioFields("samr", 2, 8, 44100, version).Fill(16);
    const Read read(bytes, false, version == 0 ? 32 : 48);
    EXPECT_EQ(8000U, read.track->sampleRate);
    EXPECT_EQ(1U, read.track->channels);
    EXPECT_EQ(16U, read.track->bitsPerSample);
  }
}

TEST(AudioSampleEntry, MatchesSamrExactly) {
  const Read read(AudioFields("SAMR", 2, 8, 44100));
  EXPECT_EQ(44100U, read.track->sampleRate);
  EXPECT_EQ(2U, read.track->channels);
  EXPECT_EQ(0U, read.track->bitsPerSample);
}

TEST(AudioSampleEntry, KeepsRateAndChannelsOfSamrInVersion2) {
  const Read read(Version2("samr", 0x40E5888000000000, 2));
  EXPECT_EQ(44100U, read.track->sampleRate);
  EXPECT_EQ(2U, read.track->channels);
  EXPECT_EQ(16U, read.track->bitsPerSample);
}

TEST(AudioSampleEntry, RecordsPacketValuesOfVersion1InQuickTime) {
  const Read read(Version1("mp4a", 1024, 2, 4), kQuickTime);
  EXPECT_EQ(1024U, read.track->samplesPerPacket);
  EXPECT_EQ(2U, read.track->bytesPerPacket);
  EXPECT_EQ(4U, read.track->bytesPerFrame);
  EXPECT_EQ(48, read.position);
}

TEST(AudioSampleEntry, RecordsNoPacketValuesOutsideQuickTime) {
  Bytes bytes = Version1("ima4", 1024, 2, 4);
  const Read read(bytes);
  EXPECT_EQ(0U, read.track->samplesPerPacket);
  EXPECT_EQ(0U, read.track->bytesPerPacket);
  EXPECT_EQ(0U, read.track->bytesPerFrame);
  EXPECT_EQ(0, Read(AudioFields("mp4a", 2, 16, 44100, 0, 0xFFFE)).track->compressionId);
}

TEST(AudioSampleEntry, WidensTheCompressionId) {
  const Read read(AudioFields("mp4a", 2, 16, 44100, 0, 0xFFFE), kQuickTime);
  EXPECT_EQ(-2, read.track->compressionId);
}

TEST(AudioSampleEntry, KnowsThePacketsOfIma4) {
  const Read read(AudioFields("ima4", 2, 16, 44100), kQuickTime);
  EXPECT_EQ(64U, read.track->samplesPerPacket);
  EXPECT_EQ(34U, read.track->bytesPerPacket);
  EXPECT_EQ(68U, read.track->bytesPerFrame);
}

TEST(AudioSampleEntry, KeepsPacketsThatIma4States) {
  const Read read(Version1("ima4", 32, 0, 17), kQuickTime);
  EXPECT_EQ(32U, read.track->samplesPerPacket);
  EXPECT_EQ(34U, read.track->bytesPerPacket);
  EXPECT_EQ(17U, read.track->bytesPerFrame);
}

TEST(AudioSampleEntry, ReadsAnUnknownVersionLikeVersion0) {
  const Bytes child = Box("esds", EsdsPayload(0x40, {0x12, 0x10}));
  const Read read(AudioFields("mp4a", 2, 16, 44100, 3) + child);
  EXPECT_EQ(AsText({0x12, 0x10}), read.one.ExtraData());
  EXPECT_EQ(71, read.position);
}

TEST(AudioSampleEntry, ReadsRateAndChannelsOfVersion2) {
  const Read read(Version2("lpcm", 0x40E5888000000000, 0x00010002), kQuickTime);
  EXPECT_EQ(44100U, read.track->sampleRate);
  EXPECT_EQ(0x00010002U, read.track->channels);
  EXPECT_EQ(0U, read.track->samplesPerPacket);
  EXPECT_EQ(68, read.position);
}

TEST(AudioSampleEntry, RoundsTheRateOfVersion2HalfUp) {
  EXPECT_EQ(0U, Rate(0));
  EXPECT_EQ(0U, Rate(1));                            // the smallest number above 0
  EXPECT_EQ(0U, Rate(0x3FDFFFFFFFFFFFFF));           // just below 1/2
  EXPECT_EQ(1U, Rate(0x3FE0000000000000));           // 1/2
  EXPECT_EQ(1U, Rate(0x3FF7FFFFFFFFFFFF));           // just below 3/2
  EXPECT_EQ(3U, Rate(0x4004000000000000));           // 5/2
  EXPECT_EQ(2147483648U, Rate(0x41DFFFFFFFE00000));  // 2^31 - 1/2
}

TEST(AudioSampleEntry, IgnoresTheSignOfTheRateOfVersion2) {
  EXPECT_EQ(44100U, Rate(0xC0E5888000000000));
}

TEST(AudioSampleEntry, SaturatesTheRateOfVersion2) {
  EXPECT_EQ(2147483648U, Rate(0x41E0000000000000));  // 2^31
  EXPECT_EQ(4294967295U, Rate(0x41EFFFFFFFE00000));  // 2^32 - 1
  EXPECT_EQ(4294967295U, Rate(0x41EFFFFFFFF00000));  // 2^32 - 1/2
  EXPECT_EQ(4294967295U, Rate(0x41F0000000000000));  // 2^32
  EXPECT_EQ(4294967295U, Rate(0x7FEFFFFFFFFFFFFF));  // the largest number
}

TEST(AudioSampleEntry, TakesARateOfVersion2ThatIsNoNumberAsZero) {
  EXPECT_EQ(0U, Rate(0x7FF0000000000000));  // infinity
  EXPECT_EQ(0U, Rate(0xFFF0000000000000));
  EXPECT_EQ(0U, Rate(0x7FF8000000000000));  // NaN
  EXPECT_EQ(0U, Rate(0xFFF0000000000001));
}

TEST(AudioSampleEntry, ReadsTheChildBehindEachHeader) {
  const Bytes child = Box("esds", EsdsPayload(0x40, {0x12, 0x10}));
  EXPECT_EQ(AsText({0x12, 0x10}), Read(AudioFields("mp4a", 2, 16, 44100) + child).one.ExtraData());
  EXPECT_EQ(AsText({0x12, 0x10}), Read(Version1("mp4a", 0, 0, 0) + child).one.ExtraData());
  EXPECT_EQ(AsText({0x12, 0x10}), Read(Version2("mp4a", 0, 2) + child).one.ExtraData());
}

TEST(AudioSampleEntry, EndsWhereItsFixedPartEnds) {
  // What follows is no child of it, though it looks like one.
  const Bytes child = Box("esds", EsdsPayload(0x40, {0x12, 0x10}));
  const std::pair<Bytes, long long> entries[] = {{AudioFields("mp4a", 2, 16, 44100), 32},
                                                 {Version1("mp4a", 0, 0, 0), 48},
                                                 {Version2("mp4a", 0, 2), 68}};
  for (const auto& [fields, size] : entries) {
    const Read read(fields + child, false, size);
    EXPECT_TRUE(read.result);
    EXPECT_EQ(nullptr, read.entry.esds);
    EXPECT_EQ(nullptr, read.track->extraData[0]);
    EXPECT_EQ(size, read.position);
  }
}

TEST(AudioSampleEntry, ReadsOneChildOnly) {
  const Bytes child = Box("esds", EsdsPayload(0x40, {0x12, 0x10}));
  const Read read(AudioFields("mp4a", 2, 16, 44100) + Box("btrt", Bytes().Fill(12)) + child);
  EXPECT_TRUE(read.result);
  EXPECT_EQ(nullptr, read.entry.esds);
  EXPECT_EQ(nullptr, read.track->extraData[0]);
  EXPECT_EQ(91, read.position);
}

TEST(AudioSampleEntry, TakesAChildSizeOfZeroAsTheRest) {
  const Read read(AudioFields("mp4a", 2, 16, 44100) +
                  SizedBox(0, "esds", EsdsPayload(0x40, {0x12, 0x10})));
  EXPECT_EQ(AsText({0x12, 0x10}), read.one.ExtraData());
  EXPECT_EQ(71, read.position);
}

TEST(AudioSampleEntry, EndsAtItsOwnEndWhenTheHeaderReachesPastIt) {
  const Read read(Version2("lpcm", 0x40E5888000000000, 2), false, 40);
  EXPECT_TRUE(read.result);
  EXPECT_EQ(44100U, read.track->sampleRate);
  EXPECT_EQ(40, read.position);
}

TEST(AudioSampleEntry, IgnoresAChildThatFails) {
  const Read read(AudioFields("mp4a", 2, 16, 44100) + Box("esds"));
  EXPECT_TRUE(read.result);
  EXPECT_NE(nullptr, read.entry.esds);
  EXPECT_EQ(40, read.position);
}

TEST(AudioSampleEntry, KeepsTheAlacAtom) {
  const Bytes content = Bytes().Be32(0).Fill(24, 0x11);
  const Read read(AudioFields("alac", 2, 16, 44100) + Box("alac", content));
  EXPECT_EQ(36U, read.track->extraDataSize[0]);
  EXPECT_EQ(AsText(Bytes().Fill(4, 36).Text("alac").Append(content)), read.one.ExtraData());
  EXPECT_EQ(68, read.position);
  for (int i = 36; i < 48; ++i) EXPECT_EQ(0, read.track->extraData[0][i]);  // (36 + 16) & ~15
}

TEST(AudioSampleEntry, StartsTheAlacExtradataWithItsOwnWord) {
  // 257 = 0x101: 0x101 | 0x10100 | 0x1010000 | 0x01000000 = 0x01010101.
  const Read read(AudioFields("alac", 2, 16, 44100) + Box("alac", Bytes().Fill(249)));
  EXPECT_EQ(257U, read.track->extraDataSize[0]);
  EXPECT_EQ(AsText({1, 1, 1, 1}), read.one.ExtraData().substr(0, 4));
  // 0x0324: 0x0324 | 0x032400 | 0x03240000 | 0x24000000 = 0x27272724, low byte first.
  const Read second(AudioFields("alac", 2, 16, 44100) + Box("alac", Bytes().Fill(0x31C)));
  EXPECT_EQ(AsText({0x24, 0x27, 0x27, 0x27}), second.one.ExtraData().substr(0, 4));
}

TEST(AudioSampleEntry, KeepsTheBytesOfAlacThatExist) {
  OneTrack one;
  FileReader open(AudioFields("alac", 2, 16, 44100) + SizedBox(0x01000000, "alac", Bytes{1, 2, 3}));
  BoxSTSD::AudioSampleEntry entry;
  EXPECT_TRUE(entry.ReadData(&open.reader, 0x01000020, &one.context));
  EXPECT_EQ(11U, one.track->extraDataSize[0]);
  EXPECT_EQ(AsText(Bytes{0, 0, 0, 1}.Text("alac").Append({1, 2, 3})), one.ExtraData());
  EXPECT_EQ(43, open.reader.GetPos());
}

TEST(AudioSampleEntry, KeepsAnAlacAtomWithoutContent) {
  // 8: 8 | 0x800 | 0x80000 | 0x8000000.
  const Read read(AudioFields("alac", 2, 16, 44100) + Box("alac"));
  EXPECT_EQ(AsText(Bytes().Fill(4, 8).Text("alac")), read.one.ExtraData());
  EXPECT_EQ(40, read.position);
}

TEST(AudioSampleEntry, StoresNoAlacBelowEightBytes) {
  const Read read(AudioFields("alac", 2, 16, 44100) + SizedBox(7, "alac", Bytes().Fill(4)));
  EXPECT_TRUE(read.result);
  EXPECT_EQ(nullptr, read.track->extraData[0]);
  EXPECT_EQ(44, read.position);
}

TEST(AudioSampleEntry, ReadsTheWaveAtom) {
  const Read read(AudioFields("in24", 2, 16, 44100) + Box("wave", Enda().Fill(8)));
  EXPECT_NE(nullptr, read.entry.wave);
  EXPECT_EQ(mp4::FourCC("42ni"), read.track->format);
  EXPECT_EQ(58, read.position);
}

TEST(AudioSampleEntry, SearchesForTheWaveAtomInQuickTime) {
  // The size before "wave" counts in the byte order of a type: 24 bytes.
  const Bytes wave = Bytes{24, 0, 0, 0}.Text("wave").Append(Enda()).Fill(6);
  const Bytes bytes = AudioFields("in24", 2, 16, 44100) + Bytes().Be32(99).Be32(7).Be32(7) + wave;
  const Read found(bytes, kQuickTime);
  EXPECT_NE(nullptr, found.entry.wave);
  EXPECT_EQ(mp4::FourCC("42ni"), found.track->format);
  EXPECT_EQ(68, found.position);
  const Read other(bytes);
  EXPECT_EQ(nullptr, other.entry.wave);
  EXPECT_EQ(mp4::FourCC("in24"), other.track->format);
  EXPECT_EQ(68, other.position);
}

TEST(AudioSampleEntry, FindsAWaveAtomWithAnOrdinarySizeToo) {
  // 00 00 00 18 is 0x18000000 in the byte order of a type; the entry still ends where it should.
  const Bytes bytes =
      AudioFields("in24", 2, 16, 44100) + Bytes().Be32(7).Be32(7) + Box("wave", Enda().Fill(6));
  const Read read(bytes, kQuickTime);
  EXPECT_EQ(mp4::FourCC("42ni"), read.track->format);
  EXPECT_EQ(64, read.position);
}

TEST(AudioSampleEntry, ReadsTheSizeBeforeTheWaveAtomInTheByteOrderOfAType) {
  const Bytes fields = AudioFields("in24", 2, 16, 44100) + Bytes().Be32(7).Be32(7);
  // 16 bytes in that order are a payload of 8, which is not walked, whatever else follows.
  const Bytes small = fields + Bytes{16, 0, 0, 0}.Text("wave").Append(Enda()).Fill(14);
  EXPECT_EQ(mp4::FourCC("in24"), Read(small, kQuickTime).track->format);
  // 00 00 00 10 are 0x10000000 bytes: the walk goes on behind the 16 that a box size would mean.
  const Bytes large = fields + Bytes{0, 0, 0, 16}.Text("wave").Fill(8).Append(Enda()).Fill(6);
  EXPECT_EQ(mp4::FourCC("42ni"), Read(large, kQuickTime).track->format);
}

TEST(AudioSampleEntry, EndsItsSearchAtTheChannelLayout) {
  const Bytes bytes = AudioFields("in24", 2, 16, 44100) + Bytes().Be32(7).Be32(7) +
                      Bytes{12, 0, 0, 0}.Text("chan").Be32(0) + Box("wave", Enda().Fill(6));
  const Read read(bytes, kQuickTime);
  EXPECT_EQ(nullptr, read.entry.wave);
  EXPECT_EQ(static_cast<long long>(bytes.size()), read.position);
}

TEST(AudioSampleEntry, SearchesBeyondOtherKnownChildren) {
  // An "esds" is no goal of the search: in QuickTime files it is passed by.
  const Bytes bytes =
      AudioFields("mp4a", 2, 16, 44100) + Box("esds", EsdsPayload(0x69, {0x12, 0x10}));
  const Read read(bytes, kQuickTime);
  EXPECT_EQ(nullptr, read.entry.esds);
  EXPECT_EQ(mp4::FourCC("mp4a"), read.track->format);
  EXPECT_EQ(71, read.position);
}

TEST(AudioSampleEntry, SearchesOnlyWithMoreThanTwelveBytesBehindTheHeader) {
  const Bytes bytes = AudioFields("mp4a", 2, 16, 44100) +
                      Bytes().Be32(39).Text("esds").Append(EsdsPayload(0x69, {0x12, 0x10}));
  EXPECT_NE(nullptr, Read(bytes, kQuickTime, 44).entry.esds);
  EXPECT_EQ(44, Read(bytes, kQuickTime, 44).position);
  // 45 bytes: the position 40 is already past 45 - 8, so no step is taken.
  EXPECT_NE(nullptr, Read(bytes, kQuickTime, 45).entry.esds);
  // 49 bytes: one step from 40 to 44 makes the type something else.
  EXPECT_EQ(nullptr, Read(bytes, kQuickTime, 49).entry.esds);
  EXPECT_EQ(49, Read(bytes, kQuickTime, 49).position);
}

TEST(AudioSampleEntry, EndsItsSearchEightBytesBeforeTheEnd) {
  const Bytes fields = AudioFields("in24", 2, 16, 44100) + Bytes().Be32(7).Be32(7);
  // Steps from 40, 44 and 48 reach 52 = 60 - 8; the third makes the word at 48 the type.
  const Bytes last = fields + Bytes().Be32(7).Append({16, 0, 0, 0}).Text("wave").Fill(8);
  EXPECT_NE(nullptr, Read(last, kQuickTime).entry.wave);
  EXPECT_EQ(60, Read(last, kQuickTime).position);
  const Bytes behind = fields + Bytes().Be32(7).Be32(7).Append({12, 0, 0, 0}).Text("wave").Fill(4);
  EXPECT_EQ(nullptr, Read(behind, kQuickTime).entry.wave);
  EXPECT_EQ(60, Read(behind, kQuickTime).position);
}

TEST(AudioSampleEntry, TakesASizeOfZeroAfterTheSearchAsTheRest) {
  // Found after 2 steps at position 48 of 66 with size 0: 66 - 48 = 18, 10 bytes of payload.
  const Bytes bytes = AudioFields("in24", 2, 16, 44100) +
                      Bytes().Be32(7).Be32(7).Be32(0).Text("wave").Append(Enda()).Fill(8);
  ASSERT_EQ(66U, bytes.size());
  const Read read(bytes, kQuickTime);
  EXPECT_EQ(mp4::FourCC("42ni"), read.track->format);
  EXPECT_EQ(66, read.position);
}

TEST(AudioSampleEntry, EndsItsSearchAtTheEndOfTheFileAsIfItWentOn) {
  OneTrack one(0, MP4_FILE_MODE_MOV);
  FileReader open(AudioFields("mp4a", 2, 16, 44100) + Box("abcd"));
  BoxSTSD::AudioSampleEntry entry;
  // Steps of 4 from 40 up to 3999999993 end at 3999999996 with size 0, which then means 5. In the
  // file they move nothing: 40, then 3 bytes back over the child, then 8 forward to the end.
  EXPECT_TRUE(entry.ReadData(&open.reader, 4000000001LL, &one.context));
  EXPECT_EQ(45, open.reader.GetPos());
}

TEST(AudioSampleEntry, EndsItsSearchAtTheEndOfMemoryAsIfItWentOn) {
  OneTrack one(0, MP4_FILE_MODE_MOV);
  const Bytes bytes = AudioFields("mp4a", 2, 16, 44100) + Box("abcd");
  mmBufReader reader(bytes.data(), bytes.size());
  BoxSTSD::AudioSampleEntry entry;
  // Memory advances while zeros are read, so the entry ends where it should.
  EXPECT_TRUE(entry.ReadData(&reader, 2000000001LL, &one.context));
  EXPECT_EQ(2000000001LL, reader.GetPos());
}

TEST(AudioSampleEntry, WithoutContextPassesOverItsPayload) {
  const Bytes esds = Box("esds", EsdsPayload(0x69, {0x12, 0x10}));
  for (const Bytes& child : {esds, Box("alac", Bytes().Fill(8)), Box("abcd", Bytes().Fill(3))}) {
    const Bytes bytes = AudioFields("mp4a", 2, 16, 44100) + child;
    const auto size = static_cast<long long>(bytes.size());
    mmBufReader reader(bytes.data(), bytes.size());
    BoxSTSD::AudioSampleEntry entry;
    EXPECT_TRUE(entry.ReadData(&reader, size, nullptr));
    EXPECT_EQ(size, reader.GetPos());
  }
}

TEST(AudioSampleEntry, IgnoresAWaveAtomWithoutContext) {
  const Bytes bytes = AudioFields("in24", 2, 16, 44100) + Box("wave", Enda());
  mmBufReader reader(bytes.data(), bytes.size());
  BoxSTSD::AudioSampleEntry entry;
  EXPECT_TRUE(entry.ReadData(&reader, 50, nullptr));
  EXPECT_EQ(40, reader.GetPos());  // a failed child moves nothing, and counts in full
}

TEST(AudioSampleEntry, FailsWithoutReader) {
  OneTrack one;
  EXPECT_FALSE(BoxSTSD::AudioSampleEntry().ReadData(nullptr, 32, &one.context));
}

TEST(AudioSampleEntry, FailsWhenTheAccountRefusesTheSearch) {
  OneTrack one(0, MP4_FILE_MODE_MOV);
  const Bytes bytes = AudioFields("mp4a", 2, 16, 44100).Fill(40, 7);
  mmBufReader reader(bytes.data(), bytes.size());
  mp4::ScanControl scan(static_cast<std::int64_t>(bytes.size()));
  while (scan.TakeHeader()) {
  }
  reader.AttachScan(&scan);
  BoxSTSD::AudioSampleEntry entry;
  EXPECT_FALSE(entry.ReadData(&reader, 72, &one.context));
}
