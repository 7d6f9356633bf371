#include <gtest/gtest.h>

#include "io/FourCC.h"
#include "samples/FragmentReader.h"
#include "tests/FragmentFixtures.h"
#include "tests/samples/SampleFixtures.h"

namespace {

using namespace fixture;
using mp4::FourCC;
using mp4::Sample;
using mp4::SampleFault;
using mp4::Told;

constexpr std::uint32_t kBaseOffset = 0x1, kIndex = 0x2, kDuration = 0x8, kSize = 0x10,
                        kFlags = 0x20, kEmpty = 0x10000, kBaseIsMoof = 0x20000;
constexpr std::uint32_t kDataOffset = 0x1, kFirstFlags = 0x4, kRowDuration = 0x100,
                        kRowSize = 0x200, kRowFlags = 0x400, kRowOffset = 0x800;

/// A movie box for track 1 without samples, whose defaults are duration 1024, size 200, no sync
/// sample; then the fragments.
Bytes Init() {
  TableMovie m;
  m.stts = Stts({});
  m.stsc = Stsc({});
  m.stsz = Stsz({});
  m.stco = Stco({});
  return Box("moov", Mvhd(1000, 0) + m.Trak() + Mvex(Trex(1)));
}
Bytes Media() { return Box("mdat", Bytes().Fill(5000)); }
Bytes File(const Bytes& moofs) { return Ftyp("iso5") + Init() + moofs + Media(); }
std::uint64_t FirstMoof() { return (Ftyp("iso5") + Init()).size(); }
Bytes OneRun(std::uint32_t headerFlags, const Bytes& header, const Bytes& trun,
             const Bytes& more = {}) {
  return Moof(Mfhd(1) + Traf(Tfhd(headerFlags, 1, header) + more + trun));
}

struct Seen {
  explicit Seen(const Bytes& moofs) : open(File(moofs)), track(open.Only()) {}
  template <class T>
  std::vector<T> Of(T Sample::*field) {
    return Column(track, field);
  }
  OpenMovie open;
  mp4::Track& track;
};

TEST(FragmentReader, DefaultsOfTheMovieHold) {
  Seen seen(OneRun(kBaseIsMoof, {}, Trun(kDataOffset, 2, {500})));
  EXPECT_EQ(seen.Of(&Sample::offset), (Numbers{FirstMoof() + 500, FirstMoof() + 700}));
  EXPECT_EQ(seen.Of(&Sample::size), (Words{200, 200}));
  EXPECT_EQ(seen.Of(&Sample::decodeTime), (TimeList{0, 1024}));
  EXPECT_EQ(seen.Of(&Sample::duration), (Words{1024, 1024}));
  EXPECT_EQ(seen.Of(&Sample::sync), (Tolds{kNo, kNo}));
  EXPECT_EQ(seen.Of(&Sample::description), (Words{1, 1}));
  EXPECT_EQ(seen.Of(&Sample::fragment), (Words{1, 1}));
}

TEST(FragmentReader, TheFragmentHeaderOverridesTheMovie) {
  const Bytes header = Bytes().Be32(3).Be32(10).Be32(20).Be32(0x2000000);
  Seen seen(OneRun(kBaseIsMoof | kIndex | kDuration | kSize | kFlags, header,
                   Trun(kDataOffset, 2, {500})));
  EXPECT_EQ(seen.Of(&Sample::description), (Words{3, 3}));
  EXPECT_EQ(seen.Of(&Sample::duration), (Words{10, 10}));
  EXPECT_EQ(seen.Of(&Sample::size), (Words{20, 20}));
  EXPECT_EQ(seen.Of(&Sample::sync), (Tolds{kYes, kYes}));
  EXPECT_EQ(seen.Of(&Sample::depends), (std::vector<std::uint8_t>{0x20, 0x20}));
}

TEST(FragmentReader, RowsOverrideTheHeader) {
  const Bytes header = Bytes().Be32(10).Be32(20).Be32(0);
  Seen seen(OneRun(kBaseIsMoof | kDuration | kSize | kFlags, header,
                   Trun(kDataOffset | kRowDuration | kRowSize | kRowFlags | kRowOffset, 2,
                        {500, 1, 2, 0x10000, 5, 3, 4, 0, 0xFFFFFFFF})));
  EXPECT_EQ(seen.Of(&Sample::duration), (Words{1, 3}));
  EXPECT_EQ(seen.Of(&Sample::size), (Words{2, 4}));
  EXPECT_EQ(seen.Of(&Sample::sync), (Tolds{kNo, kYes}));
  EXPECT_EQ(seen.Of(&Sample::compositionTime), (TimeList{5, 0}));
}

TEST(FragmentReader, EveryChoiceOfRowFieldsIsReadInOrder) {
  for (std::uint32_t fields = 0; fields < 16; ++fields) {
    Words words{500};
    for (std::uint32_t i = 0; i < 3; ++i) {
      if ((fields & 1) != 0) words.push_back(100 + i);
      if ((fields & 2) != 0) words.push_back(200 + i);
      if ((fields & 4) != 0) words.push_back(i == 1 ? 0 : 0x10000);
      if ((fields & 8) != 0) words.push_back(300 + i);
    }
    Seen seen(OneRun(kBaseIsMoof, {}, Trun(kDataOffset | fields << 8, 3, words)));
    const auto samples = AllSamples(&seen.track);
    ASSERT_EQ(samples.size(), 3u);
    EXPECT_EQ(samples[2].duration, (fields & 1) != 0 ? 102u : 1024u) << fields;
    EXPECT_EQ(samples[2].size, (fields & 2) != 0 ? 202u : 200u) << fields;
    EXPECT_EQ(samples[1].sync, (fields & 4) != 0 ? kYes : kNo) << fields;
    EXPECT_EQ(samples[2].compositionTime - samples[2].decodeTime, (fields & 8) != 0 ? 302 : 0);
    Sample found;
    ASSERT_TRUE(seen.track.At(3, &found));
    EXPECT_EQ(found.offset, samples[2].offset) << fields;
    EXPECT_EQ(found.decodeTime, samples[2].decodeTime) << fields;
  }
}

TEST(FragmentReader, FirstSampleFlagsHoldForTheFirstAlone) {
  Seen seen(OneRun(kBaseIsMoof, {}, Trun(kDataOffset | kFirstFlags, 3, {500, 0})));
  EXPECT_EQ(seen.Of(&Sample::sync), (Tolds{kYes, kNo, kNo}));
  EXPECT_EQ(seen.track.SyncAtOrBefore(3), 1u);
}

TEST(FragmentReader, RowFlagsWinOverFirstSampleFlags) {
  Seen seen(OneRun(kBaseIsMoof, {},
                   Trun(kDataOffset | kFirstFlags | kRowFlags, 2, {500, 0, 0x10000, 0})));
  EXPECT_EQ(seen.Of(&Sample::sync), (Tolds{kNo, kYes}));
}

TEST(FragmentReader, ABaseOffsetWinsOverTheFragmentsPlace) {
  Seen seen(OneRun(kBaseOffset | kBaseIsMoof, Bytes().Be64(1000), Trun(kDataOffset, 1, {50})));
  EXPECT_EQ(seen.Of(&Sample::offset), (Numbers{1050}));
}

TEST(FragmentReader, OffsetsMayPointBack) {
  Seen seen(OneRun(kBaseIsMoof, {}, Trun(kDataOffset, 1, {0xFFFFFFF6})));
  EXPECT_EQ(seen.Of(&Sample::offset), (Numbers{FirstMoof() - 10}));
}

TEST(FragmentReader, WithoutABaseTheFirstTrackFragmentBeginsAtTheMovieFragment) {
  Seen seen(OneRun(0, {}, Trun(0, 2)));
  EXPECT_EQ(seen.Of(&Sample::offset), (Numbers{FirstMoof(), FirstMoof() + 200}));
}

TEST(FragmentReader, WithoutABaseLaterTrackFragmentsBeginWhereTheDataOfTheEarlierOneEnds) {
  const Bytes first = Traf(Tfhd(0, 1) + Trun(kDataOffset, 2, {500}));
  const Bytes second = Traf(Tfhd(0, 1) + Trun(kDataOffset, 1, {7}));
  Seen seen(Moof(Mfhd(1) + first + second));
  EXPECT_EQ(seen.Of(&Sample::offset),
            (Numbers{FirstMoof() + 500, FirstMoof() + 700, FirstMoof() + 907}));
}

TEST(FragmentReader, TheImpliedBaseBeginsAnewInTheNextMovieFragment) {
  const Bytes one = OneRun(0, {}, Trun(kDataOffset, 1, {500}));
  Seen seen(one + one);
  EXPECT_EQ(seen.Of(&Sample::offset), (Numbers{FirstMoof() + 500, FirstMoof() + one.size() + 500}));
}

TEST(FragmentReader, ARunWithoutOffsetFollowsTheRunBeforeIt) {
  const Bytes runs =
      Trun(kDataOffset, 2, {500}) + Trun(0, 1) + Trun(kDataOffset, 1, {900}) + Trun(0, 1);
  Seen seen(Moof(Mfhd(1) + Traf(Tfhd(kBaseIsMoof, 1) + runs)));
  const std::uint64_t base = FirstMoof();
  EXPECT_EQ(seen.Of(&Sample::offset),
            (Numbers{base + 500, base + 700, base + 900, base + 900, base + 1100}));
}

Bytes Tfdt(unsigned version, std::uint64_t time) {
  Bytes payload;
  if (version == 1) {
    payload.Be64(time);
  } else {
    payload.Be32(static_cast<std::uint32_t>(time));
  }
  return FullBox("tfdt", version, 0, payload);
}

TEST(FragmentReader, ADecodeTimeSetsTheClock) {
  const Bytes run = Trun(kDataOffset, 2, {500});
  Seen seen(OneRun(kBaseIsMoof, {}, run, Tfdt(0, 5000)) +
            OneRun(kBaseIsMoof, {}, run, Tfdt(1, 0x100000000)) + OneRun(kBaseIsMoof, {}, run));
  EXPECT_EQ(seen.Of(&Sample::decodeTime),
            (TimeList{5000, 6024, 0x100000000, 0x100000400, 0x100000800, 0x100000C00}));
  EXPECT_EQ(seen.Of(&Sample::fragment), (Words{1, 1, 2, 2, 3, 3}));
}

TEST(FragmentReader, ADecodeTimeMayGoBack) {
  const Bytes run = Trun(kDataOffset, 2, {500});
  Seen seen(OneRun(kBaseIsMoof, {}, run, Tfdt(0, 5000)) +
            OneRun(kBaseIsMoof, {}, run, Tfdt(0, 100)));
  EXPECT_EQ(seen.Of(&Sample::decodeTime), (TimeList{5000, 6024, 100, 1124}));
  EXPECT_EQ(seen.track.NumberAtDecodeTime(99), 0u);
  EXPECT_EQ(seen.track.NumberAtDecodeTime(100), 3u);
  EXPECT_EQ(seen.track.NumberAtDecodeTime(7000), 4u);
  EXPECT_EQ(seen.track.NumberAtCompositionTime(5500), 1u);
  EXPECT_EQ(seen.track.NumberAtCompositionTime(7000), 2u);
}

TEST(FragmentReader, TheSameTrackTwiceInAFragmentGoesOnWhereItWas) {
  const Bytes traf = Traf(Tfhd(kBaseIsMoof, 1) + Trun(kDataOffset, 2, {500}));
  Seen seen(Moof(Mfhd(1) + traf + traf));
  EXPECT_EQ(seen.Of(&Sample::decodeTime), (TimeList{0, 1024, 2048, 3072}));
}

TEST(FragmentReader, AnEmptyDurationAddsTimeAndNoSamples) {
  Seen seen(OneRun(kBaseIsMoof | kEmpty, {}, {}) +
            OneRun(kBaseIsMoof, {}, Trun(kDataOffset, 1, {500})));
  EXPECT_EQ(seen.Of(&Sample::decodeTime), (TimeList{1024}));
}

TEST(FragmentReader, RunsInAnEmptyFragmentAreLeftOut) {
  Seen seen(OneRun(kBaseIsMoof | kEmpty, {}, Trun(kDataOffset, 2, {500})));
  EXPECT_EQ(seen.track.SampleCount(), 0u);
  EXPECT_TRUE(Has(seen.track.Problems(), SampleFault::kRunsInEmpty, FourCC("trun")));
}

TEST(FragmentReader, FragmentsGoOnBehindTheSamplesOfTheMovieBox) {
  TableMovie m;
  m.mvex = Mvex(Trex(1));
  m.behind = OneRun(kBaseIsMoof, {}, Trun(kDataOffset, 1, {0}));
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::number), (Numbers{1, 2, 3, 4, 5}));
  EXPECT_EQ(Column(open.Only(), &Sample::decodeTime), (TimeList{0, 100, 200, 300, 400}));
  EXPECT_EQ(Column(open.Only(), &Sample::fragment), (Words{0, 0, 0, 0, 1}));
  EXPECT_EQ(open.Only().SyncAtOrBefore(5), 4u);
  EXPECT_EQ(open.Only().NumberAtDecodeTime(399), 4u);
  EXPECT_EQ(open.Only().NumberAtDecodeTime(400), 5u);
}

