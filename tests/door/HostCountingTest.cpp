#include <gtest/gtest.h>

#include "door/HostCounting.h"

using namespace mp4;

namespace {

ReportEntry EntryOf(const char* format, bool isProtected) { return {format, "", isProtected, {}}; }

std::string WhyFor(const std::vector<ReportTrack>& tracks,
                   const std::vector<mp4::Evidence>& evidence = {}) {
  Report report;
  report.tracks = tracks;
  report.evidence = evidence;
  return WhyHostCountsNothing(report);
}

mp4::Evidence EvidenceAt(const char* path, std::optional<std::uint32_t> item = {}) {
  mp4::Evidence evidence;
  evidence.boxPath = path;
  evidence.item = item;
  return evidence;
}

}  // namespace

TEST(HostCounting, FindsNoCauseWhereTheHostShouldCount) {
  EXPECT_EQ(WhyFor({{1, "soun", true, {EntryOf("drms", true)}}}), "");
  // Then no other track's cause is named either.
  EXPECT_EQ(WhyFor({{1, "soun", true, {EntryOf("enca", true)}},
                    {2, "vide", true, {EntryOf("drms", true)}}}),
            "");
}

TEST(HostCounting, TracksThatAreNotProtectedAreNoCause) {
  EXPECT_EQ(WhyFor({{1, "text", false, {EntryOf("tx3g", false)}},
                    {2, "vide", true, {EntryOf("encv", true)}}}),
            "track 2: the format \"encv\" is not \"drms\"");
}

TEST(HostCounting, TellsWhatElseProtectsATrack) {
  EXPECT_EQ(WhyFor({{3, "soun", true, {EntryOf("mp4a", false)}}}),
            "track 3: it is protected by something else than its sample entries");
  EXPECT_EQ(WhyFor({{3, "soun", true, {}}}), "track 3: it has no sample entry");
}

TEST(HostCounting, LaterEntriesGoByTheirNumber) {
  const ReportEntry clear = EntryOf("avc1", false);
  EXPECT_EQ(WhyFor({{1, "vide", true, {clear, clear, clear, clear, EntryOf("encv", true)}}}),
            "track 1: the protected sample entry is number 5, the first is \"avc1\"");
}

TEST(HostCounting, TellsWhatTheHostDoesNotLookAt) {
  EXPECT_EQ(WhyFor({}, {EvidenceAt("meta/iinf/infe[1]", 1), EvidenceAt("meta/iinf/infe[2]", 2)}),
            "it does not look at items");
  EXPECT_EQ(WhyFor({}, {EvidenceAt("odrm[1]/odhe")}), "it does not look at OMA containers");
  EXPECT_EQ(WhyFor({}, {EvidenceAt("moof[1]/traf[1]/senc")}), "it looks for nothing in fragments");
}

TEST(HostCounting, NamesEightCauses) {
  std::vector<ReportTrack> tracks;
  for (std::uint32_t id = 1; id <= 8; ++id) {
    tracks.push_back({id, "vide", true, {EntryOf("encv", true)}});
  }
  EXPECT_EQ(WhyFor(tracks).find("more"), std::string::npos);
  tracks.push_back({9, "vide", true, {EntryOf("encv", true)}});
  EXPECT_NE(WhyFor(tracks).find("track 8: "), std::string::npos);
  EXPECT_EQ(WhyFor(tracks).find("track 9: "), std::string::npos);
  EXPECT_NE(WhyFor(tracks).find("; and more"), std::string::npos);
}
