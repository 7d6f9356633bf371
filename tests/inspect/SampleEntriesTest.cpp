#include <gtest/gtest.h>

#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;
using Schemes = std::vector<std::string>;

const mp4::ReportEntry& OnlyEntry(const mp4::Report& report) {
  return report.tracks.at(0).entries.at(0);
}

TEST(SampleEntries, ClearEntriesOfEveryTrackAreClear) {
  const mp4::Report report = p::InspectBytes(p::ClearMovie());
  EXPECT_EQ(p::kClear, report.verdict) << report.reason;
  ASSERT_EQ(2U, report.tracks.size());
  EXPECT_EQ(1U, report.tracks[0].id);
  EXPECT_EQ("vide", report.tracks[0].handler);
  EXPECT_EQ("avc1", report.tracks[0].entries.at(0).format);
  EXPECT_EQ("mp4a", report.tracks[1].entries.at(0).format);
  EXPECT_FALSE(report.tracks[1].isProtected);
  EXPECT_TRUE(report.everything);
}

TEST(SampleEntries, AFormatForProtectedMediaIsEnough) {
  for (const char* video : {"encv", "drmi"})
    EXPECT_EQ(p::kProtected, p::VerdictOf(p::MovieOf(p::VideoEntry(video)))) << video;
  for (const char* audio : {"enca", "drms"})
    EXPECT_EQ(p::kProtected, p::VerdictOf(p::MovieOf(p::AudioEntry(audio), "soun"))) << audio;
  for (const char* plain : {"enct", "encs", "encf", "encm", "drmt", "p608"})
    EXPECT_EQ(p::kProtected, p::VerdictOf(p::MovieOf(p::PlainEntry(plain), "text"))) << plain;
  EXPECT_EQ(p::kProtected,
            p::VerdictOf(p::MovieOf(p::PlainEntry("enc3", Bytes().Fill(32)), "volv")));
}

TEST(SampleEntries, AFormatBesideThoseIsNone) {
  for (const char* format : {"encd", "end ", "drm ", "c608"}) {
    const bool reserved = std::string(format) == "encd";
    EXPECT_EQ(reserved ? p::kUndetermined : p::kClear,
              p::VerdictOf(p::MovieOf(p::PlainEntry(format), "text")))
        << format;
  }
}

TEST(SampleEntries, AReservedFormatNeedsItsScheme) {
  for (const char* format : {"encu", "encp", "encZ", "paac", "pac3", "oksd"}) {
    EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::MovieOf(p::PlainEntry(format), "text"))) << format;
    EXPECT_EQ(p::kProtected,
              p::VerdictOf(p::MovieOf(p::PlainEntry(format, p::Sinf("xxxx", "cenc")), "text")))
        << format;
  }
}

TEST(SampleEntries, AudibleNeedsItsOwnBox) {
  EXPECT_EQ(p::kProtected,
            p::VerdictOf(p::MovieOf(p::AudioEntry("aavd", Box("adrm", Bytes().Fill(88))), "soun")));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::MovieOf(p::AudioEntry("aavd"), "soun")));
}

TEST(SampleEntries, ASchemeProtectsAnyFormat) {
  for (const char* format : {"avc1", "resv", "icpv", "zzzz"}) {
    const mp4::Report report =
        p::InspectBytes(p::MovieOf(p::VideoEntry(format, p::Avcc() + p::Sinf("avc1", "cbcs"))));
    EXPECT_EQ(p::kProtected, report.verdict) << format;
    EXPECT_EQ(Schemes{"cbcs"}, report.schemes) << format;
  }
}

TEST(SampleEntries, EverySchemeIsNamedByItsFourCharacters) {
  for (const char* scheme : {"itun", "cenc", "cens", "cbc1", "cbcs", "sve1", "piff", "odkm", "iAEC",
                             "ACBC", "ACGK", "adkm", "XyZ9"}) {
    const mp4::Report report = p::InspectBytes(p::ProtectedMovie(scheme));
    EXPECT_EQ(p::kProtected, report.verdict);
    EXPECT_EQ(Schemes{scheme}, report.schemes);
  }
}

