#include <gtest/gtest.h>

#include "io/FourCC.h"
#include "samples/SizeRows.h"
#include "tests/TreeFixtures.h"
#include "tests/samples/SampleFixtures.h"

namespace {

using namespace fixture;

/// A box of sizes at the top level, read.
struct Sizes {
  explicit Sizes(const Bytes& box) : over(box) {
    rows.Load(&over.tree, over.tree.FirstChild(mp4::kRootBox), &problems);
  }
  Numbers All() const {
    Numbers all;
    for (std::uint64_t i = 0; i < rows.Count(); ++i) all.push_back(rows.At(i));
    return all;
  }

  TreeOver over;
  mp4::SampleProblems problems;
  mp4::SizeRows rows;
};

Bytes Stz2(unsigned width, std::uint32_t count, const Bytes& sizes) {
  return FullBox("stz2", 0, 0, Bytes().Be24(0).Byte(width).Be32(count).Append(sizes));
}

}  // namespace

TEST(SizeRows, AConstantSizeNeedsNoRows) {
  Sizes sizes(StszConstant(7, 0xFFFFFFFF));
  EXPECT_EQ(0xFFFFFFFFU, sizes.rows.Count());
  EXPECT_EQ(7U, sizes.rows.At(0xFFFFFFFE));
  EXPECT_EQ(7U * 0xFFFFFFFFULL, sizes.rows.Sum(0, 0xFFFFFFFF));
  EXPECT_TRUE(sizes.problems.Kept().empty());
}

TEST(SizeRows, SizesOfEveryWidthAreRead) {
  EXPECT_EQ((Numbers{1, 0xFFFFFFFF}), Sizes(Stsz({1, 0xFFFFFFFF})).All());
  EXPECT_EQ((Numbers{0x102, 0xFFFF}), Sizes(Stz2(16, 2, {1, 2, 0xFF, 0xFF})).All());
  EXPECT_EQ((Numbers{1, 255}), Sizes(Stz2(8, 2, {1, 255})).All());
  EXPECT_EQ((Numbers{1, 15, 7}), Sizes(Stz2(4, 3, {0x1F, 0x7E})).All()) << "the high ones first";
}

TEST(SizeRows, AnotherWidthIsNone) {
  Sizes sizes(Stz2(12, 2, {1, 2, 3}));
  EXPECT_EQ(0U, sizes.rows.Count());
  EXPECT_TRUE(Has(sizes.problems, mp4::SampleFault::kFieldSize, mp4::FourCC("stz2")));
}

TEST(SizeRows, ACountBeyondTheBytesIsCut) {
  for (const Bytes& box : {FullBox("stsz", 0, 0, Bytes().Be32(0).Be32(3).Be32(1).Be32(2).Be16(9)),
                           Stz2(16, 3, {0, 1, 0, 2, 9}), Stz2(8, 3, {1, 2}), Stz2(4, 3, {0x12})}) {
    Sizes sizes(box);
    EXPECT_EQ((Numbers{1, 2}), sizes.All());
    ASSERT_EQ(1U, sizes.problems.Kept().size());
    EXPECT_EQ(mp4::SampleFault::kFewerRows, sizes.problems.Kept()[0].fault);
    EXPECT_EQ(3U, sizes.problems.Kept()[0].says);
    EXPECT_EQ(2U, sizes.problems.Kept()[0].holds);
  }
}

TEST(SizeRows, ABoxWithoutItsFieldsHasNoSizes) {
  Sizes sizes(Box("stsz", Bytes().Fill(11)));
  EXPECT_EQ(0U, sizes.rows.Count());
  EXPECT_TRUE(Has(sizes.problems, mp4::SampleFault::kCut, mp4::FourCC("stsz")));
}

// Long stretches are summed by marks, of which the ends need not be.
TEST(SizeRows, SumsAreThoseOfTheSizes) {
  Words words;
  Bytes bytes;
  for (std::uint32_t i = 0; i < 500; ++i) {
    words.push_back(i * 8388593U);
    bytes.Byte(i & 255);
  }
  Sizes wide(Stsz(words));
  Sizes narrow(Stz2(8, 500, bytes));
  for (const std::uint64_t from : {0, 1, 63, 64, 65, 200}) {
    for (const std::uint64_t to : {200, 320, 321, 447, 448, 499, 500}) {
      std::uint64_t sum = 0, few = 0;
      for (std::uint64_t i = from; i < to; ++i) {
        sum += words[i];
        few += i & 255;
      }
      EXPECT_EQ(sum, wide.rows.Sum(from, to)) << from << " " << to;
      EXPECT_EQ(few, narrow.rows.Sum(from, to)) << from << " " << to;
    }
  }
}
