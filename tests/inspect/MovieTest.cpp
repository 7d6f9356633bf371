#include <gtest/gtest.h>

#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;

Bytes TrackOf(const Bytes& mdia) { return p::Movie(Box("trak", p::Tkhd(1) + mdia)); }

TEST(InspectMovie, AMovieCutAnywhereInsideIsNotClear) {
  const Bytes file = p::FileType() + p::Moov(p::VideoTrak());
  EXPECT_EQ(p::kClear, p::VerdictOf(file));
  for (std::size_t n = 0; n < file.size(); ++n) {
    const mp4::Report report = p::InspectBytes(Bytes(file).Cut(n));
    EXPECT_EQ(p::kUndetermined, report.verdict) << n;
    EXPECT_FALSE(report.reason.empty()) << n;
  }
}

TEST(InspectMovie, TheReasonSaysWhereTheMovieIsCut) {
  const Bytes file = p::FileType() + p::Moov(p::VideoTrak());
  const std::size_t moov = p::FileType().size();
  const mp4::Report report = p::InspectBytes(Bytes(file).Cut(moov + 100));
  EXPECT_NE(std::string::npos, report.reason.find("the movie box is cut at byte 100 of "))
      << report.reason;
}

TEST(InspectMovie, AProtectedEntryInFrontOfTheCutIsFound) {
  const Bytes file = p::FileType() + p::Moov(p::Trak(1, "vide", {p::ProtectedVideo()}));
  EXPECT_EQ(p::kProtected, p::VerdictOf(Bytes(file).Cut(file.size() - 60)));
}

TEST(InspectMovie, ATrackWithoutTheWayToItsEntriesIsNotClear) {
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(Box("trak", p::Tkhd(1)))));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(TrackOf(Box("mdia", p::Hdlr("vide")))));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(TrackOf(Box("mdia", Box("minf", Box("dinf"))))));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(TrackOf(p::Mdia("vide", p::NoSamples()))));
  EXPECT_EQ(p::kClear, p::VerdictOf(TrackOf(p::Mdia("vide", p::Stsd({p::ClearVideo()})))));
}

TEST(InspectMovie, ASecondDescriptionOfATrackIsSeen) {
  const Bytes two = p::Stsd({p::ClearVideo()}) + p::Stsd({p::ProtectedVideo()});
  EXPECT_EQ(p::kProtected, p::VerdictOf(TrackOf(p::Mdia("vide", two))));
}

TEST(InspectMovie, ATrackWithoutHandlerOrHeaderIsJudgedByItsEntries) {
  const Bytes minf = Box("minf", Box("stbl", p::Stsd({p::ClearVideo()})));
  const mp4::Report report = p::InspectBytes(p::Movie(Box("trak", Box("mdia", minf))));
  EXPECT_EQ(p::kClear, report.verdict) << report.reason;
  EXPECT_EQ(0U, report.tracks.at(0).id);
  EXPECT_EQ("", report.tracks.at(0).handler);
}

TEST(InspectMovie, AVersionOneTrackHeaderNamesItsTrack) {
  const Bytes header = FullBox("tkhd", 1, 7, Bytes().Fill(16).Be32(9).Fill(80));
  const Bytes trak = Box("trak", header + p::Mdia("vide", p::Stsd({p::ClearVideo()})));
  EXPECT_EQ(9U, p::InspectBytes(p::Movie(trak)).tracks.at(0).id);
}

TEST(InspectMovie, AMovieWithoutTracksIsNotClear) {
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie({})));
}

TEST(InspectMovie, OneOfTwoMoviesIsEnough) {
  const Bytes clear = p::Moov(p::VideoTrak());
  const Bytes encrypted = p::Moov(p::Trak(1, "vide", {p::ProtectedVideo()}));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::FileType() + clear + clear));
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::FileType() + clear + encrypted));
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::FileType() + encrypted + p::MediaData() + clear));
}

TEST(InspectMovie, ABrokenTrackDoesNotHideTheOthers) {
  const Bytes broken = Box("trak", Bytes().Be32(4).Text("mdia").Fill(16));
  const Bytes encrypted = p::Trak(2, "vide", {p::ProtectedVideo()});
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::Movie(broken + encrypted)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(broken + p::VideoTrak(2))));
}

TEST(InspectMovie, ASizeOffByOneIsNotClear) {
  for (const int change : {-1, 1}) {
    EXPECT_EQ(p::kUndetermined,
              p::VerdictOf(p::Movie(p::Lying(p::VideoTrak(), change) + p::AudioTrak())));
    EXPECT_EQ(p::kUndetermined,
              p::VerdictOf(p::FileType() + p::Lying(p::Moov(p::VideoTrak()), change)));
  }
}

TEST(InspectMovie, ATrackThatCoversAnotherIsNotClear) {
  const Bytes second = p::Trak(2, "vide", {p::ProtectedVideo()});
  const auto size = static_cast<int>(second.size());
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(p::Lying(p::VideoTrak(), size) + second)));
  const Bytes covering = Box("moov", p::Lying(p::Mvhd(), size) + second + p::VideoTrak());
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::FileType() + covering));
}

