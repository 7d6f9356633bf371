#include <gtest/gtest.h>

#include <map>

#include "door/BoxView.h"
#include "inspect/BoxFields.h"
#include "io/FourCC.h"
#include "io/MemorySource.h"
#include "tests/Bytes.h"

namespace {

using FieldTexts = std::map<std::string, std::string>;

/// The fields of the box at the end of a path of types, as texts.
FieldTexts FieldsAt(const Bytes& file, const std::vector<std::string>& types, bool* cut = nullptr) {
  mp4::MemorySource source(file.data(), file.size());
  mp4::CachedSource cache(&source);
  mp4::BoxTree tree(&cache);
  mp4::BoxId id = mp4::kRootBox;
  for (const std::string& type : types) {
    id = tree.FirstChild(id);
    while (id != mp4::kNoBox &&
           type.compare(0, 4, reinterpret_cast<const char*>(&tree.At(id).type), 4) != 0) {
      id = tree.Next(id);
    }
    if (id == mp4::kNoBox) return {{"missing", type}};
  }
  bool ignored = false;
  FieldTexts texts;
  for (const mp4::BoxField& field : mp4::FieldsOf(&tree, id, cut != nullptr ? cut : &ignored)) {
    EXPECT_TRUE(texts.emplace(field.name, mp4::TextOfValue(field.value)).second) << field.name;
  }
  return texts;
}

Bytes MediaIn(const Bytes& table) {
  return Box("moov", Box("trak", Box("mdia", Box("minf", Box("stbl", table)))));
}
const std::vector<std::string> kTablePath = {"moov", "trak", "mdia", "minf", "stbl"};

FieldTexts TableFields(const std::string& type, const Bytes& table) {
  std::vector<std::string> path = kTablePath;
  path.push_back(type);
  return FieldsAt(MediaIn(table), path);
}

}  // namespace

TEST(BoxFields, OfAFileType) {
  const Bytes file = Box("ftyp", Bytes().Text("isom").Be32(512).Text("iso2mp41"));
  EXPECT_EQ(FieldsAt(file, {"ftyp"}), (FieldTexts{{"majorBrand", "isom"},
                                                  {"minorVersion", "512"},
                                                  {"compatibleBrands", "iso2, mp41"}}));
}

TEST(BoxFields, OfUnknownBoxesAreNone) {
  EXPECT_EQ(FieldsAt(Box("zzzz", Bytes().Fill(40, 1)), {"zzzz"}), FieldTexts{});
}

TEST(BoxFields, OfABoxThatIsCutAreThoseItHas) {
  bool cut = false;
  EXPECT_EQ(FieldsAt(Box("ftyp", Bytes().Text("isom").Be16(0)), {"ftyp"}, &cut),
            (FieldTexts{{"majorBrand", "isom"}}));
  EXPECT_TRUE(cut);
  FieldsAt(Box("ftyp", Bytes().Text("isom").Be32(0)), {"ftyp"}, &cut);
  EXPECT_FALSE(cut);
}

// 2,082,844,800 seconds lie between the beginnings of 1904 and 1970.
TEST(BoxFields, OfAMovieHeaderInBothVersions) {
  const Bytes rest =
      Bytes().Be32(0x10000).Be16(0x100).Fill(10).Be32(0x10000).Fill(12).Be32(0x10000).Fill(12).Be32(
          0x40000000) +
      Bytes().Fill(24).Be32(3);
  const Bytes old =
      FullBox("mvhd", 0, 0, Bytes().Be32(0).Be32(2082844800).Be32(600).Be32(1200) + rest);
  const FieldTexts narrow = FieldsAt(Box("moov", old), {"moov", "mvhd"});
  EXPECT_EQ(narrow, (FieldTexts{{"version", "0"},
                                {"creationTime", "unset"},
                                {"modificationTime", "1970-01-01T00:00:00Z"},
                                {"timescale", "600"},
                                {"duration", "1200"},
                                {"rate", "1"},
                                {"volume", "1"},
                                {"nextTrackId", "3"}}));
  const Bytes wide =
      FullBox("mvhd", 1, 0, Bytes().Be64(0).Be64(0).Be32(600).Be64(0x100000000) + rest);
  EXPECT_EQ(FieldsAt(Box("moov", wide), {"moov", "mvhd"})["duration"], "4294967296");
}

