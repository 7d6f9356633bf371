#include <gtest/gtest.h>

#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;

Bytes Clear() { return p::FragmentedMovie(p::ClearVideo()); }
Bytes Encrypted() { return p::FragmentedMovie(p::ProtectedVideo()); }
Bytes Saiz(const char* type) {
  return FullBox("saiz", 0, 1, Bytes().Text(type).Be32(0).Byte(8).Be32(1));
}

TEST(InspectFragments, AClearMovieWithClearFragmentsIsClear) {
  const mp4::Report report = p::InspectBytes(Clear() + p::Fragment() + p::Fragment());
  EXPECT_EQ(p::kClear, report.verdict) << report.reason;
  EXPECT_EQ(2U, report.fragments);
}

TEST(InspectFragments, AnInitializationSegmentAloneIsJudged) {
  EXPECT_EQ(p::kClear, p::VerdictOf(Clear()));
  EXPECT_EQ(p::kProtected, p::VerdictOf(Encrypted()));
}

TEST(InspectFragments, SignsOfEncryptionContradictClearEntries) {
  for (const Bytes& sign : {p::Senc(), p::PiffSenc(), p::Seig(), p::SeigMap(), Saiz("cenc"),
                            FullBox("senc", 0, 0, Bytes().Be32(0))}) {
    EXPECT_EQ(p::kUndetermined, p::VerdictOf(Clear() + p::Fragment(sign)));
    EXPECT_EQ(p::kProtected, p::VerdictOf(Encrypted() + p::Fragment(sign)));
  }
}

TEST(InspectFragments, BoxesThatOnlyLookLikeSignsAreNone) {
  const Bytes roll = FullBox("sgpd", 1, 0, Bytes().Text("roll").Be32(2).Be32(1).Be16(1));
  const Bytes untyped = FullBox("saiz", 0, 0, Bytes().Byte(8).Be32(1));
  const Bytes off = p::Seig(0) + p::SeigMap();
  for (const Bytes& box : {roll, untyped, off, Saiz("abcd")})
    EXPECT_EQ(p::kClear, p::VerdictOf(Clear() + p::Fragment(box)));
}

TEST(InspectFragments, AGroupDescriptionThatCannotBeReadIsASign) {
  Bytes cut = p::Seig(0);
  cut = FullBox("sgpd", 1, 0, Bytes().Text("seig").Be32(20).Be32(1).Fill(19));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(Clear() + p::Fragment(cut)));
}

TEST(InspectFragments, SignsInTheTrackContradictItsEntries) {
  EXPECT_EQ(p::kUndetermined,
            p::VerdictOf(p::Movie(p::Trak(1, "vide", {p::ClearVideo()}, p::Senc()))));
  const Bytes tables = p::Stsd({p::ClearVideo()}) + p::NoSamples() + p::Seig();
  EXPECT_EQ(p::kUndetermined,
            p::VerdictOf(p::Movie(Box("trak", p::Tkhd(1) + p::Mdia("vide", tables)))));
}

TEST(InspectFragments, AFragmentInFrontOfItsMovieCounts) {
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Fragment(p::Senc()) + Clear()));
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::Fragment(p::Senc()) + Encrypted()));
}

TEST(InspectFragments, AFragmentOfAnUnknownTrackOrEntryIsNotClear) {
  const auto fragment = [](std::uint32_t track, std::uint32_t entry) {
    const Bytes tfhd = FullBox("tfhd", 0, 2, Bytes().Be32(track).Be32(entry));
    return Box("moof", Box("traf", tfhd));
  };
  EXPECT_EQ(p::kClear, p::VerdictOf(Clear() + fragment(1, 1)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(Clear() + fragment(2, 1)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(Clear() + fragment(1, 2)));
}

TEST(InspectFragments, ACutFirstFragmentIsNotClear) {
  const Bytes movie = Clear();
  const Bytes moof = p::Moof({});
  for (std::size_t n = 8; n < moof.size(); ++n)
    EXPECT_EQ(p::kUndetermined, p::VerdictOf(movie + Bytes(moof).Cut(n))) << n;
}

TEST(InspectFragments, ASegmentAloneIsProtectedByItsOwnSigns) {
  for (const Bytes& sign : {p::Senc(), p::PiffSenc(), p::Seig()}) {
    const mp4::Report report = p::InspectBytes(p::SegmentType() + p::Fragment(sign));
    EXPECT_EQ(p::kProtected, report.verdict);
    EXPECT_TRUE(report.schemes.empty());
    EXPECT_EQ(1U, report.evidence.at(0).track);
    EXPECT_EQ(p::kProtected, p::VerdictOf(p::Fragment(sign)));
  }
  for (const Bytes& system : {p::Pssh(), p::PiffPssh()})
    EXPECT_EQ(p::kProtected, p::VerdictOf(p::SegmentType() + p::Fragment({}, system)));
}

TEST(InspectFragments, ASegmentAloneWithoutSignsIsUndetermined) {
  for (const Bytes& box : {Bytes(), Saiz("cenc"), p::Seig(0)}) {
    const mp4::Report report = p::InspectBytes(p::SegmentType() + p::Fragment(box));
    EXPECT_EQ(p::kUndetermined, report.verdict);
    EXPECT_NE(std::string::npos, report.reason.find("give its initialization segment"))
        << report.reason;
  }
}

TEST(InspectFragments, FarFragmentsAreLookedAtWithEverything) {
  const Bytes far = Box("free", Bytes().Fill(64 << 10));
  const Bytes file = Clear() + p::Fragment() + far + p::Fragment(p::Senc());
  const mp4::Report first = p::InspectBytes(file);
  EXPECT_EQ(p::kClear, first.verdict) << first.reason;
  EXPECT_EQ(1U, first.fragments);
  EXPECT_FALSE(first.everything);
  const mp4::Report all = p::InspectBytes(file, true);
  EXPECT_EQ(p::kUndetermined, all.verdict);
  EXPECT_EQ(2U, all.fragments);
  EXPECT_TRUE(all.everything);
}

TEST(InspectFragments, AFirstFragmentFarAwayIsLookedAt) {
  const Bytes far = Box("free", Bytes().Fill(64 << 10));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(Clear() + far + p::Fragment(p::Senc())));
}

TEST(InspectFragments, EvidenceOfAMillionFragmentsStaysShort) {
  Bytes file = Encrypted();
  const Bytes fragment = p::Fragment(p::Senc(), p::Pssh());
  for (int i = 0; i < 2000; ++i) file.Append(fragment);
  const mp4::Report report = p::InspectBytes(file, true);
  EXPECT_EQ(2000U, report.fragments);
  EXPECT_LT(report.evidence.size(), 10U);
  EXPECT_EQ(1U, report.systems.size());
}

}  // namespace
