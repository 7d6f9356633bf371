#include <gtest/gtest.h>

#include <set>
#include <string>

#include "mp4judge/mp4judge.h"

TEST(Names, EveryErrorHasATextOfItsOwn) {
  std::set<std::string> texts;
  for (int error = MP4JUDGE_OK; error <= MP4JUDGE_ERROR_NEEDS_BYTES + 1; ++error) {
    texts.insert(mp4judge_error_text(static_cast<mp4judge_error>(error)));
  }
  EXPECT_EQ(texts.size(), 8u);
  EXPECT_TRUE(texts.count("unknown error"));
}

TEST(Names, VerdictsAreNamed) {
  EXPECT_STREQ(mp4judge_verdict_name(MP4JUDGE_CLEAR), "clear");
  EXPECT_STREQ(mp4judge_verdict_name(MP4JUDGE_PROTECTED), "protected");
  EXPECT_STREQ(mp4judge_verdict_name(MP4JUDGE_UNDETERMINED), "undetermined");
  EXPECT_STREQ(mp4judge_verdict_name(static_cast<mp4judge_verdict>(3)), "undetermined");
}
