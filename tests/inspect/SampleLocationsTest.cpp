#include <gtest/gtest.h>

#include "inspect/SampleLocations.h"
#include "io/MemorySource.h"
#include "tests/Bytes.h"

namespace {

using Places = std::vector<std::pair<std::uint64_t, std::uint32_t>>;

Places Locate(const Bytes& tables, bool expected, std::size_t most = 10) {
  const Bytes file = Box("stbl", tables);
  mp4::MemorySource memory(file.data(), file.size());
  mp4::CachedSource source(&memory);
  mp4::BoxTree tree(&source);
  std::vector<mp4::SampleLocation> samples;
  EXPECT_EQ(expected, mp4::LocateSamples(&tree, tree.FirstChild(mp4::kRootBox), most, &samples));
  Places places;
  for (const auto& sample : samples) places.emplace_back(sample.offset, sample.size);
  return places;
}

Bytes Stsc(const std::vector<std::pair<unsigned, unsigned>>& runs) {
  Bytes rows = Bytes().Be32(static_cast<std::uint32_t>(runs.size()));
  for (const auto& [first, perChunk] : runs) rows.Be32(first).Be32(perChunk).Be32(1);
  return FullBox("stsc", 0, 0, rows);
}
Bytes Stco(const std::vector<unsigned>& offsets) {
  Bytes rows = Bytes().Be32(static_cast<std::uint32_t>(offsets.size()));
  for (const unsigned offset : offsets) rows.Be32(offset);
  return FullBox("stco", 0, 0, rows);
}
Bytes Stsz(const std::vector<unsigned>& sizes) {
  Bytes rows = Bytes().Be32(0).Be32(static_cast<std::uint32_t>(sizes.size()));
  for (const unsigned size : sizes) rows.Be32(size);
  return FullBox("stsz", 0, 0, rows);
}

TEST(SampleLocations, RunsChunksAndSizesArePutTogether) {
  const Bytes tables =
      Stsc({{1, 2}, {3, 1}}) + Stco({100, 200, 300, 400}) + Stsz({5, 6, 7, 8, 9, 10});
  const Places expected = {{100, 5}, {105, 6}, {200, 7}, {207, 8}, {300, 9}, {400, 10}};
  EXPECT_EQ(expected, Locate(tables, true));
}

TEST(SampleLocations, OneSizeForAllSamplesIsRead) {
  const Bytes same = FullBox("stsz", 0, 0, Bytes().Be32(4).Be32(3));
  const Places expected = {{100, 4}, {104, 4}, {108, 4}};
  EXPECT_EQ(expected, Locate(Stsc({{1, 3}}) + Stco({100}) + same, true));
}

TEST(SampleLocations, CompactSizesOfEachWidthAreRead) {
  const auto compact = [](unsigned bits, const Bytes& sizes) {
    return FullBox("stz2", 0, 0, Bytes().Be24(0).Byte(bits).Be32(3).Append(sizes));
  };
  const Places expected = {{100, 1}, {101, 2}, {103, 3}};
  const Bytes chunks = Stsc({{1, 3}}) + Stco({100});
  EXPECT_EQ(expected, Locate(chunks + compact(4, {0x12, 0x30}), true));
  EXPECT_EQ(expected, Locate(chunks + compact(8, {1, 2, 3}), true));
  EXPECT_EQ(expected, Locate(chunks + compact(16, {0, 1, 0, 2, 0, 3}), true));
  EXPECT_EQ(Places{}, Locate(chunks + compact(5, {1, 2, 3}), false));
}

TEST(SampleLocations, WideOffsetsAreRead) {
  const Bytes co64 = FullBox("co64", 0, 0, Bytes().Be32(1).Be64(std::uint64_t{1} << 40));
  const Places expected = {{std::uint64_t{1} << 40, 5}};
  EXPECT_EQ(expected, Locate(Stsc({{1, 1}}) + co64 + Stsz({5}), true));
}

TEST(SampleLocations, MissingOrShortTablesAreSaid) {
  EXPECT_EQ(Places{}, Locate({}, false));
  EXPECT_EQ(Places{}, Locate(Stco({100}) + Stsz({5}), false));
  EXPECT_EQ(Places{}, Locate(Stsc({{1, 1}}) + Stsz({5}), false));
  EXPECT_EQ(Places{}, Locate(Stsc({{1, 0}}) + Stco({100}) + Stsz({5}), false));
  const Places first = {{100, 5}};
  EXPECT_EQ(first, Locate(Stsc({{1, 1}}) + Stco({100}) + Stsz({5, 6}), false));
}

TEST(SampleLocations, NoSamplesNeedNoChunks) {
  EXPECT_EQ(Places{}, Locate(Stsc({}) + Stco({}) + Stsz({}), true));
  EXPECT_EQ(Places{}, Locate(Stsc({{1, 1}}) + Stco({}) + Stsz({}), false));
  EXPECT_EQ(Places{}, Locate(Stsc({}) + Stco({100}) + Stsz({}), false));
}

TEST(SampleLocations, MoreSamplesThanAskedForAreRefused) {
  const Bytes chunks = Stsc({{1, 100}}) + Stco({100});
  EXPECT_EQ(2U, Locate(chunks + Stsz({5, 6}), true, 2).size());
  EXPECT_EQ(0U, Locate(chunks + Stsz({5, 6, 7}), false, 2).size());
  const Bytes huge = FullBox("stsz", 0, 0, Bytes().Be32(1).Be32(0xFFFFFFFF));
  EXPECT_EQ(0U, Locate(chunks + huge, false).size());
}

}  // namespace
