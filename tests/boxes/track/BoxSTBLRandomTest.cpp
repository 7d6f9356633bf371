#include <gtest/gtest.h>

#include <random>

#include "boxes/track/BoxSTBL.h"
#include "tests/MovieFixtures.h"
#include "tests/ReferenceCursor.h"
#include "tests/TableFixtures.h"

using namespace fixture;

namespace {

using Random = std::mt19937;

unsigned Below(Random* random, unsigned n) { return static_cast<unsigned>((*random)() % n); }

/// How far a table strays from what a muxer would write.
enum class Shape { kSane, kHostile };

/// Tables of about `n` samples, and the same as plain lists.
class TrackTwin {
 public:
  TrackTwin(Random* random, Shape shape, unsigned n) : random(random), shape(shape) {
    MakeTimes(n);
    MakeChunks(n);
    for (unsigned i = 0; i < n; ++i) plain.tables.sizes.push_back(1 + Below(random, 500));
    MakeSyncs(n);
  }

  Bytes Payload() const {
    std::vector<tagSTSC> runs = chunkRuns;
    Bytes payload = EmptyStsd() + Box("stts", SttsPayload(plain.tables.times)) +
                    Box("stsc", StscPayload(runs)) + Stsz(plain.tables.sizes) +
                    Box("co64", Co64Payload(plain.tables.offsets));
    if (plain.tables.hasSyncs) payload.Append(Stss(plain.tables.syncs));
    return payload;
  }

  /// One more sample in a chunk of its own, as a fragment adds it.
  void Append(BoxSTBL* box) {
    const std::uint32_t size = 1 + Below(random, 500);
    const std::uint32_t duration = Below(random, 3) == 0 ? Below(random, 300) : 40;
    const std::uint64_t offset = 1 + Below(random, 1000000);
    box->sampleSizeBox->AppendSize(size);
    box->timeToSampleBox->AppendTime(duration);
    box->chunkOffsetBox->AppendChunk(offset);
    box->sampleToChunkBox->AppendSampleToChunk(1, 1);
    plain.tables.sizes.push_back(size);
    auto& times = plain.tables.times;
    if (!times.empty() && times.back().sampleDelta == duration) {
      ++times.back().sampleCount;
    } else {
      times.push_back({1, duration});
    }
    plain.tables.offsets.push_back(offset);
    plain.chunks.AppendSampleToChunk(1, 1);
    if (plain.tables.hasSyncs && Below(random, 4) == 0) {
      const auto number = static_cast<std::uint32_t>(plain.tables.sizes.size());
      box->syncSampleBox->AppendRAP(number);
      plain.tables.syncs.push_back(number);
    }
  }

  reference_cursor::Cursor plain;

 private:
  void MakeTimes(unsigned n) {
    for (unsigned left = n; left > 0;) {
      unsigned count = std::min(left, 1 + Below(random, 20));
      std::uint32_t delta = 1 + Below(random, 2000);
      left -= count;
      if (shape == Shape::kHostile && Below(random, 6) == 0) {
        if (Below(random, 2) == 0) count = 0;
        if (Below(random, 2) == 0) delta = Below(random, 2) == 0 ? 0 : 0u - Below(random, 2000);
      }
      plain.tables.times.push_back({count, delta});
    }
  }

  void MakeChunks(unsigned n) {
    std::uint32_t chunk = shape == Shape::kHostile ? Below(random, 3) : 1;
    for (unsigned left = n; left > 0;) {
      std::uint32_t samples = 1 + Below(random, 5);
      const std::uint32_t chunks = 1 + Below(random, 4);
      if (shape == Shape::kHostile && Below(random, 30) == 0) samples = Below(random, 2) - 1;
      AddRun({chunk, samples, 1});
      chunk += shape == Shape::kHostile && Below(random, 30) == 0 ? 0 : chunks;
      left -= std::min(left, std::max(1u, std::min(samples, 5u)) * chunks);
    }
    const unsigned offsets = shape == Shape::kHostile ? Below(random, chunk + 4) : chunk + 4;
    for (unsigned i = 0; i < offsets; ++i) {
      const bool zero = shape == Shape::kHostile && Below(random, 50) == 0;
      plain.tables.offsets.push_back(zero ? 0 : 1 + Below(random, 1000000000));
    }
  }

