#include <gtest/gtest.h>

#include "door/ReportHandle.h"

namespace {

mp4::ReportScheme Scheme(const char* type) {
  mp4::ReportScheme scheme;
  scheme.type = type;
  return scheme;
}

/// Two tracks with two entries each; the second entry of the second has two schemes.
mp4::Report TwoTracks() {
  mp4::Report report;
  report.tracks = {
      {1, "vide", false, {{"avc1", "", false, {}}, {"hvc1", "", false, {}}}},
      {2,
       "soun",
       true,
       {{"mp4a", "", false, {}}, {"enca", "mp4a", true, {Scheme("cenc"), Scheme("cbcs")}}}}};
  return report;
}

}  // namespace

TEST(ReportHandle, EntriesAndSchemesBelongToTheirParents) {
  const mp4::Report report = TwoTracks();
  const mp4::ReportViews views(report);
  EXPECT_STREQ("avc1", views.Entry(0, 0)->format);
  EXPECT_STREQ("hvc1", views.Entry(0, 1)->format);
  EXPECT_STREQ("mp4a", views.Entry(1, 0)->format);
  EXPECT_STREQ("enca", views.Entry(1, 1)->format);
  EXPECT_STREQ("mp4a", views.Entry(1, 1)->original_format);
  EXPECT_STREQ("cenc", views.Scheme(1, 1, 0)->type);
  EXPECT_STREQ("cbcs", views.Scheme(1, 1, 1)->type);
}

TEST(ReportHandle, BehindTheLastOfAParentIsNull) {
  const mp4::Report report = TwoTracks();
  const mp4::ReportViews views(report);
  EXPECT_EQ(nullptr, views.Track(2));
  EXPECT_EQ(nullptr, views.Entry(0, 2)) << "not the next track's first";
  EXPECT_EQ(nullptr, views.Entry(2, 0));
  EXPECT_EQ(nullptr, views.Scheme(0, 0, 0)) << "not the next entry's first";
  EXPECT_EQ(nullptr, views.Scheme(1, 1, 2));
  EXPECT_EQ(nullptr, views.Scheme(1, 2, 0));
  EXPECT_EQ(nullptr, views.Item(0));
  EXPECT_EQ(nullptr, views.System(0));
  EXPECT_EQ(nullptr, views.Evidence(0));
  EXPECT_EQ(nullptr, views.Problem(0));
}

TEST(ReportHandle, WhatIsNotThereHasItsOwnNumber) {
  mp4::Report report;
  report.evidence = {{"moov", {}, {}, {}, "", "", "said"}, {"moov", 7, 0, 0, "f", "s", "said"}};
  report.problems = {{"moov", {}, "odd", false}};
  report.items = {{3, "", false, ""}};
  const mp4::ReportViews views(report);
  EXPECT_EQ(MP4JUDGE_NO_OFFSET, views.Evidence(0)->offset);
  EXPECT_EQ(-1, views.Evidence(0)->track);
  EXPECT_EQ(-1, views.Evidence(0)->item);
  EXPECT_EQ(nullptr, views.Evidence(0)->format);
  EXPECT_EQ(7U, views.Evidence(1)->offset);
  EXPECT_EQ(0, views.Evidence(1)->track) << "unreadable, but one";
  EXPECT_STREQ("f", views.Evidence(1)->format);
  EXPECT_EQ(MP4JUDGE_NO_OFFSET, views.Problem(0)->offset);
  EXPECT_EQ(0, views.Problem(0)->may_hide);
  EXPECT_EQ(nullptr, views.Item(0)->type);
}

TEST(ReportHandle, SchemesTellWhetherTheyHaveParameters) {
  mp4::Report report = TwoTracks();
  mp4::ReportScheme& scheme = report.tracks[1].entries[1].schemes[0];
  scheme.defaultProtected = false;
  scheme.defaultKeyId = mp4::Id16{1, 2};
  scheme.constantIv = {9, 8};
  const mp4::ReportViews views(report);
  EXPECT_EQ(0, views.Scheme(1, 1, 0)->default_protected);
  EXPECT_EQ(2, views.Scheme(1, 1, 0)->default_key_id[1]);
  ASSERT_EQ(2U, views.Scheme(1, 1, 0)->constant_iv_size);
  EXPECT_EQ(8, views.Scheme(1, 1, 0)->constant_iv[1]);
  EXPECT_EQ(-1, views.Scheme(1, 1, 1)->default_protected);
  EXPECT_EQ(nullptr, views.Scheme(1, 1, 1)->default_key_id);
  EXPECT_EQ(nullptr, views.Scheme(1, 1, 1)->constant_iv);
}

TEST(ReportHandle, KeyIdsOfASystemLieOneBehindTheOther) {
  mp4::Report report;
  report.systems = {{{7}, "", {}, 1, "pssh"}, {{8}, "Name", {{1}, {2}}, 1, "pssh"}};
  const mp4::ReportViews views(report);
  EXPECT_EQ(nullptr, views.System(0)->name);
  EXPECT_EQ(0U, views.System(0)->key_id_count);
  EXPECT_EQ(nullptr, views.System(0)->key_ids);
  EXPECT_EQ(8, views.System(1)->id[0]);
  ASSERT_EQ(2U, views.System(1)->key_id_count);
  EXPECT_EQ(2, views.System(1)->key_ids[16]);
}

TEST(ReportHandle, TheJsonIsMadeOnce) {
  mp4::Judged judged;
  judged.report = TwoTracks();
  const mp4judge_report report(std::move(judged));
  const char* json = report.Json();
  ASSERT_NE(nullptr, json);
  EXPECT_EQ('{', json[0]);
  EXPECT_EQ(json, report.Json());
}
