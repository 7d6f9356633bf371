#include <gtest/gtest.h>

#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;

TEST(TreeProblems, EachSaysItsPlaceAndWhetherItMayHideProtection) {
  const mp4::Report cut = p::InspectBytes(p::ClearMovie() + SizedBox(1000, "mdat"));
  ASSERT_EQ(1U, cut.problems.size());
  EXPECT_EQ("mdat[2]", cut.problems[0].boxPath);
  EXPECT_EQ(p::ClearMovie().size(), cut.problems[0].offset);
  EXPECT_FALSE(cut.problems[0].mayHide);
  const mp4::Report broken =
      p::InspectBytes(p::Movie(p::VideoTrak() + Bytes().Be32(4).Text("xxxx")));
  ASSERT_EQ(1U, broken.problems.size());
  EXPECT_EQ("moov", broken.problems[0].boxPath);
  EXPECT_TRUE(broken.problems[0].mayHide);
  EXPECT_NE(std::string::npos, broken.reason.find("smaller than its header")) << broken.reason;
}

TEST(TreeProblems, InsideACompressedMovieThereIsNoOffset) {
  const Bytes moov = p::Moov(p::VideoTrak() + Bytes().Be32(4).Text("xxxx"));
  const mp4::Report report = p::InspectBytes(p::FileType() + p::Compressed(moov));
  ASSERT_EQ(1U, report.problems.size());
  EXPECT_EQ("moov/cmov/cmvd/moov", report.problems[0].boxPath);
  EXPECT_FALSE(report.problems[0].offset.has_value());
}

TEST(TreeProblems, AThousandOfThemAreNotAllListed) {
  Bytes tracks;
  for (int i = 0; i < 3000; ++i) tracks.Append(Box("trak", Bytes().Be32(4).Text("mdia")));
  const mp4::Report report = p::InspectBytes(p::Movie(tracks));
  EXPECT_EQ(p::kUndetermined, report.verdict);
  EXPECT_LE(report.problems.size(), 200U);
}

}  // namespace
