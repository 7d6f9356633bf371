#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "door/Options.h"

using mp4::WholeOptions;

TEST(Options, NullMeansTheDefaults) {
  const mp4judge_options whole = WholeOptions(nullptr);
  EXPECT_EQ(whole.everything, 0);
  EXPECT_EQ(whole.host_answer, 1);
  EXPECT_EQ(whole.name, nullptr);
}

TEST(Options, AllMembersAreTaken) {
  const mp4judge_options given = {sizeof(mp4judge_options), 1, 0, "name"};
  const mp4judge_options whole = WholeOptions(&given);
  EXPECT_EQ(whole.everything, 1);
  EXPECT_EQ(whole.host_answer, 0);
  EXPECT_STREQ(whole.name, "name");
}

TEST(Options, MembersBehindTheSizeHaveTheirDefaults) {
  mp4judge_options given = {0, 1, 0, "name"};
  EXPECT_EQ(WholeOptions(&given).everything, 0);
  given.size = offsetof(mp4judge_options, host_answer);
  EXPECT_EQ(WholeOptions(&given).everything, 1);
  EXPECT_EQ(WholeOptions(&given).host_answer, 1);
  given.size = offsetof(mp4judge_options, name);
  EXPECT_EQ(WholeOptions(&given).host_answer, 0);
  EXPECT_EQ(WholeOptions(&given).name, nullptr);
}

TEST(Options, MembersOfLaterVersionsArePassedOver) {
  struct Later {
    mp4judge_options known = {sizeof(Later), 1, 0, nullptr};
    int more[4] = {9, 9, 9, 9};
  };
  const Later later;
  EXPECT_EQ(WholeOptions(&later.known).everything, 1);
  EXPECT_EQ(WholeOptions(&later.known).size, sizeof(mp4judge_options));
}

TEST(Options, OptionsOfATreeAreMadeWholeLikewise) {
  EXPECT_EQ(mp4::WholeTreeOptions(nullptr).most_boxes, 200000u);
  mp4judge_tree_options given = {offsetof(mp4judge_tree_options, most_boxes), 3, "moov", 7, 1};
  const mp4judge_tree_options whole = mp4::WholeTreeOptions(&given);
  EXPECT_EQ(whole.size, sizeof(mp4judge_tree_options));
  EXPECT_EQ(whole.depth, 3);
  EXPECT_STREQ(whole.path, "moov");
  EXPECT_EQ(whole.most_boxes, 200000u) << "behind the size";
  EXPECT_EQ(whole.indented, 0) << "likewise";
}
