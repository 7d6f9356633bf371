#include <gtest/gtest.h>

#include <algorithm>

#include "inspect/SchemeInfo.h"
#include "tests/TreeFixtures.h"
#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;

constexpr char kSinf[] = "moov/trak/mdia/minf/stbl/stsd/encv/sinf";

/// A scheme information box where one belongs.
struct Info {
  explicit Info(const Bytes& sinf) : over(p::MovieOf(p::VideoEntry("encv", sinf))) {}
  mp4::ReportScheme Read() { return mp4::ReadSchemeInfo(&over.tree, over.At(kSinf)); }
  /// What is added to the evidence.
  mp4::Report Reported() {
    mp4::Report report;
    mp4::Findings findings(&over.tree, &report);
    mp4::ReportSchemeInfo(&findings, over.At(kSinf), Read(), {4, {}, "encv", ""});
    EXPECT_TRUE(findings.IsProtected());
    return report;
  }

  fixture::TreeOver over;
};

mp4::ReportScheme Read(const Bytes& sinf) { return Info(sinf).Read(); }

}  // namespace

TEST(SchemeInfo, HasFormatSchemeAndParameters) {
  const mp4::ReportScheme scheme = Read(p::Sinf("avc1", "cenc"));
  EXPECT_EQ("avc1", scheme.originalFormat);
  EXPECT_EQ("cenc", scheme.type);
  EXPECT_EQ(0x10000U, scheme.version);
  EXPECT_EQ("", scheme.uri);
  EXPECT_EQ(true, scheme.defaultProtected);
  ASSERT_TRUE(scheme.defaultKeyId.has_value());
  EXPECT_TRUE(
      std::equal(scheme.defaultKeyId->begin(), scheme.defaultKeyId->end(), p::KeyId().data()));
  EXPECT_EQ(8, scheme.ivSize);
  EXPECT_EQ(0, scheme.cryptBlocks);
}

TEST(SchemeInfo, HasThePiffFormOfTheParameters) {
  const Bytes piff =
      Box("uuid", p::PiffTrackType() + Bytes().Be32(0).Be24(1).Byte(16).Append(p::KeyId()));
  const mp4::ReportScheme scheme = Read(p::Sinf("avc1", "piff", p::Schi(piff)));
  EXPECT_EQ(true, scheme.defaultProtected);
  EXPECT_EQ(16, scheme.ivSize);
  EXPECT_TRUE(scheme.defaultKeyId.has_value());
}

TEST(SchemeInfo, TheFirstOfEachCounts) {
  const mp4::ReportScheme scheme =
      Read(Box("sinf", p::Frma("avc1") + p::Frma("hvc1") + p::Schm("cenc") + p::Schm("cbcs") +
                           p::Schi(p::Tenc(1, 8) + p::Tenc(1, 16))));
  EXPECT_EQ("avc1", scheme.originalFormat);
  EXPECT_EQ("cenc", scheme.type);
  EXPECT_EQ(8, scheme.ivSize);
}

TEST(SchemeInfo, WhatCannotBeReadIsLeftOut) {
  const mp4::ReportScheme scheme =
      Read(Box("sinf", Box("frma", Bytes().Text("avc")) + Box("schm", Bytes().Fill(7)) +
                           p::Schi(Box("tenc", Bytes().Fill(23)))));
  EXPECT_EQ("", scheme.originalFormat);
  EXPECT_EQ("", scheme.type);
  EXPECT_FALSE(scheme.defaultProtected.has_value());
  EXPECT_FALSE(scheme.defaultKeyId.has_value());
}

TEST(SchemeInfo, EvidenceNamesTheSchemeAndItsParameters) {
  const mp4::Report report = Info(p::Sinf("avc1", "cenc")).Reported();
  EXPECT_EQ(std::vector<std::string>{"cenc"}, report.schemes);
  ASSERT_EQ(2U, report.evidence.size());
  EXPECT_EQ("The protection scheme is \"cenc\".", report.evidence[0].text);
  EXPECT_NE(std::string::npos, report.evidence[0].boxPath.find("sinf/schm"));
  EXPECT_EQ(4U, report.evidence[0].track);
  EXPECT_EQ("encv", report.evidence[0].format);
  EXPECT_EQ("cenc", report.evidence[0].scheme);
  EXPECT_EQ("Samples are encrypted by default, with key id 00010203-0405-0607-0809-0a0b0c0d0e0f.",
            report.evidence[1].text);
  EXPECT_NE(std::string::npos, report.evidence[1].boxPath.find("schi/tenc"));
}

TEST(SchemeInfo, EvidenceSaysOfClearSamplesThatTheyAre) {
  const mp4::Report report = Info(p::Sinf("avc1", "cenc", p::Schi(p::Tenc(0, 0)))).Reported();
  ASSERT_EQ(2U, report.evidence.size());
  EXPECT_EQ(0U, report.evidence[1].text.find("Samples are clear by default"))
      << report.evidence[1].text;
}

TEST(SchemeInfo, WithoutAReadableSchemeItProtectsAllTheSame) {
  const mp4::Report bare = Info(Box("sinf")).Reported();
  EXPECT_TRUE(bare.schemes.empty());
  ASSERT_EQ(1U, bare.evidence.size());
  EXPECT_EQ("A protection scheme information box that names no scheme.", bare.evidence[0].text);
  const mp4::Report cut =
      Info(Box("sinf", p::Schm("cenc") + p::Schi(Box("tenc", Bytes().Fill(23))))).Reported();
  ASSERT_EQ(2U, cut.evidence.size());
  EXPECT_EQ("Its track encryption box cannot be read.", cut.evidence[1].text);
}