TEST(BoxFields, OfAHandlerInBothKindsOfNames) {
  const Bytes head = Bytes().Be32(0).Text("soun").Fill(12);
  const Bytes standard = FullBox("hdlr", 0, 0, head + Bytes().Text("Sound").Byte(0));
  const Bytes quickTime = FullBox("hdlr", 0, 0, head + Bytes().Byte(5).Text("Sound"));
  for (const Bytes& box : {standard, quickTime}) {
    EXPECT_EQ(FieldsAt(Box("moov", Box("trak", Box("mdia", box))),
                       {"moov", "trak", "mdia", "hdlr"})["name"],
              "Sound");
  }
}

TEST(BoxFields, OfATableAreItsCountAndFirstRows) {
  Bytes table = Bytes().Be32(9);
  for (unsigned i = 1; i <= 9; ++i) table.Be32(i).Be32(1024);
  const FieldTexts fields = TableFields("stts", FullBox("stts", 0, 0, table));
  EXPECT_EQ(fields.at("entryCount"), "9");
  EXPECT_EQ(fields.at("entries"),
            "1 x 1024, 2 x 1024, 3 x 1024, 4 x 1024, 5 x 1024, 6 x 1024, 7 x 1024, 8 x 1024");
}

TEST(BoxFields, OfATableWithoutItsRowsHoldNoRows) {
  const FieldTexts fields =
      TableFields("stco", FullBox("stco", 0, 0, Bytes().Be32(0xFFFFFFFF).Be32(48)));
  EXPECT_EQ(fields.at("entryCount"), "4294967295");
  EXPECT_EQ(fields.at("offsets"), "48");
}

TEST(BoxFields, OfCompositionOffsetsAreSigned) {
  const FieldTexts fields =
      TableFields("ctts", FullBox("ctts", 0, 0, Bytes().Be32(1).Be32(2).Be32(0xFFFFFFFF)));
  EXPECT_EQ(fields.at("entries"), "2 x -1");
}

TEST(BoxFields, OfAnAvcConfiguration) {
  const Bytes configuration = Box("avcC", Bytes{1, 100, 0, 40, 0xFF, 0xE1, 0, 2, 0x67, 100, 1, 0, 1,
                                                0x68, 0xFD, 0xF8, 0xF8, 0});
  const Bytes entry =
      Box("avc1", Bytes().Fill(6).Be16(1).Fill(16).Be16(1920).Be16(1080).Fill(50) + configuration);
  const Bytes stsd = FullBox("stsd", 0, 0, Bytes().Be32(1) + entry);
  std::vector<std::string> path = kTablePath;
  path.insert(path.end(), {"stsd", "avc1"});
  const FieldTexts video = FieldsAt(MediaIn(stsd), path);
  EXPECT_EQ(video.at("width"), "1920");
  EXPECT_EQ(video.at("height"), "1080");
  path.push_back("avcC");
  const FieldTexts codec = FieldsAt(MediaIn(stsd), path);
  EXPECT_EQ(codec.at("profile"), "High");
  EXPECT_EQ(codec.at("level"), "4");
  EXPECT_EQ(codec.at("codecsParameter"), "640028");
  EXPECT_EQ(codec.at("chromaFormat"), "4:2:0");
  EXPECT_EQ(codec.at("bitDepthLuma"), "8");
}

// AAC LC (2), 44.1 kHz (4), two channels: 00010 0100 0010 000.
TEST(BoxFields, OfAnElementaryStream) {
  const Bytes specific = Bytes{5, 2, 0x12, 0x10};
  const Bytes decoder = Bytes{4, 17, 0x40, 0x15}.Be24(0).Be32(128000).Be32(96000) + specific;
  const Bytes stream = Bytes{3, 22}.Be16(1).Byte(0) + decoder;
  const Bytes entry =
      Box("mp4a", Bytes().Fill(6).Be16(1).Fill(8).Be16(2).Be16(16).Fill(4).Be32(44100u << 16) +
                      FullBox("esds", 0, 0, stream));
  std::vector<std::string> path = kTablePath;
  path.insert(path.end(), {"stsd", "mp4a"});
  const Bytes file = MediaIn(FullBox("stsd", 0, 0, Bytes().Be32(1) + entry));
  EXPECT_EQ(FieldsAt(file, path)["sampleRate"], "44100");
  path.push_back("esds");
  const FieldTexts fields = FieldsAt(file, path);
  EXPECT_EQ(fields.at("profile"), "AAC LC");
  EXPECT_EQ(fields.at("codecsParameter"), "40.2");
  EXPECT_EQ(fields.at("sampleRate"), "44100");
  EXPECT_EQ(fields.at("channelCount"), "2");
  EXPECT_EQ(fields.at("averageBitrate"), "96000");
}

