#pragma once

#include <cstdint>
#include <vector>

#include "samples/Movie.h"
#include "samples/SampleCursor.h"

namespace mp4 {

/// Walks over the samples of all tracks together. Borrows the movie.
class MovieCursor {
 public:
  enum class Order : std::uint8_t {
    kFile,        ///< by offset, as far as chunks and runs do not overlap
    kDecodeTime,  ///< by decode time in seconds; of several the track that stands first
  };
  MovieCursor(Movie* movie, Order order);

  /// The next sample and the index of its track; false behind the last one.
  bool Next(std::size_t* track, Sample* sample);

 private:
  /// Where a track's samples go on.
  struct Lane {
    Lane(Track* track, std::size_t index) : cursor(track), index(index) {}
    SampleCursor cursor;
    std::size_t index;
    std::uint32_t timescale = 1;
    Sample next;
    /// The track's stretches by offset, where they do not rise by themselves.
    std::vector<Track::Stretch> stretches;
    std::size_t stretch = 0;
    std::uint64_t lastOfStretch = 0;
  };

  static bool Advance(Lane* lane);
  bool IsBehind(const Lane& a, const Lane& b) const;
  void SortStretches(Track* track, Lane* lane) const;

  Order order_;
  std::vector<Lane> lanes_;
  std::vector<std::size_t> heap_;  ///< lanes with a next sample, the foremost first
};

}  // namespace mp4
