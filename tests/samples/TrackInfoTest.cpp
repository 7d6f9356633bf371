#include <gtest/gtest.h>

#include "io/FourCC.h"
#include "samples/TrackInfo.h"
#include "tests/samples/SampleFixtures.h"

namespace {

using namespace fixture;
using mp4::FourCC;
using mp4::SampleFault;
using mp4::TrackInfo;

/// A track box of the three children that matter, and what is read of it.
struct Read {
  explicit Read(const Bytes& trak) : bytes(trak), source(bytes.data(), bytes.size()) {
    mp4::CachedSource cached(&source);
    mp4::BoxTree tree(&cached);
    info = mp4::ReadTrackInfo(&tree, tree.Child(mp4::kRootBox, FourCC("trak")), 1000, &problems);
  }
  Bytes bytes;
  mp4::MemorySource source;
  mp4::SampleProblems problems;
  TrackInfo info;
};

/// "mdhd" of version 0 or 1 with a packed language.
Bytes MediaHeader(unsigned version, std::uint32_t timescale, std::uint32_t language,
                  std::uint32_t high, std::uint32_t duration) {
  Bytes body = version == 1 ? Bytes().Be32(0).Be32(0).Be32(0).Be32(0) : Bytes().Be32(0).Be32(0);
  body.Be32(timescale);
  if (version == 1) body.Be32(high);
  body.Be32(duration).Be32(language << 16);
  return FullBox("mdhd", static_cast<std::uint8_t>(version), 0, body);
}
TrackInfo InfoOf(const Bytes& mediaHeader, const Bytes& more = {}) {
  return Read(Box("trak", Tkhd(3) + Box("mdia", mediaHeader + more + Hdlr("vide")))).info;
}

TEST(TrackInfo, ReadsAPlainTrack) {
  TableMovie m;
  const Read read(m.Trak(7));
  EXPECT_EQ(read.info.id, 7u);
  EXPECT_TRUE(read.info.inMovie);
  EXPECT_EQ(read.info.handler, FourCC("vide"));
  EXPECT_EQ(read.info.timescale, 1000u);
  EXPECT_EQ(read.info.duration, 400u);
  EXPECT_EQ(read.info.descriptions.size(), 1u);
  EXPECT_FALSE(read.info.IsProtected());
  EXPECT_FALSE(read.info.composition);
  EXPECT_TRUE(read.problems.Kept().empty());
}

TEST(TrackInfo, MediaHeadersHaveTwoWidths) {
  EXPECT_EQ(InfoOf(MediaHeader(0, 90000, 0, 0, 5)).duration, 5u);
  EXPECT_EQ(InfoOf(MediaHeader(1, 90000, 0, 2, 5)).duration, 0x200000005u);
  EXPECT_EQ(InfoOf(MediaHeader(1, 90000, 0, 2, 5)).timescale, 90000u);
}

TEST(TrackInfo, ADurationOfAllOnesIsNotTold) {
  EXPECT_FALSE(InfoOf(MediaHeader(0, 1, 0, 0, 0xFFFFFFFF)).duration);
  EXPECT_FALSE(InfoOf(MediaHeader(1, 1, 0, 0xFFFFFFFF, 0xFFFFFFFF)).duration);
  EXPECT_EQ(InfoOf(MediaHeader(1, 1, 0, 0, 0xFFFFFFFF)).duration, 0xFFFFFFFFu);
}

TEST(TrackInfo, LanguagesAreLettersCodesOrTags) {
  EXPECT_EQ(InfoOf(MediaHeader(0, 1, 5 << 10 | 14 << 5 | 7, 0, 0)).language, "eng");
  EXPECT_EQ(InfoOf(MediaHeader(0, 1, 0x3FF, 0, 0)).language, "mac:1023");
  EXPECT_EQ(InfoOf(MediaHeader(0, 1, 0x400, 0, 0)).language, "a``");
  EXPECT_EQ(InfoOf(MediaHeader(0, 1, 0x7FFF, 0, 0)).language, "und");
  const Bytes tag = FullBox("elng", 0, 0, Bytes().Text("en-US").Byte(0));
  EXPECT_EQ(InfoOf(MediaHeader(0, 1, 0x7FFF, 0, 0), tag).language, "en-US");
}

TEST(TrackInfo, ATimescaleOfZeroIsAProblem) {
  const Read read(Box("trak", Tkhd(3) + Box("mdia", MediaHeader(0, 0, 0, 0, 5))));
  EXPECT_TRUE(Has(read.problems, SampleFault::kZeroTimescale, FourCC("mdhd")));
  EXPECT_TRUE(Has(read.problems, SampleFault::kMissing, FourCC("hdlr")));
  EXPECT_TRUE(Has(read.problems, SampleFault::kMissing, FourCC("stsd")));
}

TEST(TrackInfo, DescriptionsNameTheirDataReference) {
  TableMovie m;
  const Bytes other = FullBox("url ", 0, 0, Bytes().Text("file:a").Byte(0));
  m.dinf = Box("dinf", FullBox("dref", 0, 0, Bytes().Be32(1) + other));
  const Read elsewhere(m.Trak());
  EXPECT_TRUE(elsewhere.info.descriptions.at(0).elsewhere);
  EXPECT_EQ(mp4::NamedBy(elsewhere.info.descriptions, 1).elsewhere, true);
  EXPECT_EQ(mp4::NamedBy(elsewhere.info.descriptions, 2).byDefault, mp4::Told::kUnknown);
  EXPECT_EQ(mp4::NamedBy(elsewhere.info.descriptions, 0).byDefault, mp4::Told::kUnknown);
  EXPECT_FALSE(Read(TableMovie{}.Trak()).info.descriptions.at(0).elsewhere);
}

TEST(TrackInfo, CompositionTimesAreToldInTwoWidths) {
  TableMovie m;
  m.more = BoxOf32("cslg", {1, 0xFFFFFFFF, 2, 3, 4});
  const auto narrow = Read(m.Trak()).info.composition;
  ASSERT_TRUE(narrow);
  EXPECT_EQ(narrow->leastOffset, -1);
  EXPECT_EQ(narrow->end, 4);
  m.more = FullBox("cslg", 1, 0,
                   Bytes().Be32(0).Be32(1).Be32(0xFFFFFFFF).Be32(0xFFFFFFFE).Be32(1).Be32(0) +
                       Bytes().Be32(0).Be32(3).Be32(0).Be32(4));
  const auto wide = Read(m.Trak()).info.composition;
  ASSERT_TRUE(wide);
  EXPECT_EQ(wide->shift, 1);
  EXPECT_EQ(wide->leastOffset, -2);
  EXPECT_EQ(wide->greatestOffset, 0x100000000);
}

TEST(TrackInfo, CompositionTimesThatAreCutAreAProblem) {
  TableMovie m;
  m.more = BoxOf32("cslg", {1, 2, 3, 4});
  const Read read(m.Trak());
  EXPECT_FALSE(read.info.composition);
  EXPECT_TRUE(Has(read.problems, SampleFault::kCut, FourCC("cslg")));
}

}  // namespace
