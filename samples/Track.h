#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "samples/FragmentReader.h"
#include "samples/SampleTables.h"
#include "samples/TrackInfo.h"

namespace mp4 {

class Movie;
class SampleAt;
class SampleCursor;
class SampleSearch;

/// A track and the index of its samples. Info() costs nothing; the first question about samples
/// loads the track's tables, and the fragments of the file for all tracks. May throw bad_alloc,
/// nothing else.
///
/// Sample numbers count from 1: those of the movie box, then those of the fragments in file order.
class Track {
 public:
  Track(Movie* movie, TrackInfo info, BoxId trak);
  ~Track();
  Track(const Track&) = delete;
  Track& operator=(const Track&) = delete;

  const TrackInfo& Info() const { return info_; }

  std::uint64_t SampleCount();
  /// False when there is no such sample.
  bool At(std::uint64_t number, Sample* sample);

  /// Number of the last sample, in the order of numbers, whose decode time is at or before `time`;
  /// 0 without one.
  std::uint64_t NumberAtDecodeTime(std::int64_t time);
  /// Number of the sample with the greatest composition time at or before `time`, of several the
  /// last; 0 without one.
  std::uint64_t NumberAtCompositionTime(std::int64_t time);
  /// The same at a time on the presentation's timeline, in media units, through the edit list; 0 in
  /// an empty edit and outside of all.
  std::uint64_t NumberAtPresentationTime(std::int64_t time);
  /// Number of the last sync sample up to `number`; 0 without one.
  std::uint64_t SyncAtOrBefore(std::uint64_t number);

  /// Sample that the shadow sync table (ShadowSyncSampleBox "stsh", ISO/IEC 14496-12, 8.6.3) names
  /// for `number`, 0 without one.
  std::uint64_t ShadowOf(std::uint64_t number);

  /// Samples that lie one behind the other: a chunk, or a track run.
  struct Stretch {
    std::uint64_t first;  ///< number of its first sample
    std::uint64_t samples;
    std::uint64_t offset;
  };
  /// Calls for each stretch that has samples, in the order of numbers.
  void EachStretch(const std::function<void(const Stretch&)>& call);

  /// Loads everything and says what does not agree.
  const SampleProblems& Problems();

 private:
  friend class Movie;
  friend class SampleAt;
  friend class SampleCursor;

  void LoadTables();
  /// What receives fragments, which go on where the tables end: that takes reading all decode
  /// times.
  FragmentTrack* Fragments();
  void Prepare();
  std::uint64_t FileSize() const;
  std::uint64_t TableSamples() const { return tablesElsewhere_ ? 0 : tables_.Samples(); }
  SampleSearch* Search();

  Movie* movie_;
  BoxId trak_;
  TrackInfo info_;
  SampleProblems problems_;
  bool loaded_ = false;
  bool hasFragments_ = false;
  bool disagreementsNoted_ = false;
  bool tablesElsewhere_ = false;  ///< the tables describe the initialization source
  SampleTables tables_;
  FragmentTrack fragments_;
  std::unique_ptr<SampleAt> at_;
  std::unique_ptr<SampleSearch> search_;
};

}  // namespace mp4
