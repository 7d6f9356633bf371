#include <gtest/gtest.h>

#include <string>

#include "mp4judge/mp4judge.h"

TEST(Version, OfHeaderAndLibraryAreTheSame) {
  EXPECT_STREQ(mp4judge_version(), MP4JUDGE_VERSION_STRING);
}

TEST(Version, TextAndNumberSayTheSame) {
  EXPECT_EQ(MP4JUDGE_VERSION_STRING, std::to_string(MP4JUDGE_VERSION_MAJOR) + "." +
                                         std::to_string(MP4JUDGE_VERSION_MINOR) + "." +
                                         std::to_string(MP4JUDGE_VERSION_PATCH));
  EXPECT_EQ(MP4JUDGE_VERSION_NUMBER,
            MP4JUDGE_VERSION_MAJOR * 10000 + MP4JUDGE_VERSION_MINOR * 100 + MP4JUDGE_VERSION_PATCH);
}