TEST(SampleEntries, EvidenceNamesBoxOffsetTrackFormatAndScheme) {
  const Bytes file = p::ProtectedMovie();
  const mp4::Report report = p::InspectBytes(file);
  ASSERT_EQ(3U, report.evidence.size());
  const std::string entry = "moov/trak[2]/mdia/minf/stbl/stsd/enca[1]";
  EXPECT_EQ(entry, report.evidence[0].boxPath);
  EXPECT_EQ(entry + "/sinf/schm", report.evidence[1].boxPath);
  EXPECT_EQ(entry + "/sinf/schi/tenc", report.evidence[2].boxPath);
  const std::vector<std::string> types = {"enca", "schm", "tenc"};
  for (std::size_t i = 0; i < types.size(); ++i) {
    const mp4::Evidence& evidence = report.evidence[i];
    ASSERT_TRUE(evidence.offset.has_value());
    const auto* type = reinterpret_cast<const char*>(file.data() + *evidence.offset + 4);
    EXPECT_EQ(types[i], std::string(type, 4));
    EXPECT_EQ(2U, evidence.track);
    EXPECT_FALSE(evidence.item.has_value());
    EXPECT_EQ("enca", evidence.format);
    EXPECT_EQ("cenc", evidence.scheme);
    EXPECT_FALSE(evidence.text.empty());
  }
}

TEST(SampleEntries, AnEntryBehindTheFirstIsSeen) {
  for (std::size_t count = 2; count <= 4; ++count) {
    for (std::size_t at = 0; at < count; ++at) {
      std::vector<Bytes> entries(count, p::ClearVideo());
      entries[at] = p::ProtectedVideo();
      const mp4::Report report = p::InspectBytes(p::Movie(p::Trak(1, "vide", entries)));
      EXPECT_EQ(p::kProtected, report.verdict);
      for (std::size_t i = 0; i < count; ++i)
        EXPECT_EQ(i == at, report.tracks.at(0).entries.at(i).isProtected);
    }
  }
}

TEST(SampleEntries, AnEntryBehindTheCountedOnesIsSeen) {
  Bytes two = p::Stsd({p::ClearVideo(), p::ProtectedVideo()});
  two.PutBe32(12, 1);
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::Movie(Box("trak", p::Tkhd(1) + p::Mdia("vide", two)))));
}

TEST(SampleEntries, ACountOfMoreEntriesThanAreHeldIsNotClear) {
  for (const std::uint32_t count : {0U, 1U, 2U, 0xFFFFFFFFU}) {
    Bytes stsd = p::Stsd({p::ClearVideo()});
    stsd.PutBe32(12, count);
    EXPECT_EQ(count <= 1 ? p::kClear : p::kUndetermined,
              p::VerdictOf(p::Movie(Box("trak", p::Tkhd(1) + p::Mdia("vide", stsd)))))
        << count;
    Bytes encrypted = p::Stsd({p::ProtectedVideo()});
    encrypted.PutBe32(12, count);
    EXPECT_EQ(p::kProtected,
              p::VerdictOf(p::Movie(Box("trak", p::Tkhd(1) + p::Mdia("vide", encrypted)))));
  }
}

TEST(SampleEntries, ADescriptionWithoutEntriesIsNotClear) {
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(p::Trak(1, "vide", {}))));
}

TEST(SampleEntries, EverySchemeOfAnEntryIsReported) {
  const Bytes entry =
      p::VideoEntry("encv", p::Sinf("avc1", "cenc") + p::Avcc() + p::Sinf("avc1", "cbcs"));
  const mp4::Report report = p::InspectBytes(p::MovieOf(entry));
  EXPECT_EQ((Schemes{"cenc", "cbcs"}), report.schemes);
  ASSERT_EQ(2U, OnlyEntry(report).schemes.size());
  EXPECT_EQ("cbcs", OnlyEntry(report).schemes[1].type);
  EXPECT_EQ("avc1", OnlyEntry(report).originalFormat);
}

