#include <gtest/gtest.h>

#include "boxes/track/EditList.h"
#include "io/Limits.h"
#include "io/ScanControl.h"
#include "io/mmBufReader.h"
#include "tests/Bytes.h"

namespace {

/// The payload of an edit box: an edit list that declares `count` edits and holds these.
Bytes Payload(std::uint32_t count, const std::vector<tagElstItem>& edits) {
  Bytes list = Bytes().Be32(count);
  for (const tagElstItem& edit : edits) {
    list.Be32(static_cast<std::uint32_t>(edit.segmentDuration));
    list.Be32(static_cast<std::uint32_t>(edit.mediaTime));
    list.Be32(edit.mediaRate);
  }
  return FullBox("elst", 0, 0, list);
}

struct Read {
  explicit Read(const Bytes& payload, mp4::ScanControl* scan = nullptr) {
    mmBufReader reader(payload.data(), payload.size());
    reader.AttachScan(scan);
    ok = mp4::ReadEditList(&reader, &edits);
    position = reader.GetPos();
  }
  std::vector<tagElstItem> edits;
  bool ok = false;
  long long position = 0;
};

}  // namespace

TEST(EditList, AppendsEachEditWithItsThreeNumbers) {
  const Bytes payload = Payload(2, {{100, -1, 0x10000}, {-5, 7, 0xFFFFFFFF}});
  Read read(payload);
  ASSERT_TRUE(read.ok);
  ASSERT_EQ(read.edits.size(), 2u);
  EXPECT_EQ(read.edits[0].segmentDuration, 100);
  EXPECT_EQ(read.edits[0].mediaTime, -1);
  EXPECT_EQ(read.edits[0].mediaRate, 0x10000u);
  EXPECT_EQ(read.edits[1].segmentDuration, -5);
  EXPECT_EQ(read.edits[1].mediaTime, 7);
  EXPECT_EQ(read.edits[1].mediaRate, 0xFFFFFFFFu);
  EXPECT_EQ(read.position, static_cast<long long>(payload.size()));
}

TEST(EditList, CountOfZeroOrBelowIsNone) {
  for (const std::uint32_t count : {0u, 0x80000000u, 0xFFFFFFFFu}) {
    Read read(Payload(count, {{100, 1, 0}}));
    EXPECT_TRUE(read.ok);
    EXPECT_TRUE(read.edits.empty()) << count;
    EXPECT_EQ(read.position, 16) << count;
  }
}

TEST(EditList, OneEditIsAList) { EXPECT_EQ(Read(Payload(1, {{100, 1, 0}})).edits.size(), 1u); }

TEST(EditList, OnlyWholeEditsThatExistAreKept) {
  Read read(Payload(3, {{100, 1, 0}, {200, 2, 0}}).Fill(11, 7));
  EXPECT_TRUE(read.ok);
  EXPECT_EQ(read.edits.size(), 2u);
  EXPECT_EQ(read.position, 16 + 3 * 12);
}

// They are read 256 at a time.
TEST(EditList, LongListsAreReadWhole) {
  for (const int count : {255, 256, 257, 511, 512, 513}) {
    std::vector<tagElstItem> edits;
    for (int i = 0; i < count; ++i) edits.push_back({i + 1, 2 * i, 0});
    Read read(Payload(static_cast<std::uint32_t>(count), edits).Fill(50, 9));
    ASSERT_EQ(read.edits.size(), edits.size());
    for (std::size_t i = 0; i < edits.size(); ++i) {
      ASSERT_EQ(read.edits[i].segmentDuration, edits[i].segmentDuration) << i;
      ASSERT_EQ(read.edits[i].mediaTime, edits[i].mediaTime) << i;
    }
    EXPECT_EQ(read.position, 16 + 12 * count);
  }
}

TEST(EditList, NeitherTypeNorSizeNorVersionIsLookedAt) {
  const Bytes other = SizedBox(7, "free", Bytes().Be32(0x01000000).Be32(1).Be32(5).Be32(6).Be32(7));
  EXPECT_EQ(Read(other).edits.size(), 1u);
}

TEST(EditList, JudgingPassesThemOver) {
  const Bytes payload = Payload(2, {{100, 1, 0}, {200, 2, 0}});
  mp4::ScanControl scan(static_cast<std::int64_t>(payload.size()));
  scan.tablesUnread = true;
  Read read(payload, &scan);
  EXPECT_TRUE(read.ok);
  EXPECT_TRUE(read.edits.empty());
  EXPECT_EQ(read.position, static_cast<long long>(payload.size()));
}

// 24 bytes are read, and each edit is held twice.
TEST(EditList, AccountMayRefuse) {
  const Bytes payload = Payload(2, {{100, 1, 0}, {200, 2, 0}});
  const auto size = static_cast<std::int64_t>(payload.size());
  const std::int64_t bytes = mp4::limits::kSpareBytesRead + 4 * size;
  const std::int64_t memory = mp4::limits::kSpareMemory + 6 * size;
  for (const bool enough : {true, false}) {
    mp4::ScanControl byBytes(size);
    ASSERT_TRUE(byBytes.TakeBytes(bytes - (enough ? 24 : 23)));
    EXPECT_EQ(Read(payload, &byBytes).ok, enough);
    mp4::ScanControl byMemory(size);
    ASSERT_TRUE(byMemory.TakeMemory(memory - (enough ? 48 : 47)));
    const Read read(payload, &byMemory);
    EXPECT_EQ(read.ok, enough);
    EXPECT_EQ(read.edits.size(), enough ? 2u : 0u);
    EXPECT_EQ(read.position, size) << "passed over all the same";
  }
}
