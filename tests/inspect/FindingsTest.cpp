#include <gtest/gtest.h>

#include "inspect/Findings.h"
#include "tests/TreeFixtures.h"
#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;

/// A clear movie, its tree, and an empty report.
struct Found {
  explicit Found(const Bytes& file = p::ClearMovie()) : over(file) {}

  fixture::TreeOver over;
  mp4::Report report;
  mp4::Findings findings{&over.tree, &report};
};

}  // namespace

TEST(Findings, WhatProtectsIsEvidenceWithItsPlace) {
  Found f;
  const mp4::BoxId trak = f.over.At("moov/trak");
  EXPECT_FALSE(f.findings.IsProtected());
  f.findings.Protect(trak, {7, 8, "encv", "cenc"}, "It is.");
  EXPECT_TRUE(f.findings.IsProtected());
  EXPECT_EQ(std::vector<std::string>{"cenc"}, f.report.schemes);
  ASSERT_EQ(1U, f.report.evidence.size());
  const mp4::Evidence& evidence = f.report.evidence[0];
  EXPECT_EQ("moov/trak[1]", evidence.boxPath);
  EXPECT_EQ(f.over.tree.At(trak).offset, evidence.offset);
  EXPECT_EQ(7U, evidence.track);
  EXPECT_EQ(8U, evidence.item);
  EXPECT_EQ("encv", evidence.format);
  EXPECT_EQ("cenc", evidence.scheme);
  EXPECT_EQ("It is.", evidence.text);
}

TEST(Findings, WhatNoBoxSaysHasAPathAndAnOffset) {
  Found f;
  f.findings.ProtectAt("moov/trak[3]/sample[1]", 99, {3, {}, "", "ACBC"}, "It is.");
  EXPECT_TRUE(f.findings.IsProtected());
  EXPECT_EQ(std::vector<std::string>{"ACBC"}, f.report.schemes);
  EXPECT_EQ("moov/trak[3]/sample[1]", f.report.evidence.at(0).boxPath);
  EXPECT_EQ(99U, f.report.evidence[0].offset);
}

TEST(Findings, WhatSupportsAloneDoesNotProtect) {
  Found f;
  f.findings.Support(f.over.At("moov"), {{}, {}, "", "cenc"}, "It may.");
  EXPECT_EQ(1U, f.report.evidence.size());
  EXPECT_FALSE(f.findings.IsProtected());
  EXPECT_TRUE(f.report.schemes.empty());
}

TEST(Findings, SchemesAndNotesAreNamedOnce) {
  Found f;
  for (const char* scheme : {"cenc", "cbcs", "cenc", ""}) f.findings.AddScheme(scheme);
  EXPECT_EQ((std::vector<std::string>{"cenc", "cbcs"}), f.report.schemes);
  for (const char* note : {"one", "two", "one"}) f.findings.Note(note);
  EXPECT_EQ((std::vector<std::string>{"one", "two"}), f.report.notes);
}

TEST(Findings, TheFirstDoubtIsTheReason) {
  Found f;
  EXPECT_EQ("", f.findings.FirstDoubt());
  f.findings.Remark(f.over.At("mdat"), 5, "odd");
  EXPECT_EQ("", f.findings.FirstDoubt()) << "nothing hides there";
  f.findings.Doubt(f.over.At("moov/trak"), "who knows");
  f.findings.Doubt(f.over.At("moov"), "nobody");
  EXPECT_EQ("who knows (in moov/trak[1])", f.findings.FirstDoubt());
  ASSERT_EQ(3U, f.report.problems.size());
  EXPECT_FALSE(f.report.problems[0].mayHide);
  EXPECT_EQ(5U, f.report.problems[0].offset);
  EXPECT_TRUE(f.report.problems[1].mayHide);
  EXPECT_EQ("who knows", f.report.problems[1].text) << "its place stands beside it";
}

TEST(Findings, ADoubtAboutTheWholeFileNamesNoPlace) {
  Found f;
  f.findings.Doubt(mp4::kRootBox, std::nullopt, "empty");
  EXPECT_EQ("empty", f.findings.FirstDoubt());
  EXPECT_FALSE(f.report.problems.at(0).offset.has_value());
}

TEST(Findings, InsideACompressedMovieThereIsNoOffset) {
  Found f(p::FileType() + p::Compressed(p::Moov(p::VideoTrak())));
  const mp4::BoxId moov = f.over.At("moov/cmov/cmvd/moov");
  ASSERT_NE(mp4::kNoBox, moov);
  EXPECT_FALSE(f.findings.OffsetOf(moov).has_value());
  EXPECT_TRUE(f.findings.OffsetOf(f.over.At("moov/cmov")).has_value());
}

TEST(Findings, ListsAreBoundedAndTheAnswerIsNot) {
  Found f;
  const mp4::BoxId moov = f.over.At("moov");
  for (int i = 0; i < 1500; ++i) {
    const std::string text = std::to_string(i);
    f.findings.Support(moov, {}, text);
    f.findings.Remark(moov, {}, text);
    f.findings.Note(text);
    f.findings.AddScheme(text);
  }
  EXPECT_EQ(1000U, f.report.evidence.size());
  EXPECT_EQ(200U, f.report.problems.size());
  EXPECT_EQ(100U, f.report.notes.size());
  EXPECT_EQ(100U, f.report.schemes.size());
  f.findings.Protect(moov, {}, "late");
  f.findings.Doubt(moov, "late");
  EXPECT_TRUE(f.findings.IsProtected());
  EXPECT_EQ("late (in moov)", f.findings.FirstDoubt());
}
