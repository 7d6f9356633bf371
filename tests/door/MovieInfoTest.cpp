#include <gtest/gtest.h>

#include "door/LayoutJson.h"
#include "door/MovieInfo.h"
#include "io/MemorySource.h"
#include "tests/Bytes.h"

namespace {

/// A movie of 3 s in units of 600 with one turned video track: 4 pictures of 25 bytes in two
/// chunks, 30 a second, of which the edit list shows all but the first; and a title, a cover and
/// two chapters.
Bytes MovieWithEverything() {
  const Bytes head = Box("ftyp", Bytes().Text("isom").Be32(0).Text("mp41"));
  const Bytes mvhd = FullBox("mvhd", 0, 0, Bytes().Fill(8).Be32(600).Be32(1800).Fill(80));
  const Bytes turned =
      Bytes().Be32(0).Be32(0x10000).Be32(0).Be32(0xFFFF0000).Fill(8 + 8).Be32(0x40000000);
  const Bytes tkhd = FullBox("tkhd", 0, 1,
                             Bytes().Fill(8).Be32(7).Fill(4).Be32(1800).Fill(16) + turned +
                                 Bytes().Be32(320u << 16).Be32(240u << 16));
  const Bytes elst =
      Box("edts", FullBox("elst", 0, 0, Bytes().Be32(1).Be32(1800).Be32(1001).Be32(0x10000)));
  const Bytes mdhd =
      FullBox("mdhd", 0, 0, Bytes().Fill(8).Be32(30000).Be32(4004).Be16(0x15C7).Be16(0));
  const Bytes hdlr = FullBox("hdlr", 0, 0, Bytes().Be32(0).Text("vide").Fill(12).Text("V").Byte(0));
  const Bytes avcC = Box("avcC", Bytes{1, 77, 64, 31, 0xFF, 0xE0, 0});
  const Bytes avc1 =
      Box("avc1", Bytes().Fill(6).Be16(1).Fill(16).Be16(320).Be16(240).Fill(50) + avcC);
  const Bytes tables = FullBox("stsd", 0, 0, Bytes().Be32(1) + avc1) +
                       FullBox("stts", 0, 0, Bytes().Be32(1).Be32(4).Be32(1001)) +
                       FullBox("stss", 0, 0, Bytes().Be32(1).Be32(1)) +
                       FullBox("stsc", 0, 0, Bytes().Be32(1).Be32(1).Be32(2).Be32(1)) +
                       FullBox("stsz", 0, 0, Bytes().Be32(25).Be32(4)) +
                       FullBox("stco", 0, 0, Bytes().Be32(2).Be32(28).Be32(88));
  const Bytes trak =
      Box("trak", tkhd + elst + Box("mdia", mdhd + hdlr + Box("minf", Box("stbl", tables))));
  const auto data = [](std::uint32_t type, const Bytes& value) {
    return Box("data", Bytes().Be32(type).Be32(0) + value);
  };
  const Bytes ilst = Box("ilst", Box("\xA9"
                                     "nam",
                                     data(1, Bytes().Text("Song"))) +
                                     Box("trkn", data(0, Bytes().Be16(0).Be16(3).Be16(9).Be16(0))) +
                                     Box("covr", data(14, Bytes().Fill(11))));
  const Bytes chpl =
      FullBox("chpl", 1, 0,
              Bytes().Be32(0).Byte(2).Be64(0).Byte(1).Text("A").Be64(15000000).Byte(2).Text("BC"));
  const Bytes udta = Box("udta", FullBox("meta", 0, 0, ilst) + chpl);
  return head + Box("mdat", Bytes().Fill(110)) + Box("moov", mvhd + trak + udta);
}

/// A movie of one sound track without samples, whose entry says 2 channels and 48 kHz.
Bytes MovieOfSound(const char* format, const Bytes& configuration) {
  const Bytes entry =
      Box(format, Bytes().Fill(6).Be16(1).Fill(8).Be16(2).Be16(16).Fill(4).Be32(48000u << 16) +
                      configuration);
  const Bytes stbl = Box("stbl", FullBox("stsd", 0, 0, Bytes().Be32(1) + entry));
  const Bytes mdhd = FullBox("mdhd", 0, 0, Bytes().Fill(8).Be32(48000).Fill(8));
  const Bytes hdlr = FullBox("hdlr", 0, 0, Bytes().Be32(0).Text("soun").Fill(13));
  const Bytes trak = Box("trak", FullBox("tkhd", 0, 1, Bytes().Fill(8).Be32(1).Fill(68)) +
                                     Box("mdia", mdhd + hdlr + Box("minf", stbl)));
  return Box("ftyp", Bytes().Text("isom").Be32(0)) +
         Box("moov", FullBox("mvhd", 0, 0, Bytes().Fill(96)) + trak);
}

mp4::MovieInfo InfoOfBytes(const Bytes& file) {
  mp4::MemorySource source(file.data(), file.size());
  return mp4::InfoOf(&source);
}

}  // namespace

