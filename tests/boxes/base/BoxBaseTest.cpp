#include <gtest/gtest.h>

#include <new>
#include <type_traits>
#include <vector>

#include "boxes/base/BoxBase.h"
#include "boxes/base/BoxReading.h"
#include "io/FourCC.h"
#include "io/Limits.h"
#include "tests/Bytes.h"
#include "tests/Fixtures.h"

namespace {

struct Seen {
  std::uint32_t type;
  long long size;
  long long at;  ///< reader position at the payload
};

/// Walks a container and notes its children; "good" is read as a known child that takes its
/// payload, "fail" as one that fails, everything else is unknown.
struct Walk {
  explicit Walk(const Bytes& bytes) : reader(bytes.data(), bytes.size()) {}

  void Run(long long size, mp4::UnknownChild unknown = mp4::UnknownChild::kSkip) {
    end = mp4::WalkChildren(&reader, size, 0, unknown, [this](const mp4::ChildHeader& child) {
      seen.push_back({child.type, child.size, reader.GetPos()});
      if (child.type == mp4::FourCC("fail")) return mp4::Child::kFailed;
      if (child.type != mp4::FourCC("good")) return mp4::Child::kUnknown;
      reader.Skip(child.payload);
      return mp4::Child::kRead;
    });
  }

  mmBufReader reader;
  std::vector<Seen> seen;
  mp4::WalkEnd end{};
};

}  // namespace

TEST(BoxBase, ReadsPastItsPayloadAndSucceeds) {
  const Bytes bytes = Bytes().Fill(10);
  mmBufReader reader(bytes.data(), bytes.size());
  BoxBase box;
  EXPECT_TRUE(box.ReadData(&reader, 7, nullptr));
  EXPECT_EQ(reader.GetPos(), 7);
}

TEST(BoxBase, NegativePayloadStepsBack) {
  const Bytes bytes = Bytes().Fill(10);
  mmBufReader reader(bytes.data(), bytes.size());
  reader.SetPos(8);
  BoxBase box;
  EXPECT_TRUE(box.ReadData(&reader, -3, nullptr));
  EXPECT_EQ(reader.GetPos(), 5);
}

TEST(BoxBase, NullReaderFails) {
  BoxBase box;
  EXPECT_FALSE(box.ReadData(nullptr, 7, nullptr));
}

TEST(BoxBase, SampleIsAPlainRecordInTheAgreedOrder) {
  using Sample = BoxBase::SAMPLE;
  static_assert(std::is_trivial_v<Sample> && std::is_standard_layout_v<Sample>);
  static_assert(std::is_same_v<decltype(Sample::isVideo), std::uint8_t>);
  static_assert(std::is_same_v<decltype(Sample::offset), std::uint64_t>);
  static_assert(std::is_same_v<decltype(Sample::time), std::int64_t>);
  const std::vector<std::size_t> offsets = {offsetof(Sample, isVideo),   offsetof(Sample, format),
                                            offsetof(Sample, data),      offsetof(Sample, dataSize),
                                            offsetof(Sample, size),      offsetof(Sample, duration),
                                            offsetof(Sample, timescale), offsetof(Sample, trackId),
                                            offsetof(Sample, offset),    offsetof(Sample, time)};
  for (std::size_t i = 1; i < offsets.size(); ++i) EXPECT_LT(offsets[i - 1], offsets[i]);
}

TEST(Containers, UnknownChildrenAreSkipped) {
  Walk walk(Box("what", Bytes{1, 2, 3}) + Box("good", Bytes{4}));
  walk.Run(20);
  ASSERT_EQ(walk.seen.size(), 2u);
  EXPECT_EQ(walk.seen[1].type, mp4::FourCC("good"));
  EXPECT_EQ(walk.seen[1].at, 19);
  EXPECT_FALSE(walk.end.failed);
  EXPECT_EQ(walk.end.consumed, 20);
  EXPECT_EQ(walk.reader.GetPos(), 20);
}

TEST(Containers, UnknownChildrenMayBeEntered) {
  // "what" holds a "good": the second header is read from inside it.
  Walk walk(Box("what", Box("good", Bytes{1, 2, 3, 4})) + Box("good"));
  walk.Run(28, mp4::UnknownChild::kEnter);
  ASSERT_EQ(walk.seen.size(), 2u);
  EXPECT_EQ(walk.seen[1].type, mp4::FourCC("good"));
  EXPECT_EQ(walk.seen[1].at, 16);
  EXPECT_EQ(walk.end.consumed, 32);
}