TEST(FragmentReader, ARunClaimsNoMoreSamplesThanItHasRows) {
  for (const std::uint32_t says : {3u, 0xFFFFFFFFu}) {
    Seen seen(OneRun(kBaseIsMoof, {}, Trun(kDataOffset | kRowSize, says, {500, 1, 2})));
    EXPECT_EQ(seen.Of(&Sample::size), (Words{1, 2}));
    EXPECT_TRUE(Has(seen.track.Problems(), SampleFault::kFewerRows, FourCC("trun")));
  }
}

TEST(FragmentReader, AClaimedCountWithoutRowsIsArithmetic) {
  Seen seen(OneRun(kBaseIsMoof, {}, Trun(kDataOffset, 0xFFFFFFFF, {500})));
  EXPECT_EQ(seen.track.SampleCount(), 0xFFFFFFFFu);
  Sample sample;
  ASSERT_TRUE(seen.track.At(4000000001, &sample));
  EXPECT_EQ(sample.offset, FirstMoof() + 500 + 200 * std::uint64_t{4000000000});
  EXPECT_EQ(sample.decodeTime, 1024 * std::int64_t{4000000000});
  EXPECT_TRUE(sample.outside);
  EXPECT_EQ(seen.track.NumberAtDecodeTime(1024 * std::int64_t{4000000000} + 1), 4000000001u);
}

