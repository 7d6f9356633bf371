#include <gtest/gtest.h>

#include "inspect/Signs.h"
#include "tests/TreeFixtures.h"
#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;

constexpr char kTraf[] = "moof/traf";

/// Collects the children of the first track fragment for a track.
struct Collected {
  explicit Collected(const Bytes& trafChildren, std::uint32_t track = 1)
      : over(p::Fragment(trafChildren)) {
    mp4::BoxId box = over.tree.FirstChild(over.At(kTraf));
    for (; box != mp4::kNoBox; box = over.tree.Next(box)) {
      kept += signs.Collect(box, track) ? 1 : 0;
    }
  }
  /// Resolves against a movie whose track 1 is protected or clear.
  void ResolveWithTrack(bool isProtected) {
    movie.seen = true;
    movie.tracks[1].isProtected = isProtected;
    signs.Resolve(movie);
  }
  void ResolveWithoutMovie() { signs.Resolve(movie); }

  fixture::TreeOver over;
  mp4::Report report;
  mp4::Findings findings{&over.tree, &report};
  mp4::Signs signs{&findings};
  mp4::MovieFacts movie;
  int kept = 0;
};

Bytes Saiz(std::uint32_t flags, const char* type) {
  return FullBox("saiz", 0, flags, Bytes().Text(type).Be32(0).Byte(8).Be32(1));
}

}  // namespace

TEST(Signs, AreBoxesThatOnlyEncryptedMediaHas) {
  for (const Bytes& sign :
       {p::Senc(), p::PiffSenc(), p::Seig(), p::SeigMap(), Saiz(1, "cenc"), Saiz(1, "cbcs")}) {
    EXPECT_EQ(1, Collected(sign).kept);
  }
}

TEST(Signs, BoxesThatMayBeAboutAnythingAreNone) {
  const Bytes otherGroup = FullBox("sgpd", 1, 0, Bytes().Text("roll").Be32(2).Be32(1).Be16(1));
  const Bytes otherUser = Box("uuid", Bytes().Fill(24, 0x11));
  for (const Bytes& box : {Saiz(0, "cenc"), Saiz(1, "vide"), otherGroup, otherUser, Box("free"),
                           FullBox("sbgp", 0, 0, Bytes().Text("roll").Be32(0))}) {
    EXPECT_EQ(0, Collected(box).kept);
  }
}

TEST(Signs, SupportAProtectedTrack) {
  Collected c(p::Senc() + p::Seig());
  c.ResolveWithTrack(true);
  ASSERT_EQ(2U, c.report.evidence.size());
  EXPECT_EQ("moof[1]/traf[1]/senc", c.report.evidence[0].boxPath);
  EXPECT_EQ(1U, c.report.evidence[0].track);
  EXPECT_TRUE(c.report.problems.empty());
  EXPECT_FALSE(c.findings.IsProtected()) << "the sample entry says so";
}

TEST(Signs, ContradictAClearTrack) {
  Collected c(p::Senc());
  c.ResolveWithTrack(false);
  EXPECT_TRUE(c.report.evidence.empty());
  ASSERT_EQ(1U, c.report.problems.size());
  EXPECT_TRUE(c.report.problems[0].mayHide);
  EXPECT_EQ("boxes of encrypted samples, yet no sample entry of track 1 is protected",
            c.report.problems[0].text);
}

TEST(Signs, OfATrackThatTheMovieDoesNotHaveContradictToo) {
  Collected c(p::Senc(), 9);
  c.ResolveWithTrack(true);
  ASSERT_EQ(1U, c.report.problems.size());
  EXPECT_NE(std::string::npos, c.report.problems[0].text.find("track 9"));
}

TEST(Signs, WithoutAMovieTheyProtectByThemselves) {
  for (const Bytes& sign : {p::Senc(), p::PiffSenc(), p::Seig()}) {
    Collected c(sign);
    c.ResolveWithoutMovie();
    EXPECT_TRUE(c.findings.IsProtected());
    EXPECT_EQ(1U, c.report.evidence.size());
  }
}

TEST(Signs, WithoutAMovieHintsProtectNothing) {
  for (const Bytes& hint : {p::SeigMap(), Saiz(1, "cenc")}) {
    Collected c(hint);
    c.ResolveWithoutMovie();
    EXPECT_FALSE(c.findings.IsProtected());
    EXPECT_TRUE(c.report.evidence.empty());
  }
}

TEST(Signs, GroupsThatAreClearAreNone) {
  Collected c(p::Seig(0) + p::SeigMap());
  EXPECT_EQ(2, c.kept);
  c.ResolveWithTrack(false);
  EXPECT_TRUE(c.report.problems.empty()) << "the description says what the map is about";
}

TEST(Signs, AMapWithoutADescriptionContradicts) {
  Collected c(p::SeigMap());
  c.ResolveWithTrack(false);
  EXPECT_EQ(1U, c.report.problems.size());
}

TEST(Signs, OfAKindTheFirstOfEachTrackIsKept) {
  Collected c(p::Senc() + p::PiffSenc() + p::Senc());
  EXPECT_EQ(3, c.kept) << "all are known";
  mp4::BoxId senc = c.over.At("moof/traf/senc");
  c.signs.Collect(senc, 2);
  c.movie.tracks[2].isProtected = true;
  c.ResolveWithTrack(true);
  ASSERT_EQ(2U, c.report.evidence.size());
  EXPECT_EQ(1U, c.report.evidence[0].track);
  EXPECT_EQ(2U, c.report.evidence[1].track);
}

TEST(Signs, SystemsOfAFragmentContradictNothing) {
  Collected with({});
  with.signs.CollectSystem(with.over.At("moof"));
  with.ResolveWithTrack(false);
  EXPECT_TRUE(with.report.problems.empty());
  EXPECT_TRUE(with.report.evidence.empty());
  Collected without({});
  without.signs.CollectSystem(without.over.At("moof"));
  without.ResolveWithoutMovie();
  EXPECT_TRUE(without.findings.IsProtected());
  EXPECT_FALSE(without.report.evidence.at(0).track.has_value());
}