TEST(SampleEntries, ASchemeWithoutATypeProtectsAndAddsNoName) {
  for (const Bytes& sinf : {Box("sinf"), Box("sinf", p::Frma("avc1") + p::Schi(p::Tenc())),
                            Box("sinf", Box("schm", Bytes().Be32(0).Text("cen")))}) {
    const mp4::Report report = p::InspectBytes(p::MovieOf(p::VideoEntry("avc1", sinf)));
    EXPECT_EQ(p::kProtected, report.verdict);
    EXPECT_TRUE(report.schemes.empty());
  }
}

TEST(SampleEntries, SamplesClearByDefaultAreStillOfAProtectedTrack) {
  const Bytes entry = p::VideoEntry("encv", p::Sinf("avc1", "cenc", p::Schi(p::Tenc(0, 0))));
  const mp4::Report report = p::InspectBytes(p::MovieOf(entry));
  EXPECT_EQ(p::kProtected, report.verdict);
  EXPECT_EQ(false, OnlyEntry(report).schemes.at(0).defaultProtected);
}

TEST(SampleEntries, TheTrackEncryptionBoxIsRead) {
  const mp4::ReportScheme scheme =
      OnlyEntry(p::InspectBytes(p::MovieOf(p::ProtectedVideo()))).schemes.at(0);
  EXPECT_EQ(true, scheme.defaultProtected);
  EXPECT_EQ(8, scheme.ivSize);
  EXPECT_EQ(0x10000U, scheme.version);
  ASSERT_TRUE(scheme.defaultKeyId.has_value());
  EXPECT_EQ(15, scheme.defaultKeyId->at(15));
}

TEST(SampleEntries, ThePiffFormOfTheTrackEncryptionBoxIsRead) {
  const Bytes piff =
      Box("uuid", p::PiffTrackType() + Bytes().Be32(0).Be24(1).Byte(8).Append(p::KeyId()));
  const Bytes entry = p::VideoEntry("encv", p::Sinf("avc1", "piff", p::Schi(piff)));
  const mp4::Report report = p::InspectBytes(p::MovieOf(entry));
  EXPECT_EQ(Schemes{"piff"}, report.schemes);
  EXPECT_EQ(true, OnlyEntry(report).schemes.at(0).defaultProtected);
  EXPECT_EQ(3, OnlyEntry(report).schemes.at(0).defaultKeyId->at(3));
}

TEST(SampleEntries, RestrictedAndIncompleteEntriesAreClearWithANote) {
  const Bytes rinf = Box("rinf", p::Frma("avc1") + p::Schm("stvi"));
  const mp4::Report restricted = p::InspectBytes(p::MovieOf(p::VideoEntry("resv", rinf)));
  EXPECT_EQ(p::kClear, restricted.verdict) << restricted.reason;
  EXPECT_TRUE(restricted.schemes.empty());
  EXPECT_EQ("avc1", OnlyEntry(restricted).originalFormat);
  ASSERT_EQ(1U, restricted.notes.size());
  EXPECT_NE(std::string::npos, restricted.notes[0].find("stvi"));
  const Bytes incomplete = p::VideoEntry("icpv", Box("cinf", p::Frma("avc1")));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::MovieOf(incomplete)));
}

TEST(SampleEntries, ASchemeInsideARestrictionProtects) {
  const Bytes rinf = Box("rinf", p::Frma("avc1") + p::Sinf("avc1", "cenc"));
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::MovieOf(p::VideoEntry("resv", rinf))));
}

TEST(SampleEntries, PurchaseInformationIsNoScheme) {
  const Bytes pinf = Box("pinf", p::Frma("mp4a") + p::Schm("itun") + p::Schi(Box("user")));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::MovieOf(p::AudioEntry("mp4a", pinf), "soun")));
  const Bytes other = Box("sinx", p::Frma("mp4a") + p::Schm("itun") + p::Schi(Box("user")));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::MovieOf(p::AudioEntry("mp4a", other), "soun")));
}