TEST(FragmentReader, ALongRunIsFoundByNumberLikeByWalking) {
  Words words{500};
  for (std::uint32_t i = 0; i < 1000; ++i) words.insert(words.end(), {i % 7, i % 11, i % 5});
  Seen seen(
      OneRun(kBaseIsMoof, {},
             Trun(kDataOffset | kFirstFlags | kRowDuration | kRowSize | kRowOffset, 1000, [&] {
               Words all{500, 0};
               all.insert(all.end(), words.begin() + 1, words.end());
               return all;
             }())));
  const auto samples = AllSamples(&seen.track);
  ASSERT_EQ(samples.size(), 1000u);
  EXPECT_EQ(samples[0].sync, kYes);
  for (const Sample& sample : samples) {
    Sample found;
    ASSERT_TRUE(seen.track.At(sample.number, &found));
    EXPECT_EQ(found.offset, sample.offset);
    EXPECT_EQ(found.decodeTime, sample.decodeTime);
    EXPECT_EQ(found.compositionTime, sample.compositionTime);
    EXPECT_EQ(found.sync, sample.sync);
    EXPECT_EQ(seen.track.SyncAtOrBefore(sample.number), 1u);
  }
}

TEST(FragmentReader, WithoutDefaultsASampleWithoutSizeHasNoPlace) {
  TableMovie m;
  m.behind = OneRun(kBaseIsMoof, {}, Trun(kDataOffset, 1, {0}));
  OpenMovie open(m.File());
  EXPECT_EQ(open.Only().SampleCount(), 4u);
  EXPECT_TRUE(Has(open.Only().Problems(), SampleFault::kNoDefaults, FourCC("trex")));
  EXPECT_TRUE(Has(open.Only().Problems(), SampleFault::kPlaceUnknown, FourCC("trun")));
}

