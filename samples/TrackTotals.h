#pragma once

#include <cstdint>

#include "samples/Track.h"

namespace mp4 {

/// What the samples of a track come to. Times count in units of the media's timescale.
struct TrackTotals {
  std::uint64_t samples = 0;
  std::uint64_t bytes = 0;
  std::uint64_t duration = 0;       ///< of all samples, one behind the other
  std::uint64_t syncSamples = 0;    ///< 0 when nothing is said
  std::uint32_t usualDuration = 0;  ///< of the first sample
  bool constantRate = true;         ///< whether all but the last have that duration
  bool whole = true;                ///< false: there are more samples than were walked
};

/// Walks over the first `most` samples. May throw bad_alloc.
TrackTotals TotalsOf(Track* track, std::uint64_t most);

/// Samples that may be walked of a file of that size: more than any real one has, while a few bytes
/// can claim thousands of millions.
constexpr std::uint64_t MostSamplesWalked(std::uint64_t fileSize) {
  return 4000000 + fileSize / 16;
}

}  // namespace mp4
