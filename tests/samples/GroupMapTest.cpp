#include <gtest/gtest.h>

#include "samples/GroupMap.h"
#include "tests/FragmentFixtures.h"
#include "tests/samples/SampleFixtures.h"

namespace {

using namespace fixture;
using mp4::FieldView;
using mp4::Guard;
using mp4::GuardDescriptions;
using mp4::GuardMap;
using mp4::Sample;
using mp4::Told;

using Guards = std::vector<Guard>;
constexpr Guard kNone = Guard::kNone, kClear = Guard::kClear, kGuarded = Guard::kProtected,
                kUnreadable = Guard::kUnreadable;

FieldView View(const Bytes& bytes) { return FieldView(bytes.data(), bytes.size()); }

/// A "seig" entry of 20 bytes.
Bytes Seig(bool isProtected) {
  return Bytes().Byte(0).Byte(0).Byte(isProtected).Byte(isProtected ? 8 : 0).Fill(16, 7);
}
/// Payload of an "sgpd" whose entries all have 20 bytes.
Bytes Sgpd(unsigned version, const std::vector<bool>& entries, std::uint32_t byDefault = 0) {
  Bytes payload = Bytes().Byte(version).Be24(0).Text("seig");
  if (version >= 1) payload.Be32(20);
  if (version >= 2) payload.Be32(byDefault);
  payload.Be32(static_cast<std::uint32_t>(entries.size()));
  for (const bool entry : entries) payload.Append(Seig(entry));
  return payload;
}
Bytes Sbgp(const Words& rows) {
  return Bytes().Be32(0).Text("seig").Be32(static_cast<std::uint32_t>(rows.size() / 2)) +
         Be32s(rows);
}
Guards Answers(const GuardMap& map, std::uint64_t n) {
  Guards guards;
  for (std::uint64_t i = 0; i < n; ++i) guards.push_back(map.At(i));
  return guards;
}

TEST(GroupMap, DescriptionsOfEveryVersion) {
  for (const unsigned version : {0u, 1u, 2u}) {
    const Bytes payload = Sgpd(version, {true, false}, 2);
    const GuardDescriptions read = ReadGuardDescriptions(View(payload));
    EXPECT_EQ(read.entries, (Guards{kGuarded, kClear})) << version;
    EXPECT_EQ(read.byDefault, version == 2 ? 2u : 0u);
  }
}

TEST(GroupMap, DescriptionsWithALengthEach) {
  const Bytes payload = Bytes().Be32(0x1000000).Text("seig").Be32(0).Be32(2).Be32(20) +
                        Seig(false) + Bytes().Be32(20) + Seig(true);
  EXPECT_EQ(ReadGuardDescriptions(View(payload)).entries, (Guards{kClear, kGuarded}));
}

TEST(GroupMap, AConstantVectorAndSeveralKeysMakeEntriesLonger) {
  const Bytes constant = Bytes({0, 0x19, 1, 0}).Fill(16).Byte(8).Fill(8);
  const Bytes keys = Bytes({0x80, 0, 1, 0, 2, 8}).Fill(16).Byte(0).Fill(16).Byte(4).Fill(4);
  const Bytes payload = Bytes().Be32(0).Text("seig").Be32(3) + constant + keys + Seig(false);
  EXPECT_EQ(ReadGuardDescriptions(View(payload)).entries, (Guards{kGuarded, kGuarded, kClear}));
}

TEST(GroupMap, Version2WithALengthBeforeEachEntryOnly) {
  // No default length where version 1 has one: the entries tell their own.
  const Bytes payload =
      Bytes().Be32(0x2000000).Text("seig").Be32(1).Be32(2) + Seig(true) + Seig(false);
  const GuardDescriptions read = ReadGuardDescriptions(View(payload));
  EXPECT_EQ(read.entries, (Guards{kGuarded, kClear}));
  EXPECT_EQ(read.byDefault, 1u);
}

TEST(GroupMap, EntriesThatAreCutAreLeftOutUnlessTheirFlagIsThere) {
  const Bytes payload = Sgpd(1, {true, true});
  for (std::size_t n = 0; n <= payload.size(); ++n) {
    Bytes cut = payload;
    cut.Cut(n);
    const std::size_t whole = n < 16 ? 0 : (n - 16) / 20 + ((n - 16) % 20 >= 3 ? 1 : 0);
    EXPECT_EQ(ReadGuardDescriptions(View(cut)).entries.size(), whole) << n;
  }
}

TEST(GroupMap, SamplesAreInTheGroupsThatTheMapNames) {
  const GuardDescriptions d = ReadGuardDescriptions(View(Sgpd(1, {true, false})));
  const GuardMap map =
      GuardMap::Of(ReadSampleToGroup(View(Sbgp({1, 1, 2, 2, 1, 0, 1, 3}))), &d, &d, false);
  EXPECT_EQ(Answers(map, 6), (Guards{kGuarded, kClear, kClear, kNone, kUnreadable, kNone}));
}

TEST(GroupMap, AVersion2DefaultHoldsPastTheMapAndWithoutOneButNotForZero) {
  const GuardDescriptions d = ReadGuardDescriptions(View(Sgpd(2, {true}, 1)));
  const GuardMap map = GuardMap::Of(ReadSampleToGroup(View(Sbgp({1, 0}))), &d, &d, false);
  EXPECT_EQ(Answers(map, 3), (Guards{kNone, kGuarded, kGuarded}));
  EXPECT_EQ(GuardMap::Of({}, &d, &d, false).At(0), kGuarded);
}

TEST(GroupMap, AMapThatIsCutLeavesTheRestUnreadable) {
  const GuardDescriptions d = ReadGuardDescriptions(View(Sgpd(1, {false})));
  Bytes payload = Sbgp({1, 1, 1, 1});
  payload.Cut(payload.size() - 1);
  const GuardMap map = GuardMap::Of(ReadSampleToGroup(View(payload)), &d, &d, false);
  EXPECT_EQ(Answers(map, 3), (Guards{kClear, kUnreadable, kUnreadable}));
}

TEST(GroupMap, FragmentsNameTheirOwnDescriptionsAbove0x10000) {
  const GuardDescriptions own = ReadGuardDescriptions(View(Sgpd(1, {true})));
  const GuardDescriptions movie = ReadGuardDescriptions(View(Sgpd(1, {false})));
  const auto map = ReadSampleToGroup(View(Sbgp({1, 0x10001, 1, 1, 1, 0x10002})));
  EXPECT_EQ(Answers(GuardMap::Of(map, &own, &movie, true), 4),
            (Guards{kGuarded, kClear, kUnreadable, kNone}));
  EXPECT_EQ(GuardMap::Of(map, nullptr, &movie, true).At(0), kUnreadable);
}

/// Index, count and pattern codes 0 to 3 stand for 4, 8, 16 and 32 bits.
Bytes Csgp(std::uint32_t flags, std::uint32_t patterns, const Bytes& body) {
  return Bytes().Be32(flags).Text("seig").Be32(patterns) + body;
}

TEST(GroupMap, CompactMapsRepeatPatternsOfNibbles) {
  const GuardDescriptions d = ReadGuardDescriptions(View(Sgpd(1, {true, false})));
  // Pattern of 3 over 7 samples, pattern of 1 over 2: indexes 1 2 0 | 2.
  const auto map = ReadCompactSampleToGroup(View(Csgp(0, 2, {0x37, 0x12, 0x12, 0x02})), false);
  EXPECT_FALSE(map.cut);
  EXPECT_EQ(
      Answers(GuardMap::Of(map, &d, &d, false), 10),
      (Guards{kGuarded, kClear, kNone, kGuarded, kClear, kNone, kGuarded, kClear, kClear, kNone}));
}

TEST(GroupMap, CompactMapsOfEveryWidth) {
  const GuardDescriptions d = ReadGuardDescriptions(View(Sgpd(1, {true, false})));
  for (const unsigned index : {1u, 2u, 3u}) {
    for (const unsigned count : {1u, 2u, 3u}) {
      for (const unsigned pattern : {1u, 2u, 3u}) {
        Bytes body;
        const auto put = [&](unsigned code, unsigned value) {
          body.Fill((std::size_t{1} << (code - 1)) - 1).Byte(value);
        };
        put(pattern, 2), put(count, 3), put(index, 1), put(index, 2);
        const Bytes payload = Csgp(pattern << 4 | count << 2 | index, 1, body);
        const auto map = ReadCompactSampleToGroup(View(payload), false);
        EXPECT_EQ(Answers(GuardMap::Of(map, &d, &d, false), 4),
                  (Guards{kGuarded, kClear, kGuarded, kNone}));
      }
    }
  }
}

TEST(GroupMap, InFragmentsTheHighestBitOfACompactIndexNamesTheFragmentsOwn) {
  const GuardDescriptions own = ReadGuardDescriptions(View(Sgpd(1, {true})));
  const GuardDescriptions movie = ReadGuardDescriptions(View(Sgpd(1, {false})));
  const Bytes payload = Csgp(0x80, 1, {0x22, 0x91});
  EXPECT_EQ(
      Answers(GuardMap::Of(ReadCompactSampleToGroup(View(payload), true), &own, &movie, true), 3),
      (Guards{kGuarded, kClear, kNone}));
  // In a movie box the bit is one like the others: entry 9 is not there.
  EXPECT_EQ(
      GuardMap::Of(ReadCompactSampleToGroup(View(payload), false), &movie, &movie, false).At(0),
      kUnreadable);
}

TEST(GroupMap, ACompactMapThatIsCutIsNeverClearBehindTheCut) {
  const GuardDescriptions d = ReadGuardDescriptions(View(Sgpd(1, {false})));
  const Bytes payload = Csgp(0, 2, {0x22, 0x22, 0x11, 0x11});
  for (std::size_t n = 0; n < payload.size(); ++n) {
    Bytes cut = payload;
    cut.Cut(n);
    const auto map = ReadCompactSampleToGroup(View(cut), false);
    EXPECT_TRUE(map.cut) << n;
    EXPECT_EQ(GuardMap::Of(map, &d, &d, false).At(3), kUnreadable) << n;
  }
}

TEST(GroupMap, APatternWithoutIndexesSaysNothingOfItsSamples) {
  EXPECT_TRUE(ReadCompactSampleToGroup(View(Csgp(0, 1, {0x04})), false).cut);
}

TEST(GroupMap, ATrackFollowsItsGroups) {
  TableMovie m;
  m.more = Box("sgpd", Sgpd(1, {true, false})) + Box("sbgp", Sbgp({1, 0, 1, 1, 2, 2}));
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::isProtected), (Tolds{kNo, kYes, kNo, kNo}));
  for (std::uint64_t number = 1; number <= 4; ++number) {
    Sample sample;
    ASSERT_TRUE(open.Only().At(number, &sample));
    EXPECT_EQ(sample.isProtected, number == 2 ? kYes : kNo);
  }
}