TEST(BoxFields, OfATrackEncryption) {
  const Bytes tenc = FullBox("tenc", 1, 0, Bytes{0, 0x19, 1, 0}.Fill(16, 0xAB).Byte(8).Fill(8, 7));
  const FieldTexts fields = FieldsAt(Box("schi", tenc), {"schi", "tenc"});
  EXPECT_EQ(fields, (FieldTexts{{"version", "1"},
                                {"isProtected", "true"},
                                {"perSampleIvSize", "0"},
                                {"cryptBlocks", "1"},
                                {"skipBlocks", "9"},
                                {"keyId", "abababab-abab-abab-abab-abababababab"},
                                {"constantIv", "0707070707070707"}}));
}

TEST(BoxFields, OfATrackEncryptionThatIsCutSayOnlyThat) {
  bool cut = false;
  const Bytes tenc = FullBox("tenc", 0, 0, Bytes().Fill(10));
  EXPECT_EQ(FieldsAt(Box("schi", tenc), {"schi", "tenc"}, &cut), (FieldTexts{{"version", "0"}}));
  EXPECT_TRUE(cut);
}

TEST(BoxFields, OfASystemAreItsNameAndKeyIds) {
  const Bytes widevine = Bytes{0xED, 0xEF, 0x8B, 0xA9, 0x79, 0xD6, 0x4A, 0xCE,
                               0xA3, 0xC8, 0x27, 0xDC, 0xD5, 0x1D, 0x21, 0xED};
  const Bytes pssh =
      FullBox("pssh", 1, 0, widevine + Bytes().Be32(1).Fill(16, 1).Be32(2).Be16(0xCAFE));
  const FieldTexts fields = FieldsAt(Box("moov", pssh), {"moov", "pssh"});
  EXPECT_EQ(fields.at("systemId"), "edef8ba9-79d6-4ace-a3c8-27dcd51d21ed");
  EXPECT_EQ(fields.at("keyIds"), "01010101-0101-0101-0101-010101010101");
  EXPECT_EQ(fields.at("dataSize"), "2");
  EXPECT_EQ(fields.at("data"), "cafe");
}

TEST(BoxFields, OfARunAreWhatItsFlagsAnnounce) {
  const Bytes run = FullBox("trun", 0, 0x301, Bytes().Be32(1).Be32(0xFFFFFFF8).Be32(1024).Be32(77));
  const FieldTexts fields = FieldsAt(Box("moof", Box("traf", run)), {"moof", "traf", "trun"});
  EXPECT_EQ(fields.at("dataOffset"), "-8");
  EXPECT_EQ(fields.at("samples"), "duration 1024, size 77");
}

TEST(BoxFields, OfATagAreItsValue) {
  const auto tag = [](std::uint32_t type, const Bytes& value) {
    const Bytes data = Box("data", Bytes().Be32(type).Be32(0) + value);
    const Bytes ilst = Box("ilst", Box("\xA9"
                                       "nam",
                                       data));
    return FieldsAt(Box("moov", Box("udta", FullBox("meta", 0, 0, ilst))),
                    {"moov", "udta", "meta", "ilst",
                     "\xA9"
                     "nam",
                     "data"});
  };
  EXPECT_EQ(tag(1, Bytes().Text("Song"))["value"], "Song");
  EXPECT_EQ(tag(21, Bytes().Be16(0xFFFE))["value"], "-2");
  EXPECT_EQ(tag(0, Bytes().Be16(0xFFFE))["value"], "fffe");
  EXPECT_EQ(tag(13, Bytes().Fill(300))["imageSize"], "300");
  EXPECT_EQ(tag(1, Bytes().Fill(300, 'a'))["value"].size(), 259u);
}
