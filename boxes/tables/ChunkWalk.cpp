#include "boxes/tables/ChunkWalk.h"

#include <algorithm>

#include "boxes/base/BoxReading.h"
#include "io/WrapMath.h"

namespace mp4 {

namespace {

constexpr std::int32_t kMarkEvery = 32;

/// Counters are compared after a step, so a distance of 0 is a whole turn of 32 bits.
constexpr std::uint64_t StepsToReach(std::uint32_t distance) {
  return distance != 0 ? distance : std::uint64_t{1} << 32;
}

}  // namespace

ChunkCursor ChunkWalk::Start() const {
  ChunkCursor at;
  at.chunk = Word(0) - 1;
  at.samplesInChunk = DividedCount(Word(4), divisor);
  at.readPos = kSampleToChunkEntry;
  if (!HoldsEntry(at.readPos)) return at;
  at.nextRunChunk = Word(at.readPos) - 1;
  at.readPos += 4;
  return at;
}

ChunkCursor ChunkWalk::Entering(std::int32_t entry, std::uint32_t sample,
                                std::uint32_t chunk) const {
  ChunkCursor at;
  at.entry = entry - 1;
  at.chunk = at.nextRunChunk = chunk;
  at.sample = at.firstSample = sample;
  at.readPos = entry * kSampleToChunkEntry + 4;
  EnterNextEntry(&at);
  return at;
}

void ChunkWalk::FinishChunk(ChunkCursor* at) const {
  ++at->chunk;
  at->firstSample = at->sample;
  if (at->chunk == at->nextRunChunk) EnterNextEntry(at);
}

void ChunkWalk::EnterNextEntry(ChunkCursor* at) const {
  if (at->entry >= WrapSub32(count, 1)) return;
  ++at->entry;
  at->samplesInChunk = DividedCount(Word(at->readPos), divisor);
  at->readPos += 8;
  if (!HoldsEntry(at->readPos)) return;
  at->nextRunChunk = Word(at->readPos) - 1;
  at->readPos += 4;
}

std::uint32_t ChunkWalk::Advance(ChunkCursor* at, std::uint32_t steps) const {
  const std::uint32_t done = at->sample - at->firstSample;
  const std::uint64_t rest = StepsToReach(static_cast<std::uint32_t>(at->samplesInChunk) - done);
  if (steps < rest) {
    at->sample += steps;
    return 0;
  }
  at->sample += static_cast<std::uint32_t>(rest);
  steps -= static_cast<std::uint32_t>(rest);
  const std::int32_t entry = at->entry;
  FinishChunk(at);
  if (at->entry == entry) PassChunks(at, &steps);
  return steps;
}

/// From the first sample of a chunk, passes over the whole chunks that `steps` covers.
void ChunkWalk::PassChunks(ChunkCursor* at, std::uint32_t* steps) const {
  const std::uint64_t samples = StepsToReach(static_cast<std::uint32_t>(at->samplesInChunk));
  if (*steps < samples) return;
  const std::uint64_t toNextEntry = StepsToReach(at->nextRunChunk - at->chunk);
  const bool reaches = toNextEntry * samples <= *steps;
  const auto chunks = static_cast<std::uint32_t>(reaches ? toNextEntry : *steps / samples);
  const std::uint32_t passed = chunks * static_cast<std::uint32_t>(samples);
  at->chunk += chunks;
  at->sample += passed;
  at->firstSample = at->sample;
  *steps -= passed;
  if (reaches) EnterNextEntry(at);
}

void ChunkMarks::Approach(const ChunkWalk& walk, std::uint32_t target, ChunkCursor* cursor) {
  SetUpTo(walk, target);
  const auto after =
      std::upper_bound(marks.begin(), marks.end(), target,
                       [](std::uint32_t sample, const Mark& mark) { return sample < mark.sample; });
  if (after == marks.begin()) return;
  const auto index = static_cast<std::size_t>(after - marks.begin()) - 1;
  if (marks[index].sample > cursor->sample) *cursor = AtMark(walk, index);
}

/// An entry a round. Without memory the marks end early, which costs time alone.
void ChunkMarks::SetUpTo(const ChunkWalk& walk, std::uint32_t target) {
  if (!started) marker = marks.empty() ? walk.Start() : AtMark(walk, marks.size() - 1);
  started = true;
  WithoutThrowing([&] {
    while (marker.sample < target) {
      ChunkCursor ahead = marker;
      walk.Advance(&ahead, target - ahead.sample);
      const bool entered = ahead.entry != marker.entry;
      if (entered && ahead.entry % kMarkEvery == 0) marks.push_back({ahead.sample, ahead.chunk});
      marker = ahead;
    }
  });
}

ChunkCursor ChunkMarks::AtMark(const ChunkWalk& walk, std::size_t index) const {
  const auto entry = static_cast<std::int32_t>(index + 1) * kMarkEvery;
  return walk.Entering(entry, marks[index].sample, marks[index].chunk);
}

void ChunkMarks::Forget() {
  marks.clear();
  started = false;
}

}  // namespace mp4
