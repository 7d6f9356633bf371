#include <gtest/gtest.h>

#include "inspect/FirstBytes.h"
#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;

std::string NameOf(const Bytes& bytes) {
  const char* name = mp4::NameOfFirstBytes(bytes.data(), bytes.size());
  return name != nullptr ? name : "";
}

TEST(FirstBytes, WellKnownFormatsAreNamed) {
  EXPECT_EQ("a PNG image", NameOf(Bytes{0x89}.Text("PNG\r\n\x1a\n")));
  EXPECT_EQ("a JPEG image", NameOf({0xFF, 0xD8, 0xFF, 0xE0}));
  EXPECT_EQ("a WebP image", NameOf(Bytes().Text("RIFF").Be32(4).Text("WEBP")));
  EXPECT_EQ("an AVI file", NameOf(Bytes().Text("RIFF").Be32(4).Text("AVI ")));
  EXPECT_EQ("a RIFF file", NameOf(Bytes().Text("RIFF").Be32(4).Text("xxxx")));
  EXPECT_EQ("an AIFF file", NameOf(Bytes().Text("FORM").Be32(4).Text("AIFC")));
  EXPECT_EQ("a Matroska file", NameOf(Bytes{0x1A, 0x45, 0xDF, 0xA3}.Fill(10)));
  EXPECT_EQ("a WebM file", NameOf(Bytes{0x1A, 0x45, 0xDF, 0xA3}.Fill(10).Text("webm")));
  EXPECT_EQ("an Ogg file", NameOf(Bytes().Text("OggS")));
  EXPECT_EQ("an MP3 file", NameOf({0xFF, 0xFB, 0x90, 0x00}));
  EXPECT_EQ("an AAC stream", NameOf({0xFF, 0xF1, 0x50, 0x80}));
  EXPECT_EQ("zeros, perhaps an empty download", NameOf(Bytes().Fill(16)));
  EXPECT_EQ("a DICOM image", NameOf(Bytes().Fill(128).Text("DICM")));
}

TEST(FirstBytes, ATransportStreamIsToldByItsStride) {
  Bytes stream;
  for (int i = 0; i < 3; ++i) stream.Byte(0x47).Fill(187, 0xFF);
  EXPECT_EQ("an MPEG transport stream", NameOf(stream));
  EXPECT_EQ("", NameOf(Bytes{0x47}.Fill(187, 0xFF).Byte(0x48).Fill(187, 0xFF)));
}

TEST(FirstBytes, TextIsToldApart) {
  EXPECT_EQ("an HTML page, perhaps a server's error message",
            NameOf(Bytes().Text("\xEF\xBB\xBF \n<!DocType html>")));
  EXPECT_EQ("XML, perhaps a DASH manifest", NameOf(Bytes().Text("<?xml version=\"1.0\"?>")));
  EXPECT_EQ("JSON", NameOf(Bytes().Text("{\"error\": 404}")));
  EXPECT_EQ("text", NameOf(Bytes().Text("404 not found\n")));
}

TEST(FirstBytes, NothingAndAnythingHaveNoName) {
  EXPECT_EQ("", NameOf({}));
  EXPECT_EQ("", NameOf(Bytes().Fill(40, 0xC3)));
  EXPECT_EQ("", NameOf(p::FileType()));
}

TEST(FirstBytes, TheReasonNamesTheFormat) {
  EXPECT_EQ("not a movie file: begins with PNG image",
            p::InspectBytes(Bytes{0x89}.Text("PNG\r\n\x1a\n").Fill(30)).reason);
  EXPECT_EQ("the file is empty", p::InspectBytes({}).reason);
  EXPECT_EQ("no movie box and no items", p::InspectBytes(p::FileType()).reason);
}

TEST(FirstBytes, TheMovieBoxMayHaveStoodBehindMediaThatIsCut) {
  const Bytes media = Box("mdat", Bytes().Fill(100));
  EXPECT_EQ("no movie box and no items", p::InspectBytes(p::FileType() + media).reason);
  const Bytes file = p::FileType() + Bytes(media).Cut(50);
  EXPECT_EQ("no movie box; the box \"mdat\" is cut at byte 50 of 108: bring the whole file",
            p::InspectBytes(file).reason);
}

}  // namespace
