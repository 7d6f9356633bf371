#pragma once

#include <cstdint>

/// One run of the time-to-sample table: `sampleCount` samples of `sampleDelta` media units each.
struct tagSTTS {
  std::uint32_t sampleCount;
  std::uint32_t sampleDelta;
};

/// One run of the sample-to-chunk table; `firstChunk` is 1-based.
struct tagSTSC {
  std::uint32_t firstChunk;
  std::uint32_t samplesPerChunk;
  std::uint32_t sampleDescriptionIndex;
};

/// One sample size in bytes.
struct tagSTSZ {
  std::uint32_t sampleSize;
};

/// One chunk's absolute file offset in bytes.
struct tagSTCO {
  std::uint64_t chunkOffset;
};

/// One edit of an edit list.
struct tagElstItem {
  std::int32_t segmentDuration;  ///< movie timescale units
  std::int32_t mediaTime;        ///< media timescale units; -1 marks an empty edit
  std::uint32_t mediaRate;       ///< 16.16 as read; kept, not used
};