TEST(InspectMovie, ABoxThatRunsToItsParentsEndIsNotClear) {
  Bytes edits = Box("edts");
  edits.PutBe32(0, 0);
  const Bytes trak = Box("trak", p::Tkhd(1) + p::Mdia("vide", p::Stsd({p::ClearVideo()})) + edits);
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(trak)));
}

TEST(InspectMovie, ABoxOfUnknownTypeThatHoldsATrackIsNotClear) {
  Bytes trak = p::VideoTrak(2);
  const Bytes renamed = Bytes().Be32(static_cast<std::uint32_t>(trak.size())).Text("trax");
  Bytes hidden = renamed;
  for (std::size_t i = 8; i < trak.size(); ++i) hidden.Byte(trak[i]);
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(p::VideoTrak() + hidden)));
  const Bytes harmless = Box("trax", Bytes().Fill(40, 0x20));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::Movie(p::VideoTrak() + harmless)));
}

TEST(InspectMovie, ATracksBoxOutsideItsParentIsNotClear) {
  for (const Bytes& stray : {p::VideoTrak(2), Box("mdia"), p::Stsd({p::ClearVideo()}),
                             p::Sinf("avc1", "cenc"), Box("senc")}) {
    EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ClearMovie() + stray));
  }
}

TEST(InspectMovie, CutMediaDataAndPaddingAreNotedOnly) {
  for (const char* type : {"mdat", "free", "skip", "wide"}) {
    const mp4::Report report = p::InspectBytes(p::ClearMovie() + SizedBox(1000, type));
    EXPECT_EQ(p::kClear, report.verdict) << type;
    EXPECT_EQ(1U, report.problems.size());
  }
  EXPECT_EQ(p::kClear, p::VerdictOf(p::ClearMovie() + Bytes().Fill(40)));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::ClearMovie() + Bytes().Fill(7, 0x41)));
}

TEST(InspectMovie, OtherBrokenBoxesAtTheTopLevelAreNotClear) {
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ClearMovie() + Bytes().Be32(7).Text("mdat")));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ClearMovie() + SizedBox(1000, "zzzz")));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ClearMovie() + Bytes().Be32(1).Text("mdat").Be64(0)));
}

TEST(InspectMovie, AnOldTagAtTheFilesEndIsNotedOnly) {
  const Bytes tag = Bytes().Text("TAG").Fill(125);
  EXPECT_EQ(p::kClear, p::VerdictOf(p::ClearMovie() + tag));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ClearMovie() + tag + Bytes{1}));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::ClearMovie() + Bytes().Text("Connection closed.\n")));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ClearMovie() + Bytes().Text("Connection").Byte(1)));
}

TEST(InspectMovie, ACompressedMovieIsJudgedLikeAPlainOne) {
  const Bytes clear = p::Compressed(p::Moov(p::VideoTrak()));
  const mp4::Report report = p::InspectBytes(p::FileType() + clear);
  EXPECT_EQ(p::kClear, report.verdict) << report.reason;
  const mp4::Report encrypted = p::InspectBytes(
      p::FileType() + p::Compressed(p::Moov(p::Trak(1, "vide", {p::ProtectedVideo()}))));
  EXPECT_EQ(p::kProtected, encrypted.verdict);
  EXPECT_EQ("moov/cmov/cmvd/moov/trak[1]/mdia/minf/stbl/stsd/encv[1]",
            encrypted.evidence.at(0).boxPath);
  EXPECT_FALSE(encrypted.evidence.at(0).offset.has_value());
}

TEST(InspectMovie, ACompressedMovieThatDoesNotInflateAsAWholeIsNotClear) {
  const Bytes moov = p::Moov(p::VideoTrak());
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::FileType() + p::Compressed(moov, "bzip")));
  const Bytes whole = p::FileType() + p::Compressed(moov);
  const std::size_t data = p::FileType().size() + 8 + 8 + 12 + 8;
  for (const int change : {-1, 0, 1}) {
    Bytes file = whole;
    file.PutBe32(data, static_cast<std::uint32_t>(static_cast<int>(moov.size()) + change));
    EXPECT_EQ(change > 0 ? p::kUndetermined : p::kClear, p::VerdictOf(file)) << change;
  }
  Bytes broken = whole;
  broken.PutBe32(whole.size() - 4, 0xDEADBEEF);
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(broken));
}

TEST(InspectMovie, ATrackBesideACompressedMovieIsSeen) {
  Bytes moov = p::Compressed(p::Moov(p::VideoTrak()));
  const Bytes trak = p::Trak(2, "soun", {p::ProtectedAudio()});
  moov = p::Lying(moov, static_cast<int>(trak.size())) + trak;
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::FileType() + moov));
}

TEST(InspectMovie, BrandsInitialDescriptorsAndHintsAreNoProtection) {
  const Bytes moov = p::Moov(p::AudioTrak() + FullBox("iods", 0, 0, Bytes().Fill(8)) +
                             Box("drm ", Bytes().Fill(4)));
  const mp4::Report report =
      p::InspectBytes(Box("ftyp", Bytes().Text("M4P ").Be32(0).Text("MGSVpiff")) + moov);
  EXPECT_EQ(p::kClear, report.verdict) << report.reason;
  EXPECT_EQ(1U, report.notes.size());
}

}  // namespace
