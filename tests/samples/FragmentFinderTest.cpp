#include <gtest/gtest.h>

#include "io/FourCC.h"
#include "samples/FragmentFinder.h"
#include "tests/FragmentFixtures.h"
#include "tests/samples/SampleFixtures.h"

namespace {

using namespace fixture;
using mp4::FourCC;
using mp4::FragmentPlace;
using mp4::SampleFault;
using By = mp4::FragmentPlace::By;

/// A fragment of some tracks whose decode times are told.
Bytes FragmentOf(std::uint32_t time, const Words& tracks = {1}) {
  Bytes trafs;
  for (const std::uint32_t id : tracks) {
    trafs.Append(Traf(Tfhd(0x20008, id, Bytes().Be32(100)) +
                      FullBox("tfdt", 0, 0, Bytes().Be32(time)) + Trun(0, 1)));
  }
  return Moof(Mfhd(1) + trafs) + Box("mdat", Bytes().Fill(24));
}

struct Reference {
  std::uint32_t size;
  std::uint32_t duration;
  bool isIndex = false;
};
Bytes Sidx(std::uint32_t track, std::uint32_t start, const std::vector<Reference>& references,
           std::uint32_t firstOffset = 0, unsigned version = 0, std::uint32_t timescale = 1000) {
  Bytes body = Be32s({track, timescale});
  if (version == 1) body.Be32(0);
  body.Be32(start);
  if (version == 1) body.Be32(0);
  body.Be32(firstOffset).Be32(static_cast<std::uint32_t>(references.size()));
  for (const Reference& reference : references) {
    body.Be32(reference.size | (reference.isIndex ? 0x80000000u : 0)).Be32(reference.duration);
    body.Be32(0x90000000);
  }
  return FullBox("sidx", static_cast<std::uint8_t>(version), 0, body);
}

/// A random access table with numbers of 1 to 4 bytes.
Bytes Tfra(std::uint32_t track, const Words& timesAndOffsets, unsigned bytes = 1,
           unsigned version = 0) {
  const unsigned length = bytes - 1;
  Bytes body = Be32s({track, length << 4 | length << 2 | length,
                      static_cast<std::uint32_t>(timesAndOffsets.size() / 2)});
  for (std::size_t i = 0; i < timesAndOffsets.size(); i += 2) {
    for (std::size_t k = 0; k < 2; ++k) {
      if (version == 1) body.Be32(0);
      body.Be32(timesAndOffsets[i + k]);
    }
    for (unsigned k = 0; k < 3 * bytes; ++k) body.Byte(k % bytes + 1 == bytes ? 1 : 0);
  }
  return FullBox("tfra", static_cast<std::uint8_t>(version), 0, body);
}
Bytes Mfra(const Bytes& tables) {
  const auto size = static_cast<std::uint32_t>(8 + tables.size() + 16);
  return Box("mfra", tables + FullBox("mfro", 0, 0, Bytes().Be32(size)));
}

/// Fragments at 0, 1000, 2000 of one size, behind `front`.
struct Segments {
  explicit Segments(const Bytes& front = {}, const Bytes& back = {}) : file(front) {
    for (std::uint32_t i = 0; i < 3; ++i) {
      at[i] = file.size();
      file.Append(FragmentOf(i * 1000));
    }
    file.Append(back);
  }
  static std::uint32_t Size() { return static_cast<std::uint32_t>(FragmentOf(0).size()); }
  Bytes file;
  std::uint64_t at[3] = {};
};

struct Asked {
  std::optional<FragmentPlace> place;
  mp4::SampleProblems problems;
  std::uint64_t bytesRead = 0;
};
Asked Ask(const Bytes& file, std::int64_t time, std::uint32_t track = 1) {
  Asked asked;
  mp4::MemorySource source(file.data(), file.size());
  mp4::CachedSource cached(&source);
  asked.place = mp4::FragmentFinder(&cached, &asked.problems).Find(track, 1000, time);
  asked.bytesRead = cached.BytesRead();
  return asked;
}
void ExpectPlace(const Asked& asked, By by, std::uint64_t offset, std::uint64_t time) {
  ASSERT_TRUE(asked.place);
  EXPECT_EQ(asked.place->by, by);
  EXPECT_EQ(asked.place->offset, offset);
  EXPECT_EQ(asked.place->decodeTime, time);
  EXPECT_TRUE(asked.problems.Kept().empty());
}

TEST(FragmentFinder, TakesTheLastSubsegmentThatBeginsAtOrBeforeTheTime) {
  for (const unsigned version : {0u, 1u}) {
    const std::uint32_t n = Segments::Size();
    const Segments s(Sidx(1, 0, {{n, 1000}, {n, 1000}, {n, 1000}}, 0, version));
    ExpectPlace(Ask(s.file, 0), By::kSegmentIndex, s.at[0], 0);
    ExpectPlace(Ask(s.file, 999), By::kSegmentIndex, s.at[0], 0);
    ExpectPlace(Ask(s.file, 1000), By::kSegmentIndex, s.at[1], 1000);
    ExpectPlace(Ask(s.file, 2000), By::kSegmentIndex, s.at[2], 2000);
    ExpectPlace(Ask(s.file, 1000000), By::kSegmentIndex, s.at[2], 2000);
  }
}

TEST(FragmentFinder, CountsFromBehindTheIndexAndTheFirstOffset) {
  const std::uint32_t n = Segments::Size();
  const Bytes gap = Box("free", Bytes().Fill(12));
  const Segments s(Sidx(1, 0, {{n, 1000}, {n, 1000}, {n, 1000}}, 20) + gap);
  ExpectPlace(Ask(s.file, 1500), By::kSegmentIndex, s.at[1], 1000);
}

TEST(FragmentFinder, StepsOverBoxesInFrontOfTheFragmentOfASubsegment) {
  const std::uint32_t n = Segments::Size();
  const Segments s(Sidx(1, 0, {{n + 20, 1000}, {n, 1000}, {n, 1000}}) +
                   Box("styp", Bytes().Fill(12)));
  ExpectPlace(Ask(s.file, 1), By::kSegmentIndex, s.at[0], 0);
}

TEST(FragmentFinder, CountsInTheTimescaleOfTheIndex) {
  const std::uint32_t n = Segments::Size();
  const Segments s(Sidx(1, 0, {{n, 90000}, {n, 90000}, {n, 90000}}, 0, 0, 90000));
  ExpectPlace(Ask(s.file, 999), By::kSegmentIndex, s.at[0], 0);
  ExpectPlace(Ask(s.file, 1000), By::kSegmentIndex, s.at[1], 1000);
}

TEST(FragmentFinder, FollowsIndexesOfIndexes) {
  const std::uint32_t n = Segments::Size();
  const Bytes second = Sidx(1, 1000, {{n, 1000}, {n, 1000}});
  const Bytes first = Sidx(1, 0, {{n, 1000}});
  const auto size = [](const Bytes& bytes) { return static_cast<std::uint32_t>(bytes.size()); };
  const Bytes root =
      Sidx(1, 0, {{size(first) + n, 1000, true}, {size(second) + 2 * n, 2000, true}});
  Bytes file = root + first + FragmentOf(0) + second;
  const std::uint64_t at = file.size();
  file.Append(FragmentOf(1000) + FragmentOf(2000));
  ExpectPlace(Ask(file, 500), By::kSegmentIndex, root.size() + first.size(), 0);
  ExpectPlace(Ask(file, 1500), By::kSegmentIndex, at, 1000);
  ExpectPlace(Ask(file, 2500), By::kSegmentIndex, at + n, 2000);
}

TEST(FragmentFinder, GoesOnToTheIndexOfTheNextSegment) {
  const std::uint32_t n = Segments::Size();
  Bytes file;
  std::uint64_t at[3];
  for (std::uint32_t i = 0; i < 3; ++i) {
    file.Append(Sidx(1, i * 1000, {{n, 1000}}));
    at[i] = file.size();
    file.Append(FragmentOf(i * 1000));
  }
  ExpectPlace(Ask(file, 1000), By::kSegmentIndex, at[1], 1000);
  ExpectPlace(Ask(file, 2999), By::kSegmentIndex, at[2], 2000);
}

TEST(FragmentFinder, TakesTheIndexOfTheTrackThatIsAskedFor) {
  const Bytes one = FragmentOf(0, {1, 2});
  const auto n = static_cast<std::uint32_t>(one.size());
  const Bytes indexes = Sidx(2, 0, {{n, 500}, {n, 500}}, 44) + Sidx(1, 0, {{2 * n, 1000}});
  const Bytes file = indexes + one + FragmentOf(500, {1, 2});
  ExpectPlace(Ask(file, 700, 2), By::kSegmentIndex, indexes.size() + n, 500);
  EXPECT_EQ(Ask(file, 700, 1).place->offset, indexes.size());
  EXPECT_FALSE(Ask(file, 700, 3).place);
}

TEST(FragmentFinder, ReadsLittleMoreThanTheIndexAndTheFragment) {
  constexpr std::uint32_t kFragments = 200;
  const Bytes media = Box("mdat", Bytes().Fill(20000));
  const Bytes first =
      Moof(Mfhd(1) + Traf(Tfhd(0x20000, 1) + FullBox("tfdt", 0, 0, Bytes().Be32(0))));
  const auto n = static_cast<std::uint32_t>(first.size() + media.size());
  Bytes file = Sidx(1, 0, std::vector<Reference>(kFragments, {n, 1000}));
  const std::size_t front = file.size();
  for (std::uint32_t i = 0; i < kFragments; ++i) {
    Bytes fragment = first;
    file.Append(fragment.PutBe32(first.size() - 4, i * 1000) + media);
  }
  const Asked asked = Ask(file, 150500);
  ExpectPlace(asked, By::kSegmentIndex, front + 150 * n, 150000);
  EXPECT_LT(asked.bytesRead, file.size() / 20);
}

TEST(FragmentFinder, AnIndexThatNamesNoFragmentIsAProblemAndTheHeadersAreRead) {
  const std::uint32_t n = Segments::Size();
  for (const std::uint32_t wrong : {n - 1, n + 1, 7u}) {
    const Segments s(Sidx(1, 0, {{wrong, 1000}, {n, 1000}}));
    const Asked asked = Ask(s.file, 1000);
    ASSERT_TRUE(asked.place);
    EXPECT_EQ(asked.place->by, By::kHeaders);
    EXPECT_EQ(asked.place->offset, s.at[1]);
    EXPECT_TRUE(Has(asked.problems, SampleFault::kNoFragmentThere, FourCC("sidx")));
  }
}

TEST(FragmentFinder, AnIndexOfAnIndexThatIsNoneIsAProblem) {
  const Segments s(Sidx(1, 0, {{0, 1000, true}}) + Box("free", Bytes().Fill(12)));
  const Asked asked = Ask(s.file, 0);
  EXPECT_TRUE(Has(asked.problems, SampleFault::kNoFragmentThere, FourCC("sidx")));
  EXPECT_EQ(asked.place->by, By::kHeaders);
}

TEST(FragmentFinder, FollowsSixteenIndexesAndNotMore) {
  for (const int deep : {16, 17}) {
    Bytes file = Sidx(1, 0, {{Segments::Size(), 1000}}) + FragmentOf(0);
    for (int i = 0; i < deep; ++i) {
      file = Sidx(1, 0, {{static_cast<std::uint32_t>(file.size()), 1000, true}}) + file;
    }
    EXPECT_EQ(Ask(file, 0).place->by, deep == 16 ? By::kSegmentIndex : By::kHeaders);
  }
}

TEST(FragmentFinder, RowsThatAreNotThereAreAProblem) {
  const std::uint32_t n = Segments::Size();
  Bytes index = Sidx(1, 0, {{n, 1000}, {n, 1000}});
  index.PutBe32(28, 9);  // reserved, and the count
  const Segments s(index);
  const Asked asked = Ask(s.file, 1000);
  EXPECT_TRUE(Has(asked.problems, SampleFault::kFewerRows, FourCC("sidx")));
  EXPECT_EQ(asked.place->offset, s.at[1]);
}

TEST(FragmentFinder, ReadsRandomAccessTablesOfEveryWidth) {
  for (const unsigned version : {0u, 1u}) {
    for (unsigned bytes = 1; bytes <= 4; ++bytes) {
      const Segments plain;
      const auto at = [&](int i) { return static_cast<std::uint32_t>(plain.at[i]); };
      const Segments s({}, Mfra(Tfra(9, {0, 5}) +
                                Tfra(1, {0, at(0), 1000, at(1), 2000, at(2)}, bytes, version)));
      ExpectPlace(Ask(s.file, 999), By::kRandomAccess, s.at[0], 0);
      ExpectPlace(Ask(s.file, 1000), By::kRandomAccess, s.at[1], 1000);
      ExpectPlace(Ask(s.file, 5000), By::kRandomAccess, s.at[2], 2000);
    }
  }
}

TEST(FragmentFinder, ARandomAccessTableThatNamesNoFragmentIsAProblem) {
  const Segments s({}, Mfra(Tfra(1, {0, 1})));
  const Asked asked = Ask(s.file, 1500);
  EXPECT_TRUE(Has(asked.problems, SampleFault::kNoFragmentThere, FourCC("tfra")));
  EXPECT_EQ(asked.place->by, By::kHeaders);
  EXPECT_EQ(asked.place->offset, s.at[1]);
}

TEST(FragmentFinder, TheBoxAtTheEndHasToLeadToTheTables) {
  Bytes tables = Mfra(Tfra(1, {0, 0}));
  tables.PutBe32(tables.size() - 4, static_cast<std::uint32_t>(tables.size()) - 1);
  const Segments s({}, tables);
  const Asked asked = Ask(s.file, 0);
  EXPECT_TRUE(Has(asked.problems, SampleFault::kMissing, FourCC("mfra")));
  EXPECT_EQ(asked.place->by, By::kHeaders);
}

TEST(FragmentFinder, WithoutAnIndexTheDecodeTimesOfFragmentsCount) {
  const Segments s;
  ExpectPlace(Ask(s.file, 0), By::kHeaders, s.at[0], 0);
  ExpectPlace(Ask(s.file, 1999), By::kHeaders, s.at[1], 1000);
  ExpectPlace(Ask(s.file, 2000), By::kHeaders, s.at[2], 2000);
}

TEST(FragmentFinder, InFrontOfTheFirstFragmentThereIsNone) {
  EXPECT_FALSE(Ask(Segments().file, -1).place);
  EXPECT_FALSE(Ask(FragmentOf(100), 99).place);
  EXPECT_FALSE(Ask(Bytes(), 0).place);
}

TEST(FragmentFinder, EveryTruncationGivesAFragmentThatIsThereOrNone) {
  const std::uint32_t n = Segments::Size();
  const Segments plain(Sidx(1, 0, {{n, 1000}, {n, 1000}, {n, 1000}}));
  const Bytes whole =
      plain.file + Mfra(Tfra(1, {0, static_cast<std::uint32_t>(plain.at[0])}, 2, 1));
  for (std::size_t size = 0; size < whole.size(); ++size) {
    Bytes cut = whole;
    cut.Cut(size);
    for (const std::int64_t time : {0, 1500, 2500}) {
      const Asked asked = Ask(cut, time);
      if (!asked.place) continue;
      bool known = false;
      for (const std::uint64_t at : plain.at) known = known || asked.place->offset == at;
      EXPECT_TRUE(known) << size;
    }
  }
}

}  // namespace
