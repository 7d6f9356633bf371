#include <gtest/gtest.h>

#include "door/TreeJson.h"
#include "tests/TreeFixtures.h"

namespace {

using Paths = std::vector<std::string>;

/// A movie of two tracks with a header each, and a box behind it.
Bytes File() {
  const Bytes track = Box("trak", Box("zzzz"));
  return Box("moov", track + track) + Box("free");
}

/// The paths visited, up to `most` boxes.
Paths Visited(const mp4::ListingOptions& options, std::size_t most = SIZE_MAX) {
  fixture::TreeOver over(File());
  const mp4::BoxListing listing(&over.tree, options);
  Paths paths;
  mp4::VisitListing(&over.tree, listing, [&](const mp4::ShownBox& shown) {
    paths.push_back(std::to_string(shown.level) + " " + shown.path);
    return paths.size() < most;
  });
  return paths;
}

std::string JsonOf(const Bytes& file) {
  fixture::TreeOver over(file);
  const mp4::BoxListing listing(&over.tree, {});
  return mp4::TreeJson(&over.tree, listing, mp4::JsonWriter::Form::kLine);
}

std::string FieldsJson(const std::vector<mp4::BoxField>& fields) {
  std::string text;
  mp4::JsonWriter json(&text);
  mp4::WriteFields(fields, &json);
  return text;
}

}  // namespace

TEST(TreeJson, VisitsParentsBeforeTheirChildren) {
  EXPECT_EQ((Paths{"0 moov", "1 moov/trak[1]", "2 moov/trak[1]/zzzz", "1 moov/trak[2]",
                   "2 moov/trak[2]/zzzz", "0 free"}),
            Visited({}));
}

TEST(TreeJson, LevelsCountFromWhereTheListingBegins) {
  EXPECT_EQ((Paths{"0 moov/trak[2]", "1 moov/trak[2]/zzzz"}), Visited({0, "trak[2]"}))
      << "and it does not go on behind that";
  EXPECT_EQ((Paths{"0 moov/trak[1]", "0 moov/trak[2]"}), Visited({1, "trak"}));
}

TEST(TreeJson, AVisitMayEndTheWalk) {
  EXPECT_EQ((Paths{"0 moov", "1 moov/trak[1]", "2 moov/trak[1]/zzzz"}), Visited({}, 3));
}

TEST(TreeJson, ListsOfChildrenAreOpenedWhereThereAreSome) {
  EXPECT_EQ(R"({"size":32,"complete":true,"boxes":[)"
            R"({"type":"zzzz","path":"zzzz","offset":0,"header_size":8,"size":8},)"
            R"({"type":"moov","name":"Movie Box","standard":"ISO/IEC 14496-12, 8.2.1",)"
            R"("path":"moov","offset":8,"header_size":8,"size":16,"children":[)"
            R"({"type":"yyyy","path":"moov/yyyy","offset":16,"header_size":8,"size":8}]},)"
            R"({"type":"zzzz","path":"zzzz[2]","offset":24,"header_size":8,"size":8}]})",
            JsonOf(Box("zzzz") + Box("moov", Box("yyyy")) + Box("zzzz")));
}

TEST(TreeJson, OfNothingIsAnEmptyList) {
  EXPECT_EQ(R"({"size":0,"complete":true,"boxes":[]})", JsonOf({}));
}

TEST(TreeJson, ProblemsOfTheFileStandBesideItsBoxes) {
  const std::string json = JsonOf(Box("free") + Bytes{1, 2, 3});
  EXPECT_NE(std::string::npos, json.find(R"("complete":true,"problems":[)")) << json;
}

TEST(TreeJson, FieldsKeepTheirKinds) {
  EXPECT_EQ(R"({"a":1,"b":-1,"c":0.5,"d":false,"e":"t","f":["x","y"],"g":[]})",
            FieldsJson({{"a", std::uint64_t{1}},
                        {"b", std::int64_t{-1}},
                        {"c", 0.5},
                        {"d", false},
                        {"e", std::string("t")},
                        {"f", std::vector<std::string>{"x", "y"}},
                        {"g", std::vector<std::string>{}}}));
  EXPECT_EQ("{}", FieldsJson({}));
}
