#include <gtest/gtest.h>

#include "samples/SampleColumns.h"
#include "tests/samples/SampleFixtures.h"

namespace {

using namespace fixture;
using mp4::SampleColumns;

/// Flags of the samples of a movie.
std::vector<std::uint8_t> FlagsOf(const TableMovie& movie) {
  OpenMovie open(movie.File());
  std::vector<std::uint8_t> flags(8, 0xAA);
  SampleColumns columns;
  columns.flags = flags.data();
  flags.resize(mp4::FillColumns(&open.Only(), 1, flags.size(), columns));
  return flags;
}

}  // namespace

TEST(SampleColumns, EachHasItsField) {
  TableMovie movie;
  movie.stts = Stts({{4, 100}});
  movie.more = FullBox("ctts", 0, 0, Bytes().Be32(1).Be32(4).Be32(30));
  OpenMovie open(movie.File());
  Numbers offsets(2);
  std::vector<std::uint32_t> sizes(2), durations(2);
  TimeList decoded(2), composed(2);
  SampleColumns columns;
  columns.offsets = offsets.data();
  columns.sizes = sizes.data();
  columns.decodeTimes = decoded.data();
  columns.compositionTimes = composed.data();
  columns.durations = durations.data();
  EXPECT_EQ(2U, mp4::FillColumns(&open.Only(), 2, 2, columns));
  EXPECT_EQ((Numbers{2000, 3000}), offsets);
  EXPECT_EQ((std::vector<std::uint32_t>{20, 30}), sizes);
  EXPECT_EQ((TimeList{100, 200}), decoded);
  EXPECT_EQ((TimeList{130, 230}), composed);
  EXPECT_EQ((std::vector<std::uint32_t>{100, 100}), durations);
}

TEST(SampleColumns, BeginAndEndWithTheSamples) {
  OpenMovie open(TableMovie().File());
  Numbers offsets(5, 7);
  SampleColumns columns;
  columns.offsets = offsets.data();
  EXPECT_EQ(0U, mp4::FillColumns(&open.Only(), 0, 5, columns)) << "numbers begin with 1";
  EXPECT_EQ(0U, mp4::FillColumns(&open.Only(), 5, 5, columns));
  EXPECT_EQ(0U, mp4::FillColumns(&open.Only(), 1, 0, columns));
  EXPECT_EQ(Numbers(5, 7), offsets);
  EXPECT_EQ(2U, mp4::FillColumns(&open.Only(), 3, 5, columns));
  EXPECT_EQ((Numbers{3000, 4000, 7, 7, 7}), offsets);
}

// More than are taken at a time.
TEST(SampleColumns, ThousandsFollowOneAnother) {
  TableMovie movie;
  movie.stsz = StszConstant(1, 3000);
  movie.stts = Stts({{3000, 2}});
  movie.stsc = Stsc({{1, 3000}});
  movie.stco = Stco({100});
  OpenMovie open(movie.File());
  Numbers offsets(3000);
  TimeList decoded(3000);
  SampleColumns columns;
  columns.offsets = offsets.data();
  columns.decodeTimes = decoded.data();
  ASSERT_EQ(3000U, mp4::FillColumns(&open.Only(), 1, 3000, columns));
  for (std::size_t i = 0; i < 3000; ++i) {
    ASSERT_EQ(100 + i, offsets[i]);
    ASSERT_EQ(static_cast<std::int64_t>(2 * i), decoded[i]);
  }
}

TEST(SampleColumns, FlagsSayWhatIsKnown) {
  TableMovie movie;
  movie.more = Stss({2}) + Counted("stps", {3});
  EXPECT_EQ((std::vector<std::uint8_t>{0, SampleColumns::kSync, SampleColumns::kPartialSync, 0}),
            FlagsOf(movie));
  movie.more = {};
  movie.stco = Stco({1000, 2000, 3000, 4000000});
  constexpr std::uint8_t kSync = SampleColumns::kSync;
  EXPECT_EQ((std::vector<std::uint8_t>{kSync, kSync, kSync, kSync | SampleColumns::kOutside}),
            FlagsOf(movie));
}

TEST(SampleColumns, FlagsSayWhatIsProtectedOrElsewhere) {
  constexpr std::uint8_t kSync = SampleColumns::kSync;
  TableMovie movie;
  const Bytes sinf = Box("sinf", Box("frma", Bytes().Text("avc1")) +
                                     FullBox("schm", 0, 0, Bytes().Text("cenc").Be32(0x10000)));
  movie.stsd = Stsd(VisualEntry("encv", sinf));
  EXPECT_EQ(std::vector<std::uint8_t>(4, kSync | SampleColumns::kProtected), FlagsOf(movie));
  movie.stsd = Stsd(VisualEntry("zavc"));
  EXPECT_EQ(std::vector<std::uint8_t>(4, kSync | SampleColumns::kProtected), FlagsOf(movie))
      << "a format that only protected media has";
  TableMovie other;
  other.dinf = Box("dinf", FullBox("dref", 0, 0, Bytes().Be32(1) + FullBox("url ", 0, 0)));
  EXPECT_EQ(std::vector<std::uint8_t>(4, kSync | SampleColumns::kElsewhere), FlagsOf(other));
}

// The description is not there.
TEST(SampleColumns, FlagsSayWhatIsUnknown) {
  TableMovie movie;
  movie.stsc = Stsc({{1, 1, 2}});
  EXPECT_EQ(std::vector<std::uint8_t>(4, SampleColumns::kSync | SampleColumns::kProtectionUnknown),
            FlagsOf(movie));
}