TEST(Containers, ChildSizeZeroTakesTheRest) {
  Walk walk(Box("good", Bytes{1}) + SizedBox(0, "what", Bytes().Fill(12)));
  walk.Run(29);
  ASSERT_EQ(walk.seen.size(), 2u);
  EXPECT_EQ(walk.seen[1].size, 20);
  EXPECT_EQ(walk.reader.GetPos(), 29);
}

TEST(Containers, ChildSizeOneIsNoLargeSize) {
  // The payload is -7: the reader steps back into the header and goes on from its second byte.
  Walk walk(SizedBox(1, "what") + Bytes().Fill(8));
  walk.Run(2);
  ASSERT_EQ(walk.seen.size(), 2u);
  EXPECT_EQ(walk.seen[0].size, 1);
  EXPECT_EQ(walk.seen[1].at, 9);
}

TEST(Containers, SizesAreUnsigned) {
  Walk walk(SizedBox(0xFFFFFFFF, "what"));
  walk.Run(8);
  EXPECT_EQ(walk.seen.at(0).size, 0xFFFFFFFFLL);
  EXPECT_EQ(walk.end.consumed, 0xFFFFFFFFLL);
}

TEST(Containers, FailedChildEndsTheLoopAndIsCounted) {
  Walk walk(Box("good") + Box("fail", Bytes{1}) + Box("good"));
  walk.Run(25);
  EXPECT_EQ(walk.seen.size(), 2u);
  EXPECT_TRUE(walk.end.failed);
  EXPECT_EQ(walk.end.consumed, 17);
}

TEST(Containers, MemoryThatRunsOutFailsTheChild) {
  const Bytes bytes = Box("good");
  mmBufReader reader(bytes.data(), bytes.size());
  const mp4::WalkEnd end =
      mp4::WalkChildren(&reader, 8, 0, mp4::UnknownChild::kSkip,
                        [](const mp4::ChildHeader&) -> mp4::Child { throw std::bad_alloc(); });
  EXPECT_TRUE(end.failed);
}

TEST(Containers, SpentAccountEndsTheLoop) {
  // A source of 8 bytes allows one header and the spare ones.
  mp4::ScanControl scan(8);
  for (std::int64_t i = 0; i < mp4::limits::kSpareHeaders; ++i) ASSERT_TRUE(scan.TakeHeader());
  Walk walk(Box("good") + Box("good"));
  walk.reader.AttachScan(&scan);
  walk.Run(16);
  EXPECT_EQ(walk.seen.size(), 1u);
  EXPECT_TRUE(walk.end.failed);
}

TEST(ScanControl, InnerSourceSharesTheOuterAccount) {
  mp4::ScanControl outer(0);
  mp4::ScanControl inner(512, &outer);
  for (std::int64_t i = 0; i < mp4::limits::kSpareHeaders + 2; ++i) {
    ASSERT_TRUE((i % 2 == 0 ? inner : outer).TakeHeader());
  }
  EXPECT_FALSE(outer.TakeHeader());
  EXPECT_FALSE(inner.TakeHeader());
}

TEST(ScanControl, InnerSourceAddsAHeaderPer256BytesWhereAnOuterOneAddsOnePer8) {
  mp4::ScanControl outer(2560);
  mp4::ScanControl inner(2560, &outer);
  mp4::ScanControl innermost(255, &inner);
  for (std::int64_t i = 0; i < mp4::limits::kSpareHeaders + 320 + 10; ++i) {
    ASSERT_TRUE(innermost.TakeHeader());
  }
  EXPECT_FALSE(innermost.TakeHeader());
}

TEST(ScanControl, InflatedBytesAreCountedForTheWholeOpening) {
  mp4::ScanControl outer(0);
  mp4::ScanControl inner(1000, &outer);
  EXPECT_TRUE(inner.TakeInflated(mp4::limits::kInflatedTotal));
  EXPECT_FALSE(inner.TakeInflated(1));
  EXPECT_FALSE(outer.TakeInflated(1));
}

TEST(ScanControl, JudgingIsInherited) {
  mp4::ScanControl outer(0);
  EXPECT_FALSE(mp4::ScanControl(0, &outer).tablesUnread);
  outer.tablesUnread = true;
  EXPECT_TRUE(mp4::ScanControl(0, &outer).tablesUnread);
}

TEST(ScanControl, LargestSourceDoesNotOverflow) {
  mp4::ScanControl scan(INT64_MAX);
  EXPECT_TRUE(scan.TakeBytes(mp4::limits::kSpareBytesRead));
}
