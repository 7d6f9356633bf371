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

TEST(ObjectDescriptors, TheStreamTypeTellsTheTrack) {
  const auto movie = [](unsigned streamType) {
    const Bytes decoder = p::Descriptor(4, Bytes{1}.Byte(streamType << 2 | 1).Fill(11));
    const Bytes esds = FullBox("esds", 0, 0, p::Descriptor(3, Bytes{0, 3, 0} + decoder));
    return p::ObjectMovie(p::ObjectSample(1, "ACBC"), "xxxx", {}, p::PlainEntry("mp4s", esds));
  };
  EXPECT_EQ(p::kProtected, p::VerdictOf(movie(1)));
  EXPECT_EQ(p::kClear, p::VerdictOf(movie(3)));
}

TEST(ObjectDescriptors, SamplesInAnotherFileAreNotClear) {
  for (const unsigned flags : {0U, 1U}) {
    const Bytes dref = FullBox("dref", 0, 0, Bytes().Be32(1).Append(FullBox("url ", 0, flags)));
    const Bytes stbl = Box("stbl", p::Stsd({p::PlainEntry("mp4s")}) + p::NoSamples());
    const Bytes mdia = Box("mdia", p::Hdlr("odsm") + Box("minf", Box("dinf", dref) + stbl));
    EXPECT_EQ(flags == 1 ? p::kClear : p::kUndetermined,
              p::VerdictOf(p::Movie(Box("trak", p::Tkhd(1) + mdia))));
  }
}

TEST(ObjectDescriptors, FragmentsMayHoldFurtherSamples) {
  const Bytes trak = p::Trak(3, "odsm", {p::PlainEntry("mp4s")});
  EXPECT_EQ(p::kClear, p::VerdictOf(p::Movie(p::VideoTrak() + trak)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(p::VideoTrak() + trak + p::Mvex())));
}

TEST(ObjectDescriptors, ADescriptorInsideAnObjectIsRead) {
  const auto sample = [](const Bytes& data) {
    const Bytes object = Bytes().Be16(0x405F).Append(p::Descriptor(0x0B, Bytes{7, 0, 9} + data));
    return p::Descriptor(0x01, p::Descriptor(0x11, object));
  };
  const mp4::Report report = p::InspectBytes(p::ObjectMovie(sample(p::MarlinScheme("ACGK"))));
  EXPECT_EQ(p::kProtected, report.verdict);
  EXPECT_EQ(Schemes{"ACGK"}, report.schemes);
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ObjectMovie(sample({1, 2, 3}))));
}

TEST(ObjectDescriptors, StreamsAreUpdatedByReferenceOnly) {
  const Bytes sample = p::ObjectSample(0, nullptr);
  const Bytes byReference = p::Descriptor(3, Bytes{0x40, 0x5F} + p::Descriptor(0x0F, {0, 1}));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::ObjectMovie(sample + byReference)));
  const Bytes whole = p::Descriptor(3, Bytes{0x40, 0x5F} + p::Descriptor(0x03, {0, 1, 0}));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ObjectMovie(sample + whole)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ObjectMovie(sample + p::Descriptor(3, {1}))));
}

TEST(ObjectDescriptors, APointerInAnElementaryStreamFindsTheirDescriptors) {
  const Bytes esds =
      FullBox("esds", 0, 0, p::Descriptor(3, Bytes{0, 1, 0} + p::Descriptor(0x0A, {7})));
  const Bytes entry = p::PlainEntry("mp4s", esds);
  const Bytes tref = Box("tref", Box("mpod", Bytes().Be32(1).Be32(2)));
  const mp4::Report report =
      p::InspectBytes(p::ObjectMovie(p::ObjectSample(0, "ACBC"), "odsm", tref, entry));
  EXPECT_EQ(p::kProtected, report.verdict);
  EXPECT_FALSE(report.tracks.at(0).isProtected);
  EXPECT_TRUE(report.tracks.at(2).isProtected);
}

TEST(ObjectDescriptors, MoreTracksThanAreReadAreNotClear) {
  Bytes tracks = p::VideoTrak(1);
  for (unsigned id = 2; id < 1002; ++id)
    tracks.Append(p::Trak(id, "odsm", {p::PlainEntry("mp4s")}));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::Movie(tracks)));
  EXPECT_EQ(p::kUndetermined,
            p::VerdictOf(p::Movie(tracks + p::Trak(2000, "odsm", {p::PlainEntry("mp4s")}))));
}

TEST(ObjectDescriptors, WithoutSamplesTheyAreClearUnlessFragmentsMayBringThem) {
  const Bytes trak = p::Trak(1, "odsm", {p::PlainEntry("mp4s")});
  EXPECT_EQ(p::kClear, p::VerdictOf(p::Movie(trak)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(trak + p::Mvex())));
}

}  // namespace
