#pragma once

#include <cstdint>
#include <vector>

#include "samples/Movie.h"

namespace mp4 {

/// A stretch of the file that holds samples of one track, with small gaps perhaps.
struct MediaExtent {
  std::uint64_t offset = 0;
  std::uint64_t end = 0;
  std::uint64_t bytes = 0;  ///< of samples in it
};

/// Where the samples of a track lie, and how many bits there are over its time.
struct TrackLayout {
  std::vector<MediaExtent> extents;  ///< in file order
  std::vector<std::uint64_t> bytes;  ///< of the samples that begin in each part of the time
  bool whole = true;                 ///< false: there are more samples than were walked
};

/// The layout of a movie: one for each track, and the time that the parts divide.
struct MediaLayout {
  double seconds = 0;  ///< from 0 to the end of the last sample, of all tracks
  std::vector<TrackLayout> tracks;
};

/// At most so many stretches a track; neighbours grow together as long as there are more.
constexpr std::size_t kMostExtents = 4096;

/// Walks over all samples twice, `most` at most each time. A file of very many tracks has fewer
/// parts. May throw bad_alloc.
MediaLayout LayoutOf(Movie* movie, std::size_t parts, std::uint64_t most);

}  // namespace mp4
