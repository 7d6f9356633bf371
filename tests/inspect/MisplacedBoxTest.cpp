#include <gtest/gtest.h>

#include "inspect/Misplaced.h"
#include "io/FourCC.h"
#include "tests/TreeFixtures.h"
#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;

/// The doubt about an unknown child of a movie, empty without one.
std::string DoubtAbout(const Bytes& box) {
  fixture::TreeOver over(Box("moov", box));
  mp4::Report report;
  mp4::Findings findings(&over.tree, &report);
  mp4::CheckUnknownBox(&findings, over.tree.FirstChild(over.At("moov")));
  return report.problems.empty() ? "" : report.problems[0].text;
}

bool IsLikeSchemeInfo(const Bytes& payload) {
  fixture::TreeOver over(Box("moov", Box("zzzz", payload)));
  return mp4::LooksLikeSchemeInfo(&over.tree, over.At("moov/zzzz"));
}

Bytes Trak() { return Box("trak", p::Tkhd(1)); }

}  // namespace

TEST(MisplacedBox, BoxesOnTheWayAreNoFormats) {
  for (const char* type : {"moov", "trak", "stsd", "sinf", "tenc", "infe", "senc", "cmvd"}) {
    EXPECT_TRUE(mp4::IsOnTheWay(mp4::LoadLe32(reinterpret_cast<const unsigned char*>(type))))
        << type;
  }
  EXPECT_FALSE(mp4::IsOnTheWay(mp4::FourCC("mp4a")));
  EXPECT_FALSE(mp4::IsOnTheWay(mp4::FourCC("hdlr")));
}

TEST(MisplacedBox, ABoxOnTheWayStandsWhereItBelongsOrIsDoubted) {
  EXPECT_EQ("a box \"stsd\" stands where none belongs", DoubtAbout(Box("stsd")));
  EXPECT_EQ("", DoubtAbout(Box("hdlr"))) << "only begins one";
}

TEST(MisplacedBox, AnUnknownBoxThatHoldsOneIsDoubted) {
  const std::string doubt = "the unknown box \"zzzz\" holds boxes of a movie";
  EXPECT_EQ(doubt, DoubtAbout(Box("zzzz", Trak())));
  EXPECT_EQ(doubt, DoubtAbout(Box("zzzz", p::Hdlr("vide"))));
  EXPECT_EQ(doubt, DoubtAbout(FullBox("zzzz", 0, 0, Trak()))) << "behind version and flags";
  EXPECT_EQ(doubt, DoubtAbout(FullBox("zzzz", 0, 0, Bytes().Be32(1).Append(Trak()))))
      << "and behind a count";
  EXPECT_EQ("", DoubtAbout(Box("zzzz", Bytes().Fill(12).Append(Trak()))));
}

TEST(MisplacedBox, AnUnknownBoxOfAnythingElseIsNot) {
  EXPECT_EQ("", DoubtAbout(Box("zzzz")));
  EXPECT_EQ("", DoubtAbout(Box("zzzz", Bytes().Fill(7))));
  EXPECT_EQ("", DoubtAbout(Box("zzzz", Bytes().Fill(40, 0x41))));
  EXPECT_EQ("", DoubtAbout(Box("zzzz", Box("mp4a"))));
}

TEST(MisplacedBox, TheBoxHeldHasToFit) {
  EXPECT_NE("", DoubtAbout(Box("zzzz", Bytes().Be32(8).Text("trak"))));
  EXPECT_EQ("", DoubtAbout(Box("zzzz", Bytes().Be32(9).Text("trak"))));
  EXPECT_EQ("", DoubtAbout(Box("zzzz", Bytes().Be32(7).Text("trak"))));
  EXPECT_EQ("", DoubtAbout(FullBox("zzzz", 0, 0, Bytes().Be32(9).Text("trak"))));
}

TEST(MisplacedBox, BulkMayLookLikeAnything) {
  for (const char* type : {"mdat", "free", "skip", "wide", "udta"}) {
    EXPECT_EQ("", DoubtAbout(Box(type, Trak()))) << type;
  }
}

TEST(MisplacedBox, ASchemeInformationBoxIsToldByItsFirstChild) {
  EXPECT_TRUE(IsLikeSchemeInfo(p::Frma("avc1")));
  EXPECT_TRUE(IsLikeSchemeInfo(p::Schm("cenc")));
  EXPECT_TRUE(IsLikeSchemeInfo(p::Schi({})));
  EXPECT_TRUE(IsLikeSchemeInfo(Bytes().Be32(8).Text("schi")));
  EXPECT_FALSE(IsLikeSchemeInfo(Bytes().Be32(9).Text("schi")));
  EXPECT_FALSE(IsLikeSchemeInfo(Bytes().Be32(7).Text("schi")));
  EXPECT_FALSE(IsLikeSchemeInfo(p::Tenc()));
  EXPECT_FALSE(IsLikeSchemeInfo({}));
}