TEST(FragmentReader, WithoutDefaultsFlagsAreUnknown) {
  TableMovie m;
  m.behind = OneRun(kBaseIsMoof, {}, Trun(kDataOffset | kFirstFlags | kRowSize, 2, {0, 0, 8, 9}));
  OpenMovie open(m.File());
  const Tolds sync = Column(open.Only(), &Sample::sync);
  ASSERT_EQ(sync.size(), 6u);
  EXPECT_EQ(sync[4], kYes);
  EXPECT_EQ(sync[5], Told::kUnknown);
}

TEST(FragmentReader, AfterACutHeaderTheImpliedBaseIsUnknown) {
  const Bytes cut = Traf(FullBox("tfhd", 0, 0, Bytes().Be16(0)) + Trun(kDataOffset, 1, {500}));
  const Bytes implied = Traf(Tfhd(0, 1) + Trun(kDataOffset, 1, {500}));
  const Bytes own = Traf(Tfhd(kBaseIsMoof, 1) + Trun(kDataOffset, 1, {600}));
  Seen seen(Moof(Mfhd(1) + cut + implied + own));
  EXPECT_EQ(seen.Of(&Sample::offset), (Numbers{FirstMoof() + 600}));
  EXPECT_TRUE(Has(seen.open.movie->Problems(), SampleFault::kCut, FourCC("tfhd")));
}

