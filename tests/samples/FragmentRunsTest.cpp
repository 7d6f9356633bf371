#include <gtest/gtest.h>

#include "samples/FragmentRuns.h"
#include "tests/Bytes.h"

namespace {

using mp4::FragmentRun;

constexpr std::uint32_t kNotSync = 0x10000;

/// A run of samples of 10 bytes and 100 units each, which are no sync samples, from time 1,000 on.
FragmentRun PlainRun(std::uint32_t count) {
  FragmentRun run;
  run.decodeTime = 1000;
  run.count = count;
  run.duration = 100;
  run.size = 10;
  run.flags = kNotSync;
  run.flagsTold = true;
  return run;
}
/// The same with rows of these fields.
FragmentRun RunWithRows(std::uint32_t count, unsigned fields, const Bytes& rows) {
  FragmentRun run = PlainRun(count);
  run.fields = static_cast<std::uint8_t>(fields);
  run.rows = rows.data();
  return run;
}

/// Runs of so many samples each.
mp4::FragmentRuns RunsOf(const std::vector<std::uint32_t>& counts, std::uint64_t first = 0) {
  mp4::FragmentRuns runs;
  runs.first = first;
  for (const std::uint32_t count : counts) {
    FragmentRun run = PlainRun(count);
    run.firstSample = first + runs.samples;
    run.decodeTime = 100 * runs.samples;
    runs.samples += count;
    runs.runs.push_back(run);
  }
  runs.endTime = 100 * runs.samples;
  return runs;
}

}  // namespace

TEST(FragmentRuns, RowsHaveFourBytesAField) {
  for (unsigned fields = 0; fields < 16; ++fields) {
    std::size_t width = 0;
    for (unsigned bit = 0; bit < 4; ++bit) width += (fields >> bit & 1) != 0 ? 4 : 0;
    EXPECT_EQ(width, FragmentRun::WidthOf(fields)) << fields;
  }
}

TEST(FragmentRuns, ARowHasItsFieldsInOrderAndTheRunsOthers) {
  const Bytes row = Bytes().Be32(1).Be32(2).Be32(3).Be32(0xFFFFFFFC);
  const mp4::RunRow all = RunWithRows(1, 15, row).RowAt(row.data());
  EXPECT_EQ(1U, all.duration);
  EXPECT_EQ(2U, all.size);
  EXPECT_EQ(3U, all.flags);
  EXPECT_EQ(-4, all.offset);
  const mp4::RunRow some =
      RunWithRows(1, FragmentRun::kSize | FragmentRun::kOffset, row).RowAt(row.data());
  EXPECT_EQ(100U, some.duration);
  EXPECT_EQ(1U, some.size);
  EXPECT_EQ(kNotSync, some.flags);
  EXPECT_EQ(2, some.offset);
}

TEST(FragmentRuns, FlagsTellSyncAndDependencies) {
  mp4::Sample sample;
  mp4::RunRow{0, 0, 0x02410000, 0}.ShowFlags(true, &sample);
  EXPECT_EQ(mp4::Told::kNo, sample.sync);
  EXPECT_EQ(0x24, sample.depends);
  mp4::RunRow{0, 0, 0x02000000, 0}.ShowFlags(true, &sample);
  EXPECT_EQ(mp4::Told::kYes, sample.sync);
  mp4::RunRow{0, 0, 0, 0}.ShowFlags(false, &sample);
  EXPECT_EQ(mp4::Told::kUnknown, sample.sync);
}

TEST(FragmentRuns, TheFirstSamplesFlagsAreThoseOfItsRowIfThereIsOne) {
  mp4::Sample sample;
  FragmentRun run = PlainRun(2);
  run.firstTold = true;
  run.ShowFirstFlags(&sample);
  EXPECT_EQ(mp4::Told::kYes, sample.sync);
  run.fields = FragmentRun::kFlags;
  sample.sync = mp4::Told::kNo;
  run.ShowFirstFlags(&sample);
  EXPECT_EQ(mp4::Told::kNo, sample.sync) << "left alone";
}

TEST(FragmentRuns, APlaceCountsTheSamplesInFrontOfIt) {
  const mp4::RunPlace plain = PlainRun(9).PlaceOf(3);
  EXPECT_EQ(30U, plain.bytes);
  EXPECT_EQ(300U, plain.duration);
  const Bytes rows = Bytes().Be32(1).Be32(10).Be32(2).Be32(20).Be32(4).Be32(40);
  const FragmentRun both = RunWithRows(3, FragmentRun::kDuration | FragmentRun::kSize, rows);
  EXPECT_EQ(0U, both.PlaceOf(0).bytes);
  EXPECT_EQ(30U, both.PlaceOf(2).bytes);
  EXPECT_EQ(3U, both.PlaceOf(2).duration);
  EXPECT_EQ(rows.data() + 16, both.PlaceOf(2).rows);
  const FragmentRun sizes = RunWithRows(6, FragmentRun::kSize, rows);
  EXPECT_EQ(13U, sizes.PlaceOf(3).bytes);
  EXPECT_EQ(300U, sizes.PlaceOf(3).duration) << "all the same";
}

