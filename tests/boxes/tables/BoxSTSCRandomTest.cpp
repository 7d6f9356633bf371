#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "boxes/tables/BoxSTSC.h"
#include "tests/ReferenceCursor.h"
#include "tests/TableFixtures.h"

using namespace fixture;

namespace {

using Random = std::mt19937;

unsigned Below(Random* random, unsigned n) { return static_cast<unsigned>((*random)() % n); }

/// The library's cursor and the plain one, over the same table.
class Pair {
 public:
  Pair(const std::vector<tagSTSC>& entries, std::uint32_t packet, std::uint32_t count)
      : sound(kSound) {
    if (packet > 0) sound.Packetised(packet);
    Bytes payload = StscPayload(entries);
    payload.PutBe32(4, count);
    EXPECT_TRUE(ReadPayload(&box, payload, &sound.context));
    for (const tagSTSC& entry : entries) plain.Add(entry);
    if (packet > 0) plain.divisor = static_cast<std::int32_t>(packet);
    plain.count = std::min(static_cast<std::int32_t>(count), plain.count);
    for (std::int32_t i = 0; i < plain.count; ++i) Publish(entries[static_cast<std::size_t>(i)]);
  }

  void Ready() {
    box.ReadyToDemux();
    plain.ReadyToDemux();
  }
  void Step() { EXPECT_EQ(box.NextSample(), plain.NextSample()); }
  void Seek(int sample) {
    box.Seek(sample);
    plain.Seek(sample);
  }
  void Append(std::uint32_t samples) {
    box.AppendSampleToChunk(1, samples);
    Publish(plain.AppendSampleToChunk(1, samples));
  }
  bool Agree() {
    return box.GetCurSampleIndex() == plain.sample && box.GetCurChunkIndex() == plain.chunk &&
           box.GetFirstSampleInCurChunk() == plain.first;
  }
  /// The published sequence: the entries counted when read, then every one appended.
  bool PublishedAgrees() const {
    const auto& table = sound.track->sampleToChunkTable;
    if (table.size() != published.size()) return false;
    for (std::size_t i = 0; i < table.size(); ++i) {
      if (table[i].firstChunk != published[i].firstChunk) return false;
      if (table[i].samplesPerChunk != published[i].samplesPerChunk) return false;
    }
    return true;
  }

 private:
  void Publish(tagSTSC entry) {
    const auto samples = static_cast<std::int32_t>(entry.samplesPerChunk) / plain.divisor;
    entry.samplesPerChunk = static_cast<std::uint32_t>(samples);
    published.push_back(entry);
  }

  OneTrack sound;
  BoxSTSC box;
  reference_cursor::SampleToChunk plain;
  std::vector<tagSTSC> published;
};

/// Ascending runs of one to three chunks.
std::vector<tagSTSC> SaneRuns(Random* random, unsigned n) {
  std::vector<tagSTSC> entries;
  std::uint32_t chunk = 1;
  for (unsigned i = 0; i < n; ++i) {
    entries.push_back({chunk, 1 + Below(random, 6), 1});
    chunk += 1 + Below(random, 3);
  }
  return entries;
}

std::uint32_t HostileSamples(Random* random) {
  constexpr std::uint32_t kOdd[] = {0, 0x80000000, 0xFFFFFFFF, 0x7FFFFFFF, 100};
  return Below(random, 8) == 0 ? kOdd[Below(random, 5)] : Below(random, 5);
}

/// Runs whose first chunks stand still, run backwards, start at 0 or wrap.
std::vector<tagSTSC> HostileRuns(Random* random, unsigned n) {
  constexpr std::uint32_t kStarts[] = {0, 1, 1, 2, 0xFFFFFFFE, 0xFFFFFFFF, 0x80000000};
  std::vector<tagSTSC> entries;
  std::uint32_t chunk = kStarts[Below(random, 7)];
  const bool often = Below(random, 2) == 0;
  for (unsigned i = 0; i < n; ++i) {
    const std::uint32_t samples = often ? 1 + Below(random, 3) : HostileSamples(random);
    entries.push_back({chunk, samples, 1});
    if (Below(random, often ? 200 : 20) == 0) {
      chunk = kStarts[Below(random, 7)];
    } else {
      chunk += Below(random, often ? 40 : 4) == 0 ? 0 : 1 + Below(random, 2);
    }
  }
  return entries;
}

void Play(Random* random, Pair* pair, int moves, unsigned reach) {
  for (int move = 0; move < moves; ++move) {
    switch (Below(random, 8)) {
      case 0:
        pair->Ready();
        break;
      case 1:
        pair->Append(HostileSamples(random));
        break;
      case 2:
      case 3:
        for (unsigned steps = Below(random, 40); steps > 0; --steps) pair->Step();
        break;
      default:
        pair->Seek(static_cast<int>(Below(random, reach)));
    }
    ASSERT_TRUE(pair->Agree()) << "after move " << move;
  }
  ASSERT_TRUE(pair->PublishedAgrees());
}

}  // namespace

TEST(BoxSTSCRandom, SaneTablesAgreeWithThePlainWalk) {
  Random random(20240501);
  for (int round = 0; round < 1000; ++round) {
    const unsigned n = 1 + Below(&random, 150);
    Pair pair(SaneRuns(&random, n), 0, n);
    pair.Ready();
    Play(&random, &pair, 30, n * 8);
    ASSERT_FALSE(HasFatalFailure()) << "round " << round;
  }
}

TEST(BoxSTSCRandom, HostileTablesAgreeWithThePlainWalk) {
  Random random(7);
  for (int round = 0; round < 3000; ++round) {
    const unsigned n = Below(&random, Below(&random, 4) == 0 ? 200 : 12);
    Pair pair(HostileRuns(&random, n), Below(&random, 3) == 0 ? 1 + Below(&random, 3) : 0, n);
    if (Below(&random, 8) != 0) pair.Ready();
    Play(&random, &pair, 20, 1 + Below(&random, 1500));
    ASSERT_FALSE(HasFatalFailure()) << "round " << round;
  }
}

TEST(BoxSTSCRandom, CountsThatDifferFromTheBytesAgreeWithThePlainWalk) {
  Random random(99);
  for (int round = 0; round < 1000; ++round) {
    const unsigned n = Below(&random, 8);
    Pair pair(HostileRuns(&random, n), 0, Below(&random, 12));
    pair.Ready();
    Play(&random, &pair, 30, 1 + Below(&random, 200));
    ASSERT_FALSE(HasFatalFailure()) << "round " << round;
  }
}

TEST(BoxSTSCRandom, AppendsOneByOneAgreeWithThePlainWalk) {
  Random random(4711);
  for (int round = 0; round < 20; ++round) {
    Pair pair({{1, 1 + Below(&random, 3), 1}}, 0, 1);
    pair.Ready();
    for (unsigned i = 0; i < 300; ++i) {
      pair.Append(1 + Below(&random, 4));
      if (Below(&random, 3) == 0) pair.Seek(static_cast<int>(Below(&random, 3 * i + 1)));
      if (Below(&random, 5) == 0) pair.Step();
      ASSERT_TRUE(pair.Agree()) << "round " << round << " append " << i;
    }
    ASSERT_TRUE(pair.PublishedAgrees());
  }
}