TEST(SampleEntries, SchemesBehindEachQuickTimeSoundVersionAreFound) {
  for (const unsigned version : {0U, 1U, 2U}) {
    const Bytes wave = Box("wave", p::Frma("mp4a") + Bytes().Be32(8).Be32(0));
    const Bytes zero = Bytes().Be32(0);
    EXPECT_EQ(p::kClear, p::VerdictOf(p::MovieOf(p::AudioEntry("mp4a", wave, version), "soun")));
    EXPECT_EQ(p::kClear,
              p::VerdictOf(p::MovieOf(p::AudioEntry("mp4a", wave + zero, version), "soun")));
    EXPECT_EQ(p::kProtected,
              p::VerdictOf(p::MovieOf(
                  p::AudioEntry("mp4a", wave + p::Sinf("mp4a", "itun") + zero, version), "soun")));
  }
}

TEST(SampleEntries, ASchemeOrProtectedFormatInsideAWaveIsNotClear) {
  const Bytes sinf = Box("wave", p::Frma("mp4a") + p::Sinf("mp4a", "itun"));
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::MovieOf(p::AudioEntry("mp4a", sinf, 1), "soun")));
  const Bytes drms = Box("wave", p::Frma("drms"));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::MovieOf(p::AudioEntry("mp4a", drms, 1), "soun")));
}

TEST(SampleEntries, OddBytesAtAnEntrysEndHideNothingUnlessTheyNameAScheme) {
  const Bytes odd = p::PlainEntry("text", Bytes().Fill(60, 0xC3));
  const mp4::Report report = p::InspectBytes(p::MovieOf(odd, "text"));
  EXPECT_EQ(p::kClear, report.verdict) << report.reason;
  EXPECT_FALSE(report.problems.empty());
  const Bytes hidden = p::PlainEntry("text", Bytes().Fill(60, 0xC3) + p::Sinf("text", "cenc"));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::MovieOf(hidden, "text")));
}

TEST(SampleEntries, ABoxThatCoversASchemeIsNotClear) {
  const Bytes sinf = p::Sinf("avc1", "cenc");
  const Bytes covering = p::Lying(p::Avcc(), static_cast<int>(sinf.size()));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::MovieOf(p::VideoEntry("avc1", covering + sinf))));
  for (const int change : {-1, 1}) {
    const Bytes broken = p::VideoEntry("avc1", p::Lying(p::Avcc(), change) + sinf);
    EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::MovieOf(broken))) << change;
  }
}

TEST(SampleEntries, AnEntryShorterThanAnyIsNotClear) {
  const Bytes entries = Bytes().Be32(8).Text("avc1").Append(p::ClearVideo());
  const Bytes stsd = FullBox("stsd", 0, 0, Bytes().Be32(1).Append(entries));
  EXPECT_EQ(p::kUndetermined,
            p::VerdictOf(p::Movie(Box("trak", p::Tkhd(1) + p::Mdia("vide", stsd)))));
}

TEST(SampleEntries, AnEntryThatOverrunsTheDescriptionIsNotClear) {
  for (const int change : {0, 1}) {
    EXPECT_EQ(change == 0 ? p::kClear : p::kUndetermined,
              p::VerdictOf(p::MovieOf(p::Lying(p::ClearVideo(), change))));
    EXPECT_EQ(p::kProtected, p::VerdictOf(p::MovieOf(p::Lying(p::ProtectedVideo(), change))));
  }
}

TEST(SampleEntries, ABoxThatIsNoEntryAmongThemIsNotClear) {
  for (const Bytes& stray : {p::Sinf("avc1", "cenc"), p::Tenc(), p::VideoTrak(2)}) {
    EXPECT_EQ(p::kUndetermined,
              p::VerdictOf(p::Movie(p::Trak(1, "vide", {p::ClearVideo(), stray}))));
  }
}

TEST(SampleEntries, StringsInFrontOfASchemeAreSkipped) {
  const Bytes strings = Bytes().Text("a").Byte(0).Text("b").Byte(0).Text("c").Byte(0);
  for (const char* format : {"stpp", "encu"}) {
    EXPECT_EQ(
        p::kProtected,
        p::VerdictOf(p::MovieOf(p::PlainEntry(format, strings + p::Sinf("stpp", "cenc")), "subt")));
  }
  EXPECT_EQ(p::kClear, p::VerdictOf(p::MovieOf(p::PlainEntry("stpp", strings), "subt")));
}

}  // namespace
