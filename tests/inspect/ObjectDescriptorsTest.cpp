#include <gtest/gtest.h>

#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;
using Schemes = std::vector<std::string>;

TEST(ObjectDescriptors, APointerProtectsTheTrackItNames) {
  for (const unsigned pointing : {1U, 2U}) {
    const mp4::Report report = p::InspectBytes(p::ObjectMovie(p::ObjectSample(pointing, "ACBC")));
    EXPECT_EQ(p::kProtected, report.verdict);
    EXPECT_EQ(Schemes{"ACBC"}, report.schemes);
    for (std::size_t i = 0; i < 3; ++i)
      EXPECT_EQ(i + 1 == pointing, report.tracks.at(i).isProtected) << i;
  }
}

TEST(ObjectDescriptors, EvidencePointsAtTheSchemeOutsideTheMovie) {
  const Bytes file = p::ObjectMovie(p::ObjectSample(1, "ACGK"));
  const mp4::Evidence evidence = p::InspectBytes(file).evidence.at(0);
  EXPECT_EQ("moov/trak[3]/sample[1]/sinf/schm", evidence.boxPath);
  ASSERT_TRUE(evidence.offset.has_value());
  const auto* type = reinterpret_cast<const char*>(file.data() + *evidence.offset + 4);
  EXPECT_EQ("schm", std::string(type, 4));
  EXPECT_EQ("ACGK", evidence.scheme);
}

TEST(ObjectDescriptors, WithoutProtectionTheyAreClear) {
  const mp4::Report report = p::InspectBytes(p::ObjectMovie(p::ObjectSample(0, nullptr)));
  EXPECT_EQ(p::kClear, report.verdict) << report.reason;
}

TEST(ObjectDescriptors, APointerWithoutItsDescriptorProtectsAllTheSame) {
  const mp4::Report report = p::InspectBytes(p::ObjectMovie(p::ObjectSample(2, nullptr)));
  EXPECT_EQ(p::kProtected, report.verdict);
  EXPECT_TRUE(report.schemes.empty());
}

TEST(ObjectDescriptors, ASchemeThatNoPointerNamesIsEvidence) {
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::ObjectMovie(p::ObjectSample(0, "ACBC"))));
}

TEST(ObjectDescriptors, HandlerOrReferenceTellTheTrack) {
  const Bytes sample = p::ObjectSample(1, "ACBC");
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::ObjectMovie(sample, "xxxx")));
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::ObjectMovie(sample, "odsm", {})));
}

TEST(ObjectDescriptors, ASampleThatCannotBeReadIsNotClear) {
  const Bytes sample = p::ObjectSample(0, nullptr);
  // A length past the end, one of five bytes, and a sample cut short.
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ObjectMovie(sample + Bytes{1, 2, 0})));
  EXPECT_EQ(p::kUndetermined,
            p::VerdictOf(p::ObjectMovie(sample + Bytes{1, 0x80, 0x80, 0x80, 0x80, 0})));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ObjectMovie(Bytes(sample).Cut(sample.size() - 1))));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::ObjectMovie(sample + Bytes{1, 0})));
}

TEST(ObjectDescriptors, WhatStandsInFrontOfTheDamageCounts) {
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::ObjectMovie(p::ObjectSample(1, "ACBC") + Bytes{1, 9})));
}

TEST(ObjectDescriptors, TablesThatContradictAreNotClear) {
  const auto movie = [](std::uint32_t samples, std::uint32_t offset) {
    const Bytes tables = FullBox("stsc", 0, 0, Bytes().Be32(1).Be32(1).Be32(1).Be32(1)) +
                         FullBox("stsz", 0, 0, Bytes().Be32(2).Be32(samples)) +
                         FullBox("stco", 0, 0, Bytes().Be32(1).Be32(offset));
    return p::FileType() + Box("mdat", {1, 0}) +
           p::Moov(Box("trak",
                       p::Tkhd(1) + p::Mdia("odsm", p::Stsd({p::PlainEntry("mp4s")}) + tables)));
  };
  const auto data = static_cast<std::uint32_t>(p::FileType().size() + 8);
  EXPECT_EQ(p::kClear, p::VerdictOf(movie(1, data)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(movie(0, data)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(movie(2, data)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(movie(1, 0xFFFFFFFF)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(movie(0xFFFFFFFF, data)));
}

TEST(ObjectDescriptors, WithoutSamplesTheyAreClearUnlessFragmentsMayBringThem) {
  const Bytes trak = p::Trak(1, "odsm", {p::PlainEntry("mp4s")});
  EXPECT_EQ(p::kClear, p::VerdictOf(p::Movie(trak)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(trak + p::Mvex())));
}

}  // namespace
