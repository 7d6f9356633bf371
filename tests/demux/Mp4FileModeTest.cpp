#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "demux/Mp4FileMode.h"

namespace {

std::string TagOf(const Mp4FileModeInfo& row) { return std::string(row.tag, 4); }

bool IsZero(const Mp4FileModeInfo& row) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(&row);
  return std::all_of(bytes, bytes + sizeof row, [](unsigned char b) { return b == 0; });
}

}  // namespace

TEST(FileModeTable, HoldsTheFiveRows) {
  const struct {
    int mode;
    const char* tag;
    const wchar_t *name, *description, *extensions;
  } rows[] = {
      {1, "mp41", L"QuickTime mp4 format", L"QuickTime/MPEG4/iPod", L".mp4;.m4a;.m4v"},
      {2, "mov ", L"QuickTime mov format", L"QuickTime mov", L".mov"},
      {3, "3gp ", L"3gp format", L"3rd Generation Partnership Project", L".3gp"},
      {4, "psp ", L"psp mp4 format", L"PSP/MPEG4", L".mp4"},
      {5, "3gp2", L"3g2 format", L"3rd Generation Partnership Project 2", L".3g2"},
  };
  for (const auto& row : rows) {
    const Mp4FileModeInfo* info = GetFileModeInfo(static_cast<MP4_FILE_MODE>(row.mode));
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(TagOf(*info), row.tag);
    EXPECT_STREQ(info->name, row.name);
    EXPECT_STREQ(info->description, row.description);
    EXPECT_STREQ(info->extensions, row.extensions);
  }
}

TEST(FileModeTable, OtherRowsAreZero) {
  for (const int mode : {0, 6, 7, 8, 9, 10, 11}) {
    EXPECT_TRUE(IsZero(*GetFileModeInfo(static_cast<MP4_FILE_MODE>(mode)))) << mode;
  }
}

TEST(FileModeTable, ModesOutsideHaveNoRow) {
  EXPECT_EQ(GetFileModeInfo(static_cast<MP4_FILE_MODE>(12)), nullptr);
  EXPECT_EQ(GetFileModeInfo(static_cast<MP4_FILE_MODE>(-1)), nullptr);
}

TEST(InitFileModeInfoArray, ClearsRowZeroFillsFiveAndLeavesTheRest) {
  std::vector<Mp4FileModeInfo> rows(kFileModeRows);
  std::memset(static_cast<void*>(rows.data()), 0x55, rows.size() * sizeof rows[0]);
  InitFileModeInfoArray(rows.data());
  EXPECT_TRUE(IsZero(rows[0]));
  EXPECT_EQ(TagOf(rows[4]), "psp ");
  EXPECT_EQ(rows[4].extensions[127], 0);
  EXPECT_EQ(rows[6].tag[0], 0x55);
  const std::vector<Mp4FileModeInfo> before = rows;
  InitFileModeInfoArray(rows.data());
  EXPECT_EQ(std::memcmp(before.data(), rows.data(), rows.size() * sizeof rows[0]), 0);
  InitFileModeInfoArray(nullptr);
}