TEST(MovieInfo, DescribesTheMovie) {
  const mp4::MovieInfo info = InfoOfBytes(MovieWithEverything());
  EXPECT_TRUE(info.hasMovie);
  EXPECT_EQ(info.brand, "isom");
  EXPECT_EQ(info.compatibleBrands, std::vector<std::string>{"mp41"});
  EXPECT_EQ(info.seconds, 3.0);
  EXPECT_EQ(info.verdict, "clear");
  EXPECT_EQ(info.fragments, 0u);
}

TEST(MovieInfo, DescribesATrack) {
  const mp4::MovieInfo info = InfoOfBytes(MovieWithEverything());
  ASSERT_EQ(info.tracks.size(), 1u);
  const mp4::MovieTrack& track = info.tracks[0];
  EXPECT_EQ(track.id, 7u);
  EXPECT_EQ(track.handler, "vide");
  EXPECT_EQ(track.name, "V");
  EXPECT_EQ(track.language, "eng");
  EXPECT_TRUE(track.enabled);
  EXPECT_EQ(track.width, 320);
  EXPECT_EQ(track.rotation, 90);
  EXPECT_EQ(track.samples, 4u);
  EXPECT_EQ(track.bytes, 100u);
  EXPECT_EQ(track.syncSamples, 1u);
  EXPECT_TRUE(track.wholeTrack);
  EXPECT_EQ(track.rateNumerator, 30000u);
  EXPECT_EQ(track.rateDenominator, 1001u);
  EXPECT_TRUE(track.constantRate);
  ASSERT_EQ(track.edits.size(), 1u);
  EXPECT_EQ(track.edits[0].seconds, 3.0);
  EXPECT_DOUBLE_EQ(*track.edits[0].from, 1001 / 30000.0);
}

TEST(MovieInfo, NamesTheCodecWithProfileAndLevel) {
  const mp4::MovieInfo info = InfoOfBytes(MovieWithEverything());
  ASSERT_EQ(info.tracks[0].codecs.size(), 1u);
  const mp4::CodecInfo& codec = info.tracks[0].codecs[0];
  EXPECT_EQ(codec.codec, "H.264/AVC");
  EXPECT_EQ(codec.profile, "Main");
  EXPECT_EQ(codec.level, "3.1");
  EXPECT_EQ(codec.parameter, "avc1.4D401F");
  EXPECT_EQ(codec.width, 320u);
  EXPECT_FALSE(codec.isProtected);
}

TEST(MovieInfo, OpusPlaysAt48KilohertzWhateverWasEncoded) {
  const Bytes dOps = Box("dOps", Bytes{0, 1, 0, 0}.Be32(24000).Be16(0).Byte(0));
  const mp4::MovieInfo info = InfoOfBytes(MovieOfSound("Opus", dOps));
  ASSERT_EQ(1u, info.tracks.size());
  EXPECT_EQ(48000, info.tracks[0].codecs[0].sampleRate);
  EXPECT_EQ(1u, info.tracks[0].codecs[0].channels);
}

TEST(MovieInfo, AmrHasOneChannelWhateverItsEntrySays) {
  for (const char* format : {"samr", "sawb"}) {
    const mp4::MovieInfo info = InfoOfBytes(MovieOfSound(format, {}));
    ASSERT_EQ(1u, info.tracks.size());
    EXPECT_EQ(1u, info.tracks[0].codecs[0].channels) << format;
  }
  EXPECT_EQ(2u, InfoOfBytes(MovieOfSound("sawp", {})).tracks[0].codecs[0].channels);
}

TEST(MovieInfo, HasMetadataCoverAndChapters) {
  const mp4::MovieInfo info = InfoOfBytes(MovieWithEverything());
  ASSERT_EQ(info.tags.size(), 2u);
  EXPECT_EQ(info.tags[0].name, "Title");
  EXPECT_EQ(info.tags[0].value, "Song");
  EXPECT_EQ(info.tags[1].value, "3 of 9");
  EXPECT_EQ(info.coverType, "PNG");
  EXPECT_EQ(info.coverSize, 11u);
  ASSERT_EQ(info.chapters.size(), 2u);
  EXPECT_EQ(info.chapters[1].seconds, 1.5);
  EXPECT_EQ(info.chapters[1].title, "BC");
}

TEST(MovieInfo, OfWhatIsNoMovieIsUndetermined) {
  const mp4::MovieInfo info = InfoOfBytes(Bytes().Text("this is no movie file at all"));
  EXPECT_FALSE(info.hasMovie);
  EXPECT_EQ(info.verdict, "undetermined");
  EXPECT_FALSE(info.reason.empty());
  EXPECT_TRUE(info.tracks.empty());
}

// Two chunks of 50 bytes with a gap between them; four samples over 4004/30000 s, two parts.
TEST(MediaLayout, HasTheStretchesAndTheBytesOverTime) {
  const Bytes file = MovieWithEverything();
  mp4::MemorySource source(file.data(), file.size());
  const std::string json = mp4::LayoutJson(&source, 2);
  EXPECT_NE(json.find(R"("extents":[[28,78,50],[88,138,50]],"bytes":[50,50])"), std::string::npos)
      << json;
  EXPECT_NE(json.find(R"("id":7,"handler":"vide","codec":"H.264/AVC","protected":false)"),
            std::string::npos);
}