  void MakeSyncs(unsigned n) {
    plain.tables.hasSyncs = Below(random, 2) == 0;
    if (!plain.tables.hasSyncs) return;
    std::uint32_t number = shape == Shape::kHostile ? Below(random, 20) : 1;
    for (; number <= n; number += 1 + Below(random, 30)) {
      plain.tables.syncs.push_back(number);
      if (shape == Shape::kHostile && Below(random, 10) == 0) number = Below(random, n + 1);
      if (plain.tables.syncs.size() > 2 * n) break;
    }
  }

  void AddRun(const tagSTSC& run) {
    chunkRuns.push_back(run);
    plain.chunks.Add(run);
  }

  Random* random;
  Shape shape;
  std::vector<tagSTSC> chunkRuns;
};

void ExpectSame(const BoxSTBL& box, const reference_cursor::Cursor& plain) {
  ASSERT_EQ(box.curTime, plain.curTime);
  ASSERT_EQ(box.curOffset, plain.curOffset);
  ASSERT_EQ(box.curSize, plain.curSize);
  ASSERT_EQ(box.curDuration, plain.curDuration);
  ASSERT_EQ(box.curSample, plain.curSample);
  ASSERT_EQ(box.curChunk, plain.curChunk);
  ASSERT_EQ(box.sampleCount, plain.sampleCount);
}

void Move(Random* random, TrackTwin* track, BoxSTBL* box, unsigned n) {
  switch (Below(random, 10)) {
    case 0:
      ASSERT_EQ(box->ReadyToDemux(nullptr), 1);
      track->plain.ReadyToDemux();
      break;
    case 1:
      for (unsigned k = Below(random, 4); k > 0; --k) track->Append(box);
      break;
    case 2:
    case 3:
    case 4:
      for (unsigned k = Below(random, 60); k > 0; --k) {
        ASSERT_EQ(box->Next(), track->plain.Next());
      }
      break;
    default: {
      const std::int64_t time = static_cast<std::int64_t>(Below(random, n * 1000 + 5000)) - 2000;
      ASSERT_EQ(box->Seek(time), track->plain.Seek(time));
    }
  }
}

void Play(Random* random, Shape shape, unsigned n) {
  TrackTwin track(random, shape, n);
  BoxSTBL box;
  ASSERT_TRUE(ReadPayload(&box, track.Payload()));
  ASSERT_EQ(box.ReadyToDemux(nullptr), 1);
  track.plain.ReadyToDemux();
  for (int move = 0; move < 25; ++move) {
    Move(random, &track, &box, n);
    ASSERT_FALSE(testing::Test::HasFatalFailure()) << "move " << move;
    ExpectSame(box, track.plain);
    ASSERT_FALSE(testing::Test::HasFatalFailure()) << "move " << move;
  }
}

}  // namespace

TEST(BoxSTBLRandom, SaneTracksAgreeWithThePlainCursor) {
  Random random(11);
  for (int round = 0; round < 1000; ++round) {
    Play(&random, Shape::kSane, 1 + Below(&random, 600));
    ASSERT_FALSE(HasFatalFailure()) << "round " << round;
  }
}

TEST(BoxSTBLRandom, HostileTracksAgreeWithThePlainCursor) {
  Random random(13);
  for (int round = 0; round < 2000; ++round) {
    Play(&random, Shape::kHostile, 1 + Below(&random, 300));
    ASSERT_FALSE(HasFatalFailure()) << "round " << round;
  }
}

TEST(BoxSTBLRandom, WholeWalkAgreesWithThePlainCursor) {
  Random random(17);
  for (int round = 0; round < 50; ++round) {
    TrackTwin track(&random, Shape::kSane, 700);
    BoxSTBL box;
    ASSERT_TRUE(ReadPayload(&box, track.Payload()));
    ASSERT_EQ(box.ReadyToDemux(nullptr), 1);
    track.plain.ReadyToDemux();
    for (int i = 0; i < 720; ++i) {
      ASSERT_EQ(box.Next(), track.plain.Next());
      ExpectSame(box, track.plain);
      ASSERT_FALSE(HasFatalFailure()) << "round " << round << " step " << i;
    }
  }
}
