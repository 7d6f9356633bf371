#include <gtest/gtest.h>

#include "boxes/fragments/RunMerge.h"
#include "tests/FragmentFixtures.h"

namespace {

using fixture::FragmentedMovie;
using mp4::FragmentValues;

constexpr std::uint32_t kNotSync = 0x10000;

FragmentValues Choose(const BoxTFHD& header) {
  BoxTREX trex;
  trex.default_sample_description_index = 1;
  trex.default_sample_duration = 2;
  trex.default_sample_size = 3;
  trex.default_sample_flags = 4;
  return mp4::ChooseValues(header, trex);
}

TEST(ChooseValues, AreTheTracksWhereTheHeaderSaysNothing) {
  BoxTFHD header;
  header.default_sample_size = 99;  // without its bit
  const FragmentValues values = Choose(header);
  EXPECT_EQ(values.descriptionIndex, 1u);
  EXPECT_EQ(values.duration, 2u);
  EXPECT_EQ(values.size, 3u);
  EXPECT_EQ(values.flags, 4u);
  EXPECT_FALSE(values.hasBase);
  EXPECT_EQ(values.base, 0u);
}

TEST(ChooseValues, AreTheHeadersWhereItsBitsAreSet) {
  BoxTFHD header;
  header.tf_flags = 0x01 | 0x02 | 0x08 | 0x10 | 0x20;
  header.base_data_offset = 10;
  header.sample_description_index = 11;
  header.default_sample_duration = 12;
  header.default_sample_size = 13;
  header.default_sample_flags = 14;
  const FragmentValues values = Choose(header);
  EXPECT_EQ(values.descriptionIndex, 11u);
  EXPECT_EQ(values.duration, 12u);
  EXPECT_EQ(values.size, 13u);
  EXPECT_EQ(values.flags, 14u);
  EXPECT_TRUE(values.hasBase);
  EXPECT_EQ(values.base, 10u);
}

/// A run of so many samples without entries of their own.
std::int64_t CostOf(std::uint32_t samples, const FragmentValues& values, BoxSTBL* tables) {
  BoxTRUN run;
  run.sample_count = samples;
  return mp4::RunMerge(run, values, tables).Cost();
}

TEST(RunMerge, RunCosts64WhereNoSampleTakesRoom) {
  FragmentedMovie movie;
  BoxSTBL& tables = movie.AddTrack(1, "vide");
  EXPECT_EQ(CostOf(3, {1, 1024, 200, kNotSync, false, 0}, &tables), 64);
  BoxSTBL none;
  EXPECT_EQ(CostOf(3, {1, 1024, 200, 0, false, 0}, &none), 64);
}

TEST(RunMerge, SizesThatTakeRowsCost16Each) {
  FragmentedMovie movie;
  BoxSTBL& tables = movie.AddTrack(1, "vide");
  EXPECT_EQ(CostOf(3, {1, 1024, 0, kNotSync, false, 0}, &tables), 64 + 3 * 16);
}

// Four for the row, eight for the step of a loop that no byte of the file stands for.
TEST(RunMerge, SyncSamplesWithoutEntriesCost12Each) {
  FragmentedMovie movie;
  BoxSTBL& tables = movie.AddTrack(1, "vide");
  EXPECT_EQ(CostOf(3, {1, 1024, 200, 0, false, 0}, &tables), 64 + 3 * 12);
}

TEST(RunMerge, AddsItsBytesToThoseOfTheEarlierRuns) {
  FragmentedMovie movie;
  BoxSTBL& tables = movie.AddTrack(1, "vide");
  BoxTRUN run;
  run.sample_count = 3;
  std::uint32_t bytes = 50;
  const FragmentValues values = {1, 1024, 200, kNotSync, false, 0};
  mp4::RunMerge(run, values, &tables).Append(&bytes);
  EXPECT_EQ(bytes, 650u);
  EXPECT_EQ(tables.sampleSizeBox->GetSampleCount(), 3u);
  EXPECT_EQ(tables.chunkOffsetBox->GetChunkOffset(0), 50u);
  EXPECT_EQ(tables.timeToSampleBox->GetPTS(3), 3072);
}

}  // namespace
