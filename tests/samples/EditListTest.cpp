#include <gtest/gtest.h>

#include <random>

#include "samples/EditList.h"
#include "tests/samples/SampleFixtures.h"

namespace {

using namespace fixture;
using mp4::Edit;
using mp4::EditTimeline;

constexpr std::int64_t kNowhere = -999;

Edit EditOf(std::uint64_t duration, std::int64_t mediaTime, std::int16_t rate = 1) {
  Edit edit;
  edit.duration = duration;
  edit.mediaTime = mediaTime;
  edit.rateInteger = rate;
  return edit;
}
std::int64_t Shown(const EditTimeline& timeline, std::int64_t mediaTime) {
  std::int64_t presentation = 0;
  return timeline.ToPresentation(mediaTime, &presentation) ? presentation : kNowhere;
}
std::int64_t Media(const EditTimeline& timeline, std::int64_t presentation) {
  std::int64_t mediaTime = 0;
  return timeline.ToMedia(presentation, &mediaTime) ? mediaTime : kNowhere;
}

TEST(EditList, WithoutEditsTimesAreTheSame) {
  const EditTimeline timeline;
  EXPECT_EQ(Shown(timeline, 123), 123);
  EXPECT_EQ(Media(timeline, -5), -5);
}

TEST(EditList, AnEditThatSkipsTheStartMovesTimesBack) {
  const EditTimeline timeline({EditOf(500, 2048)}, 1000, 48000);
  EXPECT_EQ(Shown(timeline, 2047), kNowhere);
  EXPECT_EQ(Shown(timeline, 2048), 0);
  EXPECT_EQ(Shown(timeline, 2048 + 23999), 23999);
  EXPECT_EQ(Shown(timeline, 2048 + 24000), kNowhere);
  EXPECT_EQ(Media(timeline, 0), 2048);
  EXPECT_EQ(Media(timeline, -1), kNowhere);
  EXPECT_EQ(Media(timeline, 24000), kNowhere);
}

TEST(EditList, AnEmptyEditLetsTheTrackStartLate) {
  const EditTimeline timeline({EditOf(250, -1), EditOf(500, 0)}, 1000, 2000);
  EXPECT_EQ(Media(timeline, 499), kNowhere);
  EXPECT_EQ(Media(timeline, 500), 0);
  EXPECT_EQ(Shown(timeline, 7), 507);
}

TEST(EditList, ADwellShowsOneTimeAllAlong) {
  const EditTimeline timeline({EditOf(100, 40, 0), EditOf(100, 40)}, 1000, 1000);
  EXPECT_EQ(Media(timeline, 0), 40);
  EXPECT_EQ(Media(timeline, 99), 40);
  EXPECT_EQ(Media(timeline, 101), 41);
  EXPECT_EQ(Shown(timeline, 40), 0);
  EXPECT_EQ(Shown(timeline, 41), 101);
}

TEST(EditList, ARateStretchesTheMedia) {
  const EditTimeline twice({EditOf(100, 10, 2)}, 1000, 1000);
  EXPECT_EQ(Media(twice, 50), 110);
  EXPECT_EQ(Shown(twice, 110), 50);
  Edit half = EditOf(100, 10, 0);
  half.rateFraction = 0x8000;
  const EditTimeline slow({half}, 1000, 1000);
  EXPECT_EQ(Media(slow, 50), 35);
  EXPECT_EQ(Shown(slow, 35), 50);
}

TEST(EditList, ALastEditOfLengthZeroShowsTheRest) {
  const EditTimeline timeline({EditOf(0, 1024)}, 1000, 48000);
  EXPECT_EQ(Shown(timeline, 1024), 0);
  EXPECT_EQ(Shown(timeline, 10000000), 10000000 - 1024);
  EXPECT_EQ(Media(timeline, 10000000), 10000000 + 1024);
}

TEST(EditList, ExtremeNumbersStayInRange) {
  const EditTimeline timeline({EditOf(~std::uint64_t{0}, INT64_MAX),
                               EditOf(~std::uint64_t{0}, INT64_MIN), EditOf(5, 0, -1)},
                              1, 0xFFFFFFFF);
  EXPECT_EQ(Media(timeline, 5), INT64_MAX);
  EXPECT_EQ(Shown(timeline, INT64_MAX), kNowhere);
  EXPECT_EQ(Shown(timeline, INT64_MIN), kNowhere);
  EXPECT_EQ(Media(EditTimeline({EditOf(5, 0)}, 0, 1000), 0), kNowhere);
}

/// The rules, one edit after the other; both timescales are the same.
std::int64_t ShownByRule(const std::vector<Edit>& edits, std::int64_t mediaTime) {
  std::int64_t start = 0;
  for (const Edit& edit : edits) {
    const auto length = static_cast<std::int64_t>(edit.duration);
    const std::int64_t inside = mediaTime - edit.mediaTime;
    if (!edit.IsEmpty() && length > 0 && inside >= 0 && edit.Rate() >= 0) {
      if (edit.IsDwell() && inside == 0) return start;
      if (!edit.IsDwell() && inside * 65536 / edit.Rate() < length) {
        return start + inside * 65536 / edit.Rate();
      }
    }
    start += length;
  }
  return kNowhere;
}
std::int64_t MediaByRule(const std::vector<Edit>& edits, std::int64_t presentation) {
  std::int64_t start = 0;
  for (const Edit& edit : edits) {
    const std::int64_t inside = presentation - start;
    start += static_cast<std::int64_t>(edit.duration);
    if (inside < 0 || presentation >= start) continue;
    if (edit.IsEmpty()) return kNowhere;
    return edit.mediaTime + (edit.Rate() > 0 ? inside * edit.Rate() / 65536 : 0);
  }
  return kNowhere;
}

TEST(EditList, RandomEditsFollowTheRules) {
  std::mt19937 random(5);
  for (int round = 0; round < 300; ++round) {
    std::vector<Edit> edits;
    for (std::uint32_t i = random() % 6 + 1; i > 0; --i) {
      Edit edit = EditOf(random() % 30, static_cast<std::int64_t>(random() % 40) - 1,
                         static_cast<std::int16_t>(random() % 4) - 1);
      if (random() % 3 == 0) edit.rateFraction = static_cast<std::uint16_t>(random());
      edits.push_back(edit);
    }
    if (edits.back().duration == 0) edits.back().duration = 1;
    const EditTimeline timeline(edits, 1000, 1000);
    for (std::int64_t time = -2; time < 200; ++time) {
      ASSERT_EQ(Shown(timeline, time), ShownByRule(edits, time)) << round << " at " << time;
      ASSERT_EQ(Media(timeline, time), MediaByRule(edits, time)) << round << " at " << time;
    }
  }
}

TEST(EditList, BothWidthsAreRead) {
  TableMovie narrow, wide;
  narrow.edts = Edts({{500, -1}, {100, 7, 0x28000}});
  wide.edts = Box("edts", FullBox("elst", 1, 0,
                                  Bytes().Be32(2).Be64(500).Be64(~std::uint64_t{0}).Be32(0x10000) +
                                      Bytes().Be64(100).Be64(7).Be32(0x28000)));
  for (const TableMovie& m : {narrow, wide}) {
    OpenMovie open(m.File());
    const std::vector<Edit>& edits = open.Only().Info().timeline.Edits();
    ASSERT_EQ(edits.size(), 2u);
    EXPECT_EQ(edits[0].duration, 500u);
    EXPECT_TRUE(edits[0].IsEmpty());
    EXPECT_EQ(edits[1].mediaTime, 7);
    EXPECT_EQ(edits[1].rateInteger, 2);
    EXPECT_EQ(edits[1].rateFraction, 0x8000);
  }
}

TEST(EditList, ASampleIsFoundByPresentationTimeThroughTheEdits) {
  TableMovie m;  // one second's scale for both; starts at 100, late by 50
  m.edts = Edts({{50, -1}, {250, 100}});
  OpenMovie open(m.File());
  EXPECT_EQ(open.Only().NumberAtPresentationTime(49), 0u);
  EXPECT_EQ(open.Only().NumberAtPresentationTime(50), 2u);
  EXPECT_EQ(open.Only().NumberAtPresentationTime(150), 3u);
  EXPECT_EQ(open.Only().NumberAtPresentationTime(299), 4u);
  EXPECT_EQ(open.Only().NumberAtPresentationTime(300), 0u);
}

}  // namespace
