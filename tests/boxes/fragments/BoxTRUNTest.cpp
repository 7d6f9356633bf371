#include <gtest/gtest.h>

#include "boxes/fragments/BoxTRUN.h"
#include "io/Limits.h"
#include "io/Mp4StreamReader.h"
#include "tests/Fixtures.h"
#include "tests/FragmentFixtures.h"

namespace {

using TrunRead = fixture::PayloadRead<BoxTRUN>;

void ExpectEntry(const TrunEntry& entry, std::uint32_t duration, std::uint32_t size,
                 std::uint32_t flags, std::uint32_t compositionOffset) {
  EXPECT_EQ(entry.duration, duration);
  EXPECT_EQ(entry.size, size);
  EXPECT_EQ(entry.flags, flags);
  EXPECT_EQ(entry.composition_offset, compositionOffset);
}

/// A run at the end of a file, read from there.
struct RunInFile {
  RunInFile(const Bytes& payload, long long size) : file(payload) {
    reader.SetFilePath(file.wide().c_str());
    ok = run.ReadData(&reader, size, nullptr);
  }
  TempFile file;
  Mp4StreamReader reader;
  BoxTRUN run;
  bool ok = false;
};

TEST(BoxTRUN, IsZeroAfterConstruction) {
  const BoxTRUN box;
  EXPECT_EQ(box.version, 0);
  EXPECT_EQ(box.tr_flags, 0u);
  EXPECT_EQ(box.sample_count, 0u);
  EXPECT_EQ(box.data_offset, 0u);
  EXPECT_EQ(box.first_sample_flags, 0u);
  EXPECT_EQ(box.entries, nullptr);
}

TEST(BoxTRUN, ReadsOffsetDurationsAndSizes) {
  TrunRead trun(fixture::Trun(0x000301, 3, {0xFFFFFFF8, 10, 100, 20, 200, 30, 300}));
  ASSERT_TRUE(trun.ok);
  EXPECT_EQ(trun.read.sample_count, 3u);
  EXPECT_EQ(trun.read.data_offset, 0xFFFFFFF8u);
  EXPECT_EQ(trun.read.first_sample_flags, 0u);
  ASSERT_NE(trun.read.entries, nullptr);
  ExpectEntry(trun.read.entries[0], 10, 100, 0, 0);
  ExpectEntry(trun.read.entries[1], 20, 200, 0, 0);
  ExpectEntry(trun.read.entries[2], 30, 300, 0, 0);
  EXPECT_EQ(trun.position, 36);  // 12 header bytes and 24 sample bytes
}

TEST(BoxTRUN, ReadsAllFieldsInOrder) {
  TrunRead trun(FullBox("trun", 1, 0x000F05,
                        fixture::Be32s({2, 7, 0x02000000, 1, 2, 3, 4, 5, 6, 0x10000, 8})));
  ASSERT_TRUE(trun.ok);
  EXPECT_EQ(trun.read.version, 1);
  EXPECT_EQ(trun.read.tr_flags, 0x000F05u);
  EXPECT_EQ(trun.read.data_offset, 7u);
  EXPECT_EQ(trun.read.first_sample_flags, 0x02000000u);
  ExpectEntry(trun.read.entries[0], 1, 2, 3, 4);
  ExpectEntry(trun.read.entries[1], 5, 6, 0x10000, 8);
  EXPECT_EQ(trun.position, 48);
}

TEST(BoxTRUN, EachBitStandsForItsField) {
  ExpectEntry(TrunRead(fixture::Trun(0x100, 1, {9})).read.entries[0], 9, 0, 0, 0);
  ExpectEntry(TrunRead(fixture::Trun(0x200, 1, {9})).read.entries[0], 0, 9, 0, 0);
  ExpectEntry(TrunRead(fixture::Trun(0x400, 1, {9})).read.entries[0], 0, 0, 9, 0);
  ExpectEntry(TrunRead(fixture::Trun(0x800, 1, {9})).read.entries[0], 0, 0, 0, 9);
}

TEST(BoxTRUN, ReadsFirstSampleFlagsWithoutAnOffset) {
  TrunRead trun(fixture::Trun(0x000204, 1, {0x10000, 55}));
  EXPECT_EQ(trun.read.data_offset, 0u);
  EXPECT_EQ(trun.read.first_sample_flags, 0x10000u);
  ExpectEntry(trun.read.entries[0], 0, 55, 0, 0);
}

TEST(BoxTRUN, ReadsMoreEntriesThanFitOneChunk) {
  // 12-byte entries do not divide a power of two, so they meet every boundary.
  fixture::Words words;
  for (std::uint32_t i = 0; i < 3000; ++i) words.push_back(i * 5 + 1);
  TrunRead trun(fixture::Trun(0x000700, 1000, words));
  ASSERT_TRUE(trun.ok);
  for (std::uint32_t i = 0; i < 1000; ++i) {
    ExpectEntry(trun.read.entries[i], i * 15 + 1, i * 15 + 6, i * 15 + 11, 0);
  }
  EXPECT_EQ(trun.position, 12008);
}

TEST(BoxTRUN, WithoutSamplesMakesNoEntries) {
  TrunRead trun(fixture::Trun(0x000301, 0, {4, 5, 6}));
  EXPECT_TRUE(trun.ok);
  EXPECT_EQ(trun.read.entries, nullptr);
  EXPECT_EQ(trun.read.data_offset, 4u);
  EXPECT_EQ(trun.position, 20);
}

TEST(BoxTRUN, WithoutFieldsHasZeroEntries) {
  TrunRead trun(fixture::Trun(0, 5, {1, 2}));
  ASSERT_TRUE(trun.ok);
  ASSERT_NE(trun.read.entries, nullptr);
  ExpectEntry(trun.read.entries[0], 0, 0, 0, 0);
  ExpectEntry(trun.read.entries[4], 0, 0, 0, 0);
  EXPECT_EQ(trun.read.absentEntries, 5u);
  EXPECT_EQ(trun.position, 16);
}

TEST(BoxTRUN, ReadsOnBehindItsPayloadAndStepsBack) {
  const Bytes bytes = Bytes().Be32(0x200).Be32(3) + fixture::Be32s({11, 22, 33, 44});
  mmBufReader reader(bytes.data(), bytes.size());
  BoxTRUN run;
  ASSERT_TRUE(run.ReadData(&reader, 12, nullptr));  // room for one size
  ExpectEntry(run.entries[0], 0, 11, 0, 0);
  ExpectEntry(run.entries[1], 0, 22, 0, 0);
  ExpectEntry(run.entries[2], 0, 33, 0, 0);
  EXPECT_EQ(run.absentEntries, 0u);
  EXPECT_EQ(reader.GetPos(), 12);
}

TEST(BoxTRUN, EntriesWithoutBytesAreZero) {
  const Bytes bytes = Bytes().Be32(0x200).Be32(300) + fixture::Be32s({11, 22});
  mmBufReader reader(bytes.data(), bytes.size());
  BoxTRUN run;
  ASSERT_TRUE(run.ReadData(&reader, 16, nullptr));
  ExpectEntry(run.entries[1], 0, 22, 0, 0);
  ExpectEntry(run.entries[2], 0, 0, 0, 0);
  ExpectEntry(run.entries[299], 0, 0, 0, 0);
  EXPECT_EQ(run.absentEntries, 298u);
  EXPECT_EQ(reader.GetPos(), 16);  // memory advanced by all 1200 bytes, then stepped back
}

TEST(BoxTRUN, ReadingStopsAtAFilesEnd) {
  RunInFile at(Bytes().Be32(0x200).Be32(300) + fixture::Be32s({11, 22}), 16);
  ASSERT_TRUE(at.ok);
  ExpectEntry(at.run.entries[1], 0, 22, 0, 0);
  EXPECT_EQ(at.run.absentEntries, 298u);
  // From the end at 16 the final skip goes back by 1192, which is before the start: it fails.
  EXPECT_EQ(at.reader.GetPos(), 16);
}

TEST(BoxTRUN, TheFinalSkipBehindAFilesEndIsCountedFromTheEnd) {
  RunInFile at(Bytes().Be32(0x200).Be32(4) + fixture::Be32s({11, 22}), 16);
  ASSERT_TRUE(at.ok);
  EXPECT_EQ(at.reader.GetPos(), 8);  // 16 counted less 24 read, from the end at 16
}

TEST(BoxTRUN, AnEntryCutOffByTheEndKeepsTheBytesThatExist) {
  const Bytes bytes =
      Bytes().Be32(0x300).Be32(2) + fixture::Be32s({1, 2, 3}) + Bytes().Be16(0xABCD);
  RunInFile at(bytes, 24);
  ASSERT_TRUE(at.ok);
  ExpectEntry(at.run.entries[0], 1, 2, 0, 0);
  ExpectEntry(at.run.entries[1], 3, 0xABCD0000, 0, 0);
  EXPECT_EQ(at.run.absentEntries, 0u);
  EXPECT_EQ(at.reader.GetPos(), 22);
}

TEST(BoxTRUN, TheMostSamplesCostNothingWithoutBytes) {
  TrunRead trun(fixture::Trun(0x000F00, 1u << 26));
  ASSERT_TRUE(trun.ok);
  EXPECT_EQ(trun.read.absentEntries, 1u << 26);
  ExpectEntry(trun.read.entries[(1u << 26) - 1], 0, 0, 0, 0);
  EXPECT_EQ(trun.position, 8);
}

TEST(BoxTRUN, MoreSamplesThanMemoryCouldServeFail) {
  TrunRead one(fixture::Trun(0, (1u << 26) + 1, {1}));
  EXPECT_FALSE(one.ok);
  EXPECT_EQ(one.read.entries, nullptr);
  EXPECT_EQ(one.position, 8);  // no final skip
  EXPECT_FALSE(TrunRead(fixture::Trun(0x000F00, 0xFFFFFFFF)).ok);
}

TEST(BoxTRUN, StepsBackFromAShortPayload) {
  const Bytes bytes = Bytes().Be32(0x5).Be32(0).Be32(6).Be32(7);
  mmBufReader reader(bytes.data(), bytes.size());
  BoxTRUN run;
  EXPECT_TRUE(run.ReadData(&reader, 2, nullptr));
  EXPECT_EQ(run.data_offset, 6u);
  EXPECT_EQ(run.first_sample_flags, 7u);
  EXPECT_EQ(reader.GetPos(), 2);
}

TEST(BoxTRUN, FailsWithoutReaderOrWithNegativeSize) {
  BoxTRUN box;
  mmBufReader reader;
  EXPECT_FALSE(box.ReadData(nullptr, 8, nullptr));
  EXPECT_FALSE(box.ReadData(&reader, -1, nullptr));
}

TEST(BoxTRUN, AnArrayOfTheHostsOwnMayReplaceTheEntries) {
  TrunRead trun(fixture::Trun(0, 1000));
  trun.read.entries = std::make_unique<TrunEntry[]>(2);
  trun.read.entries.reset(new TrunEntry[3]());
  ExpectEntry(trun.read.entries[2], 0, 0, 0, 0);
}

// An opening that only judges.

struct JudgedRun {
  JudgedRun(const Bytes& box, bool unread, std::int64_t memoryLeft = mp4::limits::kSpareMemory)
      : scan(static_cast<std::int64_t>(box.size())) {
    scan.tablesUnread = unread;
    const std::int64_t all =
        scan.sourceSize * mp4::limits::kMemoryPerSourceByte + mp4::limits::kSpareMemory;
    scan.TakeMemory(all - memoryLeft);
    trun = std::make_unique<TrunRead>(box, &scan);
  }
  mp4::ScanControl scan;
  std::unique_ptr<TrunRead> trun;
};

TEST(BoxTRUN, JudgingPassesTheEntriesOver) {
  const JudgedRun judged(fixture::Trun(0x000301, 2, {9, 1, 2, 3, 4, 5}), true);
  EXPECT_TRUE(judged.trun->ok);
  EXPECT_EQ(judged.trun->read.sample_count, 2u);
  EXPECT_EQ(judged.trun->read.data_offset, 9u);
  EXPECT_EQ(judged.trun->read.entries, nullptr);
  EXPECT_EQ(judged.trun->position, 32);
}

TEST(BoxTRUN, JudgingStandsWhereReadingWould) {
  for (const bool unread : {false, true}) {
    const TempFile file(Bytes().Be32(0x200).Be32(4) + fixture::Be32s({11, 22}));
    Mp4StreamReader reader;
    ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
    mp4::ScanControl scan(16);
    scan.tablesUnread = unread;
    reader.AttachScan(&scan);
    BoxTRUN run;
    EXPECT_TRUE(run.ReadData(&reader, 16, nullptr));
    EXPECT_EQ(reader.GetPos(), 8);
  }
}

TEST(BoxTRUN, EntriesAreChargedSixteenBytesEach) {
  const Bytes box = fixture::Trun(0x000200, 4, {1, 2, 3, 4});
  for (const bool unread : {false, true}) {
    EXPECT_TRUE(JudgedRun(box, unread, 64).trun->ok);
    EXPECT_FALSE(JudgedRun(box, unread, 63).trun->ok);
  }
}

TEST(BoxTRUN, FewEntriesWithoutBytesAreChargedToo) {
  for (const bool unread : {false, true}) {
    EXPECT_TRUE(JudgedRun(fixture::Trun(0, 63), unread, 63 * 16).trun->ok);
    EXPECT_FALSE(JudgedRun(fixture::Trun(0, 63), unread, 63 * 16 - 1).trun->ok);
  }
}

TEST(BoxTRUN, ManyEntriesWithoutBytesAreChargedAMappingAndAByteAPage) {
  constexpr std::int64_t kCost = 1024 + (1 << 18);
  for (const bool unread : {false, true}) {
    EXPECT_TRUE(JudgedRun(fixture::Trun(0, 1u << 26), unread, kCost).trun->ok);
    EXPECT_FALSE(JudgedRun(fixture::Trun(0, 1u << 26), unread, kCost - 1).trun->ok);
  }
}

// The one entry that exists takes a whole page of the mapping.
TEST(BoxTRUN, EntriesInFrontOfManyWithoutBytesAreChargedInPages) {
  const Bytes box = fixture::Trun(0x000200, 65, {1});
  for (const bool unread : {false, true}) {
    EXPECT_TRUE(JudgedRun(box, unread, 4096 + 1024).trun->ok);
    EXPECT_FALSE(JudgedRun(box, unread, 4096 + 1023).trun->ok);
  }
}

TEST(BoxTRUN, EntryBytesAreChargedToTheOpening) {
  const Bytes box = fixture::Trun(0x000200, 4, {1, 2, 3, 4});
  for (const bool unread : {false, true}) {
    for (const std::int64_t left : {15, 16}) {
      const auto size = static_cast<std::int64_t>(box.size());
      mp4::ScanControl scan(size);
      scan.tablesUnread = unread;
      scan.TakeBytes(size * mp4::limits::kBytesReadPerSourceByte + mp4::limits::kSpareBytesRead -
                     left);
      EXPECT_EQ(TrunRead(box, &scan).ok, left == 16);
    }
  }
}

}  // namespace
