#include <gtest/gtest.h>

#include "door/BoxView.h"
#include "tests/TreeFixtures.h"

namespace {

mp4::ShownBox Shown(fixture::TreeOver* over, const char* path) {
  const mp4::BoxListing listing(&over->tree, {});
  return mp4::ShowBox(&over->tree, listing, over->At(path), 3);
}

}  // namespace

TEST(BoxView, ValuesAreTexts) {
  EXPECT_EQ("18446744073709551615", mp4::TextOfValue(std::uint64_t{UINT64_MAX}));
  EXPECT_EQ("-5", mp4::TextOfValue(std::int64_t{-5}));
  EXPECT_EQ("0.1", mp4::TextOfValue(0.1)) << "the shortest that reads back the same";
  EXPECT_EQ("1", mp4::TextOfValue(1.0));
  EXPECT_EQ("true", mp4::TextOfValue(true));
  EXPECT_EQ("false", mp4::TextOfValue(false));
  EXPECT_EQ("a b", mp4::TextOfValue(std::string("a b")));
  EXPECT_EQ("a, b", mp4::TextOfValue(std::vector<std::string>{"a", "b"}));
  EXPECT_EQ("", mp4::TextOfValue(std::vector<std::string>{}));
}

TEST(BoxView, ABoxIsShownWithItsNameAndFields) {
  fixture::TreeOver over(Box("moov", Box("trak") + Box("trak", Box("tref"))));
  const mp4::ShownBox shown = Shown(&over, "moov/trak");
  EXPECT_EQ("trak", shown.type);
  EXPECT_EQ("Track Box", shown.name);
  EXPECT_EQ("ISO/IEC 14496-12, 8.3.1", shown.standard);
  EXPECT_EQ("moov/trak[1]", shown.path);
  EXPECT_EQ(3, shown.level);
  EXPECT_EQ(8U, shown.box.offset);
  EXPECT_TRUE(shown.fields.empty());
  EXPECT_TRUE(shown.problems.empty());
}

TEST(BoxView, ABoxThatEndsBeforeItsFieldsSaysSo) {
  fixture::TreeOver over(Box("ftyp", Bytes().Text("isom").Be16(0)));
  const mp4::ShownBox shown = Shown(&over, "ftyp");
  ASSERT_EQ(1U, shown.fields.size());
  EXPECT_EQ(std::vector<std::string>{"it ends before its own fields do"}, shown.problems);
}

TEST(BoxView, ABoxThatIsCutSaysItOnce) {
  fixture::TreeOver over(SizedBox(100, "ftyp", Bytes().Text("isom").Be16(0)));
  const mp4::ShownBox shown = Shown(&over, "ftyp");
  ASSERT_EQ(1U, shown.problems.size());
  EXPECT_NE("it ends before its own fields do", shown.problems[0]);
}

TEST(BoxView, PointsIntoTheBoxItWasMadeOf) {
  mp4::ShownBox shown;
  shown.type = "abcd";
  shown.name = "A Box";
  shown.path = "abcd[2]";
  shown.level = 4;
  shown.box.space = 1;
  shown.box.headerSize = 16;
  shown.box.offset = 100;
  shown.box.size = 50;
  shown.box.end = 130;
  shown.fields = {{"text", std::string("t")},
                  {"number", std::uint64_t{7}},
                  {"less", std::int64_t{-7}},
                  {"real", 0.5},
                  {"flag", true},
                  {"list", std::vector<std::string>{"x", "y"}}};
  shown.problems = {"one", "two"};
  const mp4::BoxView view(shown);
  const mp4judge_box& box = *view.Get();
  EXPECT_EQ(shown.type.c_str(), box.type);
  EXPECT_STREQ("A Box", box.name);
  EXPECT_STREQ("", box.standard);
  EXPECT_STREQ("abcd[2]", box.path);
  EXPECT_EQ(4, box.level);
  EXPECT_EQ(100U, box.offset);
  EXPECT_EQ(50U, box.size);
  EXPECT_EQ(30U, box.present) << "of those, the bytes that are there";
  ASSERT_EQ(6U, box.field_count);
  const mp4judge_field_kind kinds[] = {MP4JUDGE_FIELD_TEXT,   MP4JUDGE_FIELD_NUMBER,
                                       MP4JUDGE_FIELD_NUMBER, MP4JUDGE_FIELD_NUMBER,
                                       MP4JUDGE_FIELD_BOOL,   MP4JUDGE_FIELD_LIST};
  const char* texts[] = {"t", "7", "-7", "0.5", "true", "x, y"};
  for (std::size_t i = 0; i < 6; ++i) {
    EXPECT_STREQ(shown.fields[i].name, box.fields[i].name);
    EXPECT_EQ(kinds[i], box.fields[i].kind) << i;
    EXPECT_STREQ(texts[i], box.fields[i].text);
    EXPECT_EQ(i == 5 ? 2U : 0U, box.fields[i].row_count) << i;
  }
  EXPECT_STREQ("y", box.fields[5].rows[1]);
  ASSERT_EQ(2U, box.problem_count);
  EXPECT_STREQ("two", box.problems[1]);
}
