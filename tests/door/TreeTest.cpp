#include <gtest/gtest.h>

#include <string>

#include "mp4judge/look.h"
#include "mp4judge/look.hpp"
#include "tests/Bytes.h"

using mp4judge::Node;
using mp4judge::Tree;

namespace {

/// A file type, and a movie with two tracks that have a header each.
Bytes FileWithTracks() {
  const Bytes track = Box("trak", Box("tkhd", Bytes().Be32(0)));
  return Box("ftyp", Bytes().Text("isom").Be32(0)) + Box("moov", track + track);
}

std::string JsonOf(const Bytes& file, const mp4judge_tree_options* options = nullptr) {
  mp4judge_tree* tree = mp4judge_tree_open_memory(file.data(), file.size());
  const char* json = mp4judge_tree_json(tree, options);
  const std::string text = json != nullptr ? json : "null";
  mp4judge_tree_free(tree);
  return text;
}

std::vector<std::string> PathsOf(const Bytes& file, const mp4judge_tree_options& options) {
  std::vector<std::string> paths;
  mp4judge_tree* tree = mp4judge_tree_open_memory(file.data(), file.size());
  mp4judge_tree_walk(
      tree, &options,
      [](void* user, const mp4judge_box* box) {
        static_cast<std::vector<std::string>*>(user)->push_back(box->path);
        return 0;
      },
      &paths);
  mp4judge_tree_free(tree);
  return paths;
}

using Paths = std::vector<std::string>;

}  // namespace

TEST(Tree, AsJsonHasAllOfABox) {
  EXPECT_EQ(JsonOf(Box("free", Bytes().Fill(4)) + Box("moov", Box("zzzz"))),
            R"({"size":28,"complete":true,"boxes":[)"
            R"({"type":"free","name":"Free Space Box","standard":"ISO/IEC 14496-12, 8.1.2",)"
            R"("path":"free","offset":0,"header_size":8,"size":12},)"
            R"({"type":"moov","name":"Movie Box","standard":"ISO/IEC 14496-12, 8.2.1",)"
            R"("path":"moov","offset":12,"header_size":8,"size":16,"children":[)"
            R"({"type":"zzzz","path":"moov/zzzz","offset":20,"header_size":8,"size":8}]}]})");
}

TEST(Tree, AsJsonHasFieldsAndProblems) {
  const std::string text = JsonOf(SizedBox(100, "ftyp", Bytes().Text("isom").Be32(1)));
  EXPECT_NE(text.find(R"("fields":{"majorBrand":"isom","minorVersion":1,"compatibleBrands":[]})"),
            std::string::npos)
      << text;
  EXPECT_NE(text.find(R"("present":16)"), std::string::npos);
  EXPECT_NE(text.find(R"("problems":["the box \"ftyp\" is cut at byte 16 of 100)"),
            std::string::npos);
}

TEST(Tree, IsBoundedByDepth) {
  mp4judge_tree_options options = MP4JUDGE_TREE_OPTIONS_DEFAULT;
  options.depth = 2;
  EXPECT_EQ(PathsOf(FileWithTracks(), options),
            (Paths{"ftyp", "moov", "moov/trak[1]", "moov/trak[2]"}));
}

TEST(Tree, IsFilteredByPath) {
  mp4judge_tree_options options = MP4JUDGE_TREE_OPTIONS_DEFAULT;
  options.path = "trak";
  EXPECT_EQ(PathsOf(FileWithTracks(), options),
            (Paths{"moov/trak[1]", "moov/trak[1]/tkhd", "moov/trak[2]", "moov/trak[2]/tkhd"}));
  options.path = "trak[2]/tkhd";
  EXPECT_EQ(PathsOf(FileWithTracks(), options), (Paths{"moov/trak[2]/tkhd"}));
  options.path = "/moov/*/tkhd";
  EXPECT_EQ(PathsOf(FileWithTracks(), options), (Paths{"moov/trak[1]/tkhd", "moov/trak[2]/tkhd"}));
  options.path = "/trak";
  EXPECT_EQ(PathsOf(FileWithTracks(), options), Paths{});
  options.path = "moov";
  options.depth = 1;
  EXPECT_EQ(PathsOf(FileWithTracks(), options), Paths{"moov"});
}

TEST(Tree, EndsAfterSoManyBoxesAndSaysSo) {
  mp4judge_tree_options options = MP4JUDGE_TREE_OPTIONS_DEFAULT;
  options.most_boxes = 3;
  const Bytes file = FileWithTracks();
  const Tree few = Tree::OfMemory(file.data(), file.size(), &options);
  EXPECT_FALSE(few.Complete());
  EXPECT_TRUE(Tree::OfMemory(file.data(), file.size()).Complete());
}

TEST(Tree, OfValuesNestsLikeTheFile) {
  const Bytes file = FileWithTracks();
  const Tree tree = Tree::OfMemory(file.data(), file.size());
  EXPECT_EQ(tree.Error(), MP4JUDGE_OK);
  EXPECT_EQ(tree.FileSize(), file.size());
  ASSERT_EQ(tree.Boxes().size(), 2u);
  const Node& movie = tree.Boxes()[1];
  ASSERT_EQ(movie.children.size(), 2u);
  EXPECT_EQ(movie.children[1].path, "moov/trak[2]");
  EXPECT_EQ(movie.children[1].offset, 16u + 8 + 20);
  ASSERT_EQ(movie.children[1].children.size(), 1u);
  EXPECT_EQ(movie.children[1].children[0].problems.size(), 1u);
  ASSERT_EQ(tree.Boxes()[0].fields.size(), 3u);
  EXPECT_EQ(tree.Boxes()[0].fields[0].name, "majorBrand");
  EXPECT_EQ(tree.Boxes()[0].fields[0].text, "isom");
}

TEST(Tree, OfWhatCannotBeOpenedIsEmptyAndSaysWhy) {
  EXPECT_EQ(Tree::OfPath("/nonexistent/never.mp4").Error(), MP4JUDGE_ERROR_OPEN);
  EXPECT_EQ(Tree::OfPath("/").Error(), MP4JUDGE_ERROR_NOT_A_FILE);
  EXPECT_EQ(Tree::OfPath(nullptr).Error(), MP4JUDGE_ERROR_ARGUMENT);
  EXPECT_EQ(Tree::OfCallbacks(nullptr, nullptr, nullptr).Error(), MP4JUDGE_ERROR_ARGUMENT);
  EXPECT_EQ(JsonOf(Bytes()), R"({"size":0,"complete":true,"boxes":[]})");
}

TEST(Tree, OfNullAnswersNothing) {
  EXPECT_EQ(mp4judge_tree_json(nullptr, nullptr), nullptr);
  EXPECT_EQ(mp4judge_tree_error(nullptr), MP4JUDGE_ERROR_ARGUMENT);
  EXPECT_EQ(mp4judge_tree_walk(nullptr, nullptr, nullptr, nullptr), MP4JUDGE_ERROR_ARGUMENT);
  EXPECT_EQ(mp4judge_tree_file_size(nullptr), 0u);
  mp4judge_tree_free(nullptr);
}

TEST(Tree, OfASourceThatFailsIsNotComplete) {
  const auto fail = [](void*, std::uint64_t, void*, std::size_t) { return std::int64_t{-5}; };
  const auto size = [](void*) { return std::int64_t{1000}; };
  const Tree tree = Tree::OfCallbacks(fail, size, nullptr);
  EXPECT_FALSE(tree.Complete());
  EXPECT_EQ(tree.Error(), MP4JUDGE_ERROR_READ);
  EXPECT_EQ(tree.SystemError(), -5);
}
