#include <gtest/gtest.h>

#include "io/CallbackSource.h"
#include "io/FourCC.h"
#include "samples/TableBytes.h"
#include "tests/SourceFixtures.h"
#include "tests/TreeFixtures.h"
#include "tests/samples/SampleFixtures.h"

namespace {

using namespace fixture;

/// Rows of a box at the top level whose count stands behind version and flags.
struct Rows {
  Rows(const Bytes& box, std::size_t width) : over(box) {
    count =
        mp4::LoadRows(&over.tree, over.tree.FirstChild(mp4::kRootBox), 4, width, &bytes, &problems);
  }

  TreeOver over;
  mp4::TableBytes bytes;
  mp4::SampleProblems problems;
  std::size_t count = 0;
};

}  // namespace

TEST(TableBytes, OfMemoryStayInPlace) {
  const Bytes file = Stco({1, 2});
  mp4::MemorySource memory(file.data(), file.size());
  mp4::CachedSource cache(&memory);
  mp4::BoxTree tree(&cache);
  mp4::SampleProblems problems;
  mp4::TableBytes bytes;
  bytes.Load(&tree, tree.FirstChild(mp4::kRootBox), 8, 100, &problems);
  EXPECT_EQ(file.data() + 16, bytes.data());
  EXPECT_EQ(8U, bytes.size()) << "to the end of the box";
}

TEST(TableBytes, OfAnotherSourceAreReadOnce) {
  Caller caller{Stco({1, 2})};
  mp4::CallbackSource source(Caller::Read, Caller::Size, &caller);
  mp4::CachedSource cache(&source);
  mp4::BoxTree tree(&cache);
  mp4::SampleProblems problems;
  mp4::TableBytes bytes;
  bytes.Load(&tree, tree.FirstChild(mp4::kRootBox), 8, 8, &problems);
  caller.bytes = Bytes().Fill(24);
  ASSERT_EQ(8U, bytes.size());
  EXPECT_EQ(2U, mp4::LoadBe32(bytes.data() + 4)) << "a copy";
}

TEST(TableBytes, BehindTheEndThereAreNone) {
  TreeOver over(Stco({1}));
  mp4::SampleProblems problems;
  mp4::TableBytes bytes;
  bytes.Load(&over.tree, over.At("stco"), 12, 1, &problems);
  EXPECT_EQ(0U, bytes.size());
  bytes.Load(&over.tree, over.At("stco"), 0, 0, &problems);
  EXPECT_EQ(0U, bytes.size());
  EXPECT_TRUE(problems.Kept().empty());
}

TEST(TableBytes, OfASourceThatFailsAreThoseItDelivered) {
  Caller caller{Box("stco", Bytes().Fill(100000, 7))};
  caller.most = 10000;
  caller.failFrom = 70000;
  mp4::CallbackSource source(Caller::Read, Caller::Size, &caller);
  mp4::CachedSource cache(&source);
  mp4::BoxTree tree(&cache);
  mp4::SampleProblems problems;
  mp4::TableBytes bytes;
  bytes.Load(&tree, tree.FirstChild(mp4::kRootBox), 0, 100000, &problems);
  EXPECT_LT(bytes.size(), 100000U);
  EXPECT_TRUE(Has(problems, mp4::SampleFault::kNotDelivered, mp4::FourCC("stco")));
}

TEST(TableBytes, RowsAreThoseThatExist) {
  const Rows all(Stco({1, 2, 3}), 4);
  EXPECT_EQ(3U, all.count);
  EXPECT_TRUE(all.problems.Kept().empty());
  const Rows fewer(FullBox("stco", 0, 0, Bytes().Be32(3).Be32(1).Be32(2).Fill(3)), 4);
  EXPECT_EQ(2U, fewer.count);
  ASSERT_EQ(1U, fewer.problems.Kept().size());
  EXPECT_EQ(3U, fewer.problems.Kept()[0].says);
  EXPECT_EQ(2U, fewer.problems.Kept()[0].holds);
  const Rows more(FullBox("stco", 0, 0, Bytes().Be32(1).Be32(1).Be32(2)), 4);
  EXPECT_EQ(1U, more.count);
  EXPECT_TRUE(more.problems.Kept().empty()) << "what is behind them is no row";
}

TEST(TableBytes, WithoutACountThereAreNoRows) {
  const Rows cut(Box("stco", Bytes().Fill(7)), 4);
  EXPECT_EQ(0U, cut.count);
  EXPECT_TRUE(Has(cut.problems, mp4::SampleFault::kCut, mp4::FourCC("stco")));
}

TEST(TableBytes, SumsAreOfAnyCount) {
  Bytes numbers;
  for (const std::uint32_t n : {0xFFFFFFFFU, 0xFFFFFFFFU, 5U, 0x80000000U}) numbers.Be32(n);
  EXPECT_EQ(0U, mp4::SumOfBe32(numbers.data(), 0));
  EXPECT_EQ(0xFFFFFFFFU, mp4::SumOfBe32(numbers.data(), 1));
  EXPECT_EQ(0x1FFFFFFFEU, mp4::SumOfBe32(numbers.data(), 2));
  EXPECT_EQ(0x200000003U, mp4::SumOfBe32(numbers.data(), 3));
  EXPECT_EQ(0x280000003U, mp4::SumOfBe32(numbers.data(), 4));
}
