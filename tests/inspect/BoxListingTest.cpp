#include <gtest/gtest.h>

#include "inspect/BoxListing.h"
#include "tests/TreeFixtures.h"

namespace {

using Paths = std::vector<std::string>;

/// A file type, and a movie of two tracks with a header each.
Bytes FileWithTracks() {
  const Bytes track = Box("trak", Box("tkhd", Bytes().Fill(84)));
  return Box("ftyp", Bytes().Text("isom").Be32(0)) + Box("moov", track + track);
}

Paths RootsOf(const Bytes& file, const std::string& path, int depth = 0) {
  fixture::TreeOver over(file);
  mp4::ListingOptions options;
  options.path = path;
  options.depth = depth;
  const mp4::BoxListing listing(&over.tree, options);
  Paths paths;
  for (const mp4::BoxId root : listing.Roots()) paths.push_back(over.tree.Path(root));
  return paths;
}

bool Matches(const std::string& pattern, const std::string& types) {
  fixture::TreeOver over(FileWithTracks());
  return mp4::PathPattern(pattern).Matches(over.tree, over.At(types));
}

}  // namespace

TEST(PathPattern, IsTheEndOfAPath) {
  EXPECT_TRUE(Matches("tkhd", "moov/trak/tkhd"));
  EXPECT_TRUE(Matches("trak/tkhd", "moov/trak/tkhd"));
  EXPECT_TRUE(Matches("moov/trak/tkhd", "moov/trak/tkhd"));
  EXPECT_FALSE(Matches("trak", "moov/trak/tkhd"));
  EXPECT_FALSE(Matches("moov/moov/trak/tkhd", "moov/trak/tkhd")) << "longer than the path";
}

TEST(PathPattern, BeginsAtTheTopWithASlash) {
  EXPECT_TRUE(Matches("/moov/trak", "moov/trak"));
  EXPECT_TRUE(Matches("/moov", "moov"));
  EXPECT_FALSE(Matches("/trak", "moov/trak"));
}

TEST(PathPattern, MayNameAnOrdinal) {
  EXPECT_TRUE(Matches("trak[1]", "moov/trak"));
  EXPECT_FALSE(Matches("trak[2]", "moov/trak"));
  EXPECT_TRUE(Matches("trak[0]", "moov/trak")) << "any";
  EXPECT_FALSE(Matches("trak[4294967297]", "moov/trak")) << "not cut to 32 bits";
}

TEST(PathPattern, AStarIsAnyType) {
  EXPECT_TRUE(Matches("/moov/*/tkhd", "moov/trak/tkhd"));
  EXPECT_TRUE(Matches("*", "ftyp"));
  EXPECT_FALSE(Matches("*/ftyp", "ftyp"));
}

TEST(PathPattern, EmptyStepsAreNone) {
  EXPECT_TRUE(Matches("moov//trak/", "moov/trak"));
  EXPECT_TRUE(Matches("", "moov"));
}

TEST(BoxListing, BeginsWithTheTopLevelOrWithWhatMatches) {
  EXPECT_EQ((Paths{"ftyp", "moov"}), RootsOf(FileWithTracks(), ""));
  EXPECT_EQ((Paths{"moov/trak[1]", "moov/trak[2]"}), RootsOf(FileWithTracks(), "trak"));
  EXPECT_EQ(Paths{}, RootsOf(FileWithTracks(), "mdia"));
}

TEST(BoxListing, ABoxInsideAListedOneIsNoBeginning) {
  const Bytes nested = Box("moov", Box("udta", Box("udta")) + Box("udta"));
  EXPECT_EQ((Paths{"moov/udta", "moov/udta[2]"}), RootsOf(nested, "udta"));
}

TEST(BoxListing, DepthCountsFromEachBeginning) {
  fixture::TreeOver over(FileWithTracks());
  mp4::ListingOptions options;
  options.depth = 2;
  const mp4::BoxListing two(&over.tree, options);
  EXPECT_TRUE(two.ShowsBelow(1));
  EXPECT_FALSE(two.ShowsBelow(2));
  options.depth = 0;
  EXPECT_TRUE(mp4::BoxListing(&over.tree, options).ShowsBelow(1000));
  EXPECT_EQ((Paths{"moov/trak[1]", "moov/trak[2]"}), RootsOf(FileWithTracks(), "trak", 1))
      << "a depth keeps nobody from looking for a beginning";
}

TEST(BoxListing, KnowsWhatIsWrongWithEachBox) {
  fixture::TreeOver over(Box("moov", SizedBox(100, "trak")) + Bytes{1, 2, 3});
  const mp4::BoxListing listing(&over.tree, {});
  ASSERT_EQ(1U, listing.ProblemsOf(over.At("moov/trak")).size());
  EXPECT_NE(std::string::npos, listing.ProblemsOf(over.At("moov/trak"))[0].find("trak"));
  EXPECT_EQ(1U, listing.ProblemsOf(mp4::kRootBox).size()) << "bytes that are no box";
  EXPECT_TRUE(listing.ProblemsOf(over.At("moov")).empty());
  EXPECT_TRUE(listing.Complete()) << "it is broken, but was walked";
}

TEST(BoxListing, IsNotCompleteBehindItsLimit) {
  const Bytes file = FileWithTracks();
  mp4::ListingOptions options;
  options.mostBoxes = 3;
  mp4::MemorySource memory(file.data(), file.size());
  mp4::CachedSource cache(&memory);
  mp4::BoxTree tree(&cache, mp4::LimitsOf(options, file.size()));
  EXPECT_FALSE(mp4::BoxListing(&tree, options).Complete());
}

TEST(BoxListing, ItsLimitIsAtLeastABoxAndAtMostTheTrees) {
  mp4::ListingOptions options;
  options.mostBoxes = 0;
  EXPECT_EQ(1U, mp4::LimitsOf(options, 100).boxes);
  options.mostBoxes = 7;
  EXPECT_EQ(7U, mp4::LimitsOf(options, 100).boxes);
  options.mostBoxes = UINT64_MAX;
  EXPECT_EQ(mp4::TreeLimits::For(100).boxes, mp4::LimitsOf(options, 100).boxes);
}