TEST(FragmentReader, TracksThatTheMovieBoxDoesNotNameAreListedBehindTheOthers) {
  Seen seen(Moof(Mfhd(1) + Traf(Tfhd(kBaseIsMoof, 9) + Trun(kRowSize, 1, {5}))));
  EXPECT_EQ(seen.track.SampleCount(), 0u);
  ASSERT_EQ(seen.open.movie->Tracks().size(), 2u);
  mp4::Track& other = *seen.open.movie->Tracks()[1];
  EXPECT_EQ(other.Info().id, 9u);
  EXPECT_FALSE(other.Info().inMovie);
  EXPECT_EQ(Column(other, &Sample::size), (Words{5}));
  EXPECT_EQ(Column(other, &Sample::isProtected), (Tolds{Told::kUnknown}));
}

TEST(FragmentReader, ASegmentIsDescribedByItsInitialization) {
  const Bytes segment = OneRun(kBaseIsMoof, {}, Trun(kDataOffset, 1, {100}), Tfdt(1, 77)) + Media();
  OpenMovie open(segment, Ftyp("iso5") + Init());
  EXPECT_EQ(Column(open.Only(), &Sample::offset), (Numbers{100}));
  EXPECT_EQ(Column(open.Only(), &Sample::size), (Words{200}));
  EXPECT_EQ(Column(open.Only(), &Sample::decodeTime), (TimeList{77}));
}

TEST(FragmentReader, SamplesOfAnInitializationLieElsewhereAndOnlyMoveTheClock) {
  const Bytes segment = OneRun(kBaseIsMoof, {}, Trun(kDataOffset, 1, {100})) + Media();
  TableMovie m;
  m.mvex = Mvex(Trex(1));
  OpenMovie open(segment, m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::decodeTime), (TimeList{400}));
}

TEST(FragmentReader, DependenciesOfTheFragmentsTableWinOverFlags) {
  Seen seen(
      OneRun(kBaseIsMoof, {}, Trun(kDataOffset, 3, {500}), FullBox("sdtp", 0, 0, {0x11, 0x22})));
  EXPECT_EQ(seen.Of(&Sample::depends), (std::vector<std::uint8_t>{0x11, 0x22, 0}));
}

/// Every cut of a fragmented file lists a prefix of its samples, each as in the whole file.
TEST(FragmentReader, EveryTruncationListsNothingInvented) {
  const Bytes moofs = OneRun(kBaseIsMoof | kSize, Bytes().Be32(9),
                             Trun(kDataOffset | kRowDuration, 3, {500, 1, 2, 3}), Tfdt(1, 10)) +
                      OneRun(0, {}, Trun(kDataOffset, 2, {500}));
  const Bytes whole = Ftyp("iso5") + Init() + moofs;
  OpenMovie reference(whole);
  const auto samples = AllSamples(&reference.Only());
  ASSERT_EQ(samples.size(), 5u);
  for (std::size_t n = FirstMoof(); n < whole.size(); ++n) {
    Bytes cut = whole;
    cut.Cut(n);
    OpenMovie open(cut);
    const auto left = AllSamples(&open.Only());
    ASSERT_LE(left.size(), samples.size());
    for (std::size_t i = 0; i < left.size(); ++i) {
      EXPECT_EQ(left[i].offset, samples[i].offset) << n;
      EXPECT_EQ(left[i].size, samples[i].size) << n;
    }
  }
}

}  // namespace