TEST(FragmentRuns, TheLastSampleAtATimeIsFound) {
  const FragmentRun plain = PlainRun(4);
  EXPECT_EQ(0U, plain.LastAtTime(1000));
  EXPECT_EQ(0U, plain.LastAtTime(1099));
  EXPECT_EQ(1U, plain.LastAtTime(1100));
  EXPECT_EQ(3U, plain.LastAtTime(99999));
  FragmentRun still = PlainRun(4);
  still.duration = 0;
  EXPECT_EQ(3U, still.LastAtTime(1000)) << "all at one time";
  const Bytes rows = Bytes().Be32(5).Be32(0).Be32(7).Be32(1);
  const FragmentRun own = RunWithRows(4, FragmentRun::kDuration, rows);
  EXPECT_EQ(0U, own.LastAtTime(1004));
  EXPECT_EQ(2U, own.LastAtTime(1005));
  EXPECT_EQ(2U, own.LastAtTime(1011));
  EXPECT_EQ(3U, own.LastAtTime(1012));
}

TEST(FragmentRuns, TheLastSyncSampleIsCountedFromOne) {
  FragmentRun run = PlainRun(4);
  EXPECT_EQ(0U, run.LastSync(3));
  run.firstTold = true;
  EXPECT_EQ(1U, run.LastSync(3)) << "the first has flags of its own";
  run.flags = 0;
  EXPECT_EQ(4U, run.LastSync(3));
  EXPECT_EQ(1U, run.LastSync(0));
  run.flagsTold = run.firstTold = false;
  EXPECT_EQ(0U, run.LastSync(3)) << "nothing is told";
  const Bytes rows =
      Bytes().Be32(9).Be32(0).Be32(9).Be32(kNotSync).Be32(9).Be32(0).Be32(9).Be32(kNotSync);
  const FragmentRun own = RunWithRows(4, FragmentRun::kSize | FragmentRun::kFlags, rows);
  EXPECT_EQ(3U, own.LastSync(3));
  EXPECT_EQ(3U, own.LastSync(2));
  EXPECT_EQ(1U, own.LastSync(1));
}

TEST(FragmentRuns, ASampleIsInTheRunThatHoldsIt) {
  const mp4::FragmentRuns runs = RunsOf({3, 1, 100, 2}, 7);
  const std::size_t expected[] = {0, 0, 0, 1, 2};
  for (std::uint64_t i = 0; i < 5; ++i) EXPECT_EQ(expected[i], runs.Find(7 + i)) << i;
  EXPECT_EQ(2U, runs.Find(110));
  EXPECT_EQ(3U, runs.Find(111));
  EXPECT_EQ(3U, runs.Find(112));
}

TEST(FragmentRuns, TheLastRunAtATimeIsFound) {
  mp4::FragmentRuns runs = RunsOf({3, 1, 100});
  EXPECT_EQ(0U, runs.LastAtTime(299));
  EXPECT_EQ(1U, runs.LastAtTime(300));
  EXPECT_EQ(2U, runs.LastAtTime(400));
  EXPECT_EQ(2U, runs.LastAtTime(UINT64_MAX));
  runs.runs[0].decodeTime = 50;
  EXPECT_EQ(3U, runs.LastAtTime(49)) << "none";
  mp4::FragmentRuns none;
  EXPECT_EQ(0U, none.LastAtTime(7));
}

// The second run goes back behind the first, the third starts before both.
TEST(FragmentRuns, WhereTimesFallTheLastRunCounts) {
  mp4::FragmentRuns runs = RunsOf({1, 1, 1});
  runs.runs[0].decodeTime = 500;
  runs.runs[1].decodeTime = 900;
  runs.runs[2].decodeTime = 200;
  runs.endTime = 300;
  runs.timesRise = false;
  EXPECT_EQ(3U, runs.LastAtTime(199));
  EXPECT_EQ(2U, runs.LastAtTime(200));
  EXPECT_EQ(2U, runs.LastAtTime(900));
}

TEST(FragmentRuns, ExtrasTellSamplesOneByOne) {
  const Bytes depends{0x24, 0x18};
  mp4::FragmentExtra extra;
  extra.depends = depends.data();
  extra.dependsCount = 2;
  extra.shift = std::uint64_t{0} - 4;  // sample 5 is the fragment's first
  mp4::Sample sample;
  sample.number = 6;
  extra.Show(&sample);
  EXPECT_EQ(0x18, sample.depends);
  sample.number = 7;
  sample.depends = 1;
  extra.Show(&sample);
  EXPECT_EQ(1, sample.depends) << "behind the table";
}

TEST(FragmentRuns, KeptRowsStayWhereTheyAre) {
  mp4::RowKeep keep;
  const Bytes first = Bytes().Fill(100, 1);
  const Bytes large = Bytes().Fill(600000, 2);
  const unsigned char* kept = keep.Keep(first.data(), first.size());
  const unsigned char* other = keep.Keep(large.data(), large.size());
  const unsigned char* third = keep.Keep(first.data(), first.size());
  EXPECT_EQ(nullptr, keep.Keep(first.data(), 0));
  EXPECT_EQ(1, kept[99]);
  EXPECT_EQ(2, other[599999]);
  EXPECT_EQ(1, third[0]);
  EXPECT_GE(keep.Bytes(), 600200U);
  EXPECT_LE(keep.Bytes(), 1000000U) << "little more than was kept";
}
