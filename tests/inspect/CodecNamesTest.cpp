#include <gtest/gtest.h>

#include "inspect/CodecNames.h"

TEST(CodecNames, AvcProfilesDependOnTheConstraints) {
  EXPECT_EQ("Baseline", mp4::AvcProfile(66, 0));
  EXPECT_EQ("Constrained Baseline", mp4::AvcProfile(66, 0x40));
  EXPECT_EQ("Baseline", mp4::AvcProfile(66, 0xBF));
  EXPECT_EQ("Main", mp4::AvcProfile(77, 0xFF));
  EXPECT_EQ("High 10", mp4::AvcProfile(110, 0xEF));
  EXPECT_EQ("High 10 Intra", mp4::AvcProfile(110, 0x10));
  EXPECT_EQ("High 4:2:2 Intra", mp4::AvcProfile(122, 0x10));
  EXPECT_EQ("High 4:4:4 Predictive", mp4::AvcProfile(244, 0));
  EXPECT_EQ("High 4:4:4 Intra", mp4::AvcProfile(244, 0x10));
  EXPECT_EQ("profile 67", mp4::AvcProfile(67, 0));
}

TEST(CodecNames, AvcLevelsAreTenths) {
  EXPECT_EQ("4", mp4::AvcLevel(40, 0));
  EXPECT_EQ("3.1", mp4::AvcLevel(31, 0x10));
  EXPECT_EQ("1.1", mp4::AvcLevel(11, 0xEF));
  EXPECT_EQ("1b", mp4::AvcLevel(11, 0x10));
  EXPECT_EQ("1b", mp4::AvcLevel(9, 0));
}

TEST(CodecNames, ProfilesWithoutANameAreNumbers) {
  EXPECT_EQ("Main", mp4::HevcProfile(1));
  EXPECT_EQ("Range Extensions", mp4::HevcProfile(4));
  EXPECT_EQ("High Throughput Screen-Extended Main", mp4::HevcProfile(11));
  EXPECT_EQ("profile 12", mp4::HevcProfile(12));
  EXPECT_EQ("profile 0", mp4::HevcProfile(0));
  EXPECT_EQ("Main", mp4::Av1Profile(0));
  EXPECT_EQ("Professional", mp4::Av1Profile(2));
  EXPECT_EQ("profile 3", mp4::Av1Profile(3));
}

// Four to a level, from 2.0 on.
TEST(CodecNames, Av1LevelsCountFromTwo) {
  EXPECT_EQ("2.0", mp4::Av1Level(0));
  EXPECT_EQ("3.1", mp4::Av1Level(5));
  EXPECT_EQ("7.3", mp4::Av1Level(23));
  EXPECT_EQ("maximum", mp4::Av1Level(31));
}

TEST(CodecNames, VisualProfilesHaveTheirLevel) {
  EXPECT_EQ("Simple@L0", mp4::Mpeg4VisualProfile(8));
  EXPECT_EQ("Simple@L1", mp4::Mpeg4VisualProfile(1));
  EXPECT_EQ("Simple@L6", mp4::Mpeg4VisualProfile(6));
  EXPECT_EQ("Advanced Simple@L5", mp4::Mpeg4VisualProfile(0xF5));
  EXPECT_EQ("profile 0", mp4::Mpeg4VisualProfile(0));
  EXPECT_EQ("profile 7", mp4::Mpeg4VisualProfile(7));
  EXPECT_EQ("profile 248", mp4::Mpeg4VisualProfile(0xF8));
}

TEST(CodecNames, ObjectTypesAreThoseOfTheRegistry) {
  EXPECT_EQ("MPEG-4 Visual", mp4::ObjectTypeName(0x20));
  EXPECT_EQ("H.264/AVC", mp4::ObjectTypeName(0x21));
  EXPECT_EQ("object type 34", mp4::ObjectTypeName(0x22)) << "parameter sets alone";
  EXPECT_EQ("H.265/HEVC", mp4::ObjectTypeName(0x23));
  EXPECT_EQ("MPEG-4 Audio", mp4::ObjectTypeName(0x40));
  for (std::uint8_t type = 0x60; type <= 0x65; ++type) {
    EXPECT_EQ("MPEG-2 Video", mp4::ObjectTypeName(type));
  }
  for (std::uint8_t type = 0x66; type <= 0x68; ++type) {
    EXPECT_EQ("MPEG-2 AAC", mp4::ObjectTypeName(type));
  }
  EXPECT_EQ("MPEG-2 Audio", mp4::ObjectTypeName(0x69));
  EXPECT_EQ("MPEG-1 Video", mp4::ObjectTypeName(0x6A));
  EXPECT_EQ("MPEG-1 Audio", mp4::ObjectTypeName(0x6B));
  EXPECT_EQ("object type 0", mp4::ObjectTypeName(0));
}

TEST(CodecNames, AudioObjectsAreThoseOfTheRegistry) {
  EXPECT_EQ("AAC LC", mp4::AudioObjectName(2));
  EXPECT_EQ("HE-AAC", mp4::AudioObjectName(5));
  EXPECT_EQ("HE-AAC v2", mp4::AudioObjectName(29));
  EXPECT_EQ("xHE-AAC", mp4::AudioObjectName(42));
  EXPECT_EQ("audio object type 95", mp4::AudioObjectName(95));
}

TEST(CodecNames, ChromaFormatsAreCounted) {
  EXPECT_STREQ("4:0:0", mp4::ChromaName(0));
  EXPECT_STREQ("4:2:0", mp4::ChromaName(1));
  EXPECT_STREQ("4:4:4", mp4::ChromaName(3));
  EXPECT_STREQ("unknown", mp4::ChromaName(4));
}