Bytes Sinf(bool byDefault) {
  const Bytes tenc = FullBox("tenc", 0, 0, Bytes({0, 0, byDefault, 8}).Fill(16));
  return Box("sinf", Box("frma", Bytes().Text("avc1")) +
                         FullBox("schm", 0, 0, Bytes().Text("cenc").Be32(0x10000)) +
                         Box("schi", tenc));
}

TEST(GroupMap, OutsideOfGroupsTheTrackDefaultHolds) {
  TableMovie m;
  m.more = Box("sgpd", Sgpd(1, {true, false})) + Box("sbgp", Sbgp({1, 0, 1, 1, 1, 2}));
  for (const bool byDefault : {true, false}) {
    m.stsd = Stsd(VisualEntry("encv", Sinf(byDefault)));
    OpenMovie open(m.File());
    const Told rest = byDefault ? kYes : kNo;
    EXPECT_EQ(Column(open.Only(), &Sample::isProtected), (Tolds{rest, kYes, kNo, rest}));
  }
}

TEST(GroupMap, AProtectedEntryWithoutDefaultsProtectsItsSamples) {
  TableMovie m;
  m.stsd = Stsd(VisualEntry("drmi"));
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::isProtected), (Tolds{kYes, kYes, kYes, kYes}));
}

TEST(GroupMap, AFragmentFollowsItsOwnGroups) {
  TableMovie m;
  m.mvex = Mvex(Trex(1));
  m.behind = Moof(Mfhd(1) + Traf(Tfhd(0x20000, 1) + Box("sgpd", Sgpd(1, {true})) +
                                 Box("sbgp", Sbgp({1, 0, 2, 0x10001})) + Trun(0, 2) + Trun(0, 2)));
  OpenMovie open(m.File());
  EXPECT_EQ(Column(open.Only(), &Sample::isProtected),
            (Tolds{kNo, kNo, kNo, kNo, kNo, kYes, kYes, kNo}));
}

TEST(GroupMap, EncryptionDataWithoutADescriptionIsNotClear) {
  const Bytes segment =
      Moof(Mfhd(1) +
           Traf(Tfhd(0x20000, 1) + FullBox("senc", 0, 0, Bytes().Be32(1)) + Trun(0x200, 1, {5})));
  OpenMovie open(segment);
  EXPECT_EQ(Column(open.Only(), &Sample::isProtected), (Tolds{kYes}));
}

}  // namespace
