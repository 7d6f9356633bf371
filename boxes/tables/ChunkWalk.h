#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "io/WrapMath.h"
#include "io/mmBuffer.h"

/// How the samples of a track lie in its chunks, worked out from a sample-to-chunk table.
namespace mp4 {

/// Bytes of an entry: first chunk, samples per chunk, sample description index.
constexpr std::int64_t kSampleToChunkEntry = 12;

/// A stored count of samples, as a signed number, divided. Nearly every table divides by 1.
constexpr std::int32_t DividedCount(std::uint32_t stored, std::int32_t divisor) {
  const auto samples = static_cast<std::int32_t>(stored);
  return divisor == 1 ? samples : WrapDiv32(samples, divisor);
}

/// A place in the walk over the samples. Counted from 0, in 32 bits that wrap.
struct ChunkCursor {
  std::int32_t entry = 0;  ///< the entry in force
  std::uint32_t chunk = 0;
  std::uint32_t sample = 0;
  std::uint32_t firstSample = 0;    ///< of the chunk
  std::int32_t samplesInChunk = 0;  ///< of every chunk of the entry in force; 0 never ends
  std::uint32_t nextRunChunk = 0;   ///< first chunk of the next entry; stale behind the last
  std::int64_t readPos = 0;         ///< where the next entry is read on, in bytes
};

/// The rules of the walk. Borrows the table for the duration of a call.
class ChunkWalk {
 public:
  /// `entries` may be null, an empty table. Counts of samples are divided by `divisor`.
  ChunkWalk(const mmBuffer* entries, std::int32_t count, std::int32_t divisor)
      : entries(entries), count(count), divisor(divisor) {}

  /// Sample 0. An empty table reads as one entry of zeros.
  ChunkCursor Start() const;
  /// The first sample of an entry that the walk enters at `sample` and `chunk`.
  ChunkCursor Entering(std::int32_t entry, std::uint32_t sample, std::uint32_t chunk) const;
  /// The sample counter has just passed the chunk's last sample.
  void FinishChunk(ChunkCursor* at) const;
  /// Takes up to `steps` single steps at once, at most into the next entry; returns those left.
  /// O(1).
  std::uint32_t Advance(ChunkCursor* at, std::uint32_t steps) const;

 private:
  void EnterNextEntry(ChunkCursor* at) const;
  void PassChunks(ChunkCursor* at, std::uint32_t* steps) const;
  std::uint32_t Word(std::int64_t at) const { return entries != nullptr ? entries->Be32At(at) : 0; }
  bool HoldsEntry(std::int64_t at) const {
    return entries != nullptr && entries->Holds(at, kSampleToChunkEntry);
  }

  const mmBuffer* entries;
  std::int32_t count;
  std::int32_t divisor;
};

/// Marks along the walk from sample 0, set as far as seeks have looked: one for every 32 entries,
/// so they take 2 % of the table's own bytes. Appended entries leave them right.
class ChunkMarks {
 public:
  /// Moves `cursor`, which stands on the walk from sample 0, closer to `target` ahead of it: less
  /// than 32 entries away, unless memory is short.
  void Approach(const ChunkWalk& walk, std::uint32_t target, ChunkCursor* cursor);
  /// To be called before an entry is added to `count` entries.
  void BeforeAppend(std::int32_t count) {
    if (marker.entry >= WrapSub32(count, 1)) started = false;
  }
  void Forget();

 private:
  struct Mark {
    std::uint32_t sample;
    std::uint32_t chunk;
  };

  ChunkCursor AtMark(const ChunkWalk& walk, std::size_t index) const;
  void SetUpTo(const ChunkWalk& walk, std::uint32_t target);

  std::vector<Mark> marks;  ///< where entries 32, 64, ... begin
  ChunkCursor marker;       ///< the walk that sets the marks
  bool started = false;
};

}  // namespace mp4
