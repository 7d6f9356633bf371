#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "io/CachedSource.h"
#include "samples/FragmentFinder.h"
#include "samples/Track.h"

namespace mp4 {

/// The tracks of a file and their samples. Opening reads what a list of tracks needs: no table of
/// samples, and no fragment unless there is no movie box to list.
///
/// With an initialization source, its movie box describes the tracks, and the media source holds
/// the fragments; sample tables of the former, whose samples lie there, list none.
///
/// May throw bad_alloc, nothing else. One thread at a time.
class Movie : private FragmentTracks {
 public:
  /// Both sources are borrowed; the second may be null.
  explicit Movie(ByteSource* media, ByteSource* initialization = nullptr);
  ~Movie() override;

  bool HasMovieBox() const { return moov_ != kNoBox; }
  std::uint32_t Timescale() const { return timescale_; }

  /// Tracks in the order of their boxes; behind them those that fragments alone name, once the
  /// fragments have been read.
  const std::vector<std::unique_ptr<Track>>& Tracks() const { return tracks_; }
  /// The first track with an id, or null.
  Track* TrackById(std::uint32_t id) const;

  /// Reads all movie fragments, if that has not been done.
  void ReadFragments();
  std::uint32_t Fragments() const { return fragments_; }

  /// Where to begin reading for a composition time of a track, without reading all fragments. The
  /// place that an index wrongly names is a problem.
  std::optional<FragmentPlace> FragmentAt(const Track& track, std::int64_t time);

  /// Bytes kept for the fragments.
  std::size_t FragmentMemory() const;

  const SampleProblems& Problems() const { return problems_; }
  /// Why bytes are missing, if they are: what is listed then is not all.
  const SourceTrouble& Trouble() const;

  std::uint64_t MediaSize() const { return media_.Size(); }

 private:
  friend class Track;

  BoxTree* MovieTree() { return initTree_ != nullptr ? initTree_.get() : &tree_; }
  void ReadMovieBox();
  bool ReadFragment(std::uint64_t offset, const BoxBytes& header, FragmentReader* reader);
  FragmentTrack* TrackOf(std::uint32_t id) override;

  CachedSource media_;
  BoxTree tree_;
  std::unique_ptr<CachedSource> init_;
  std::unique_ptr<BoxTree> initTree_;
  BoxId moov_ = kNoBox;
  std::uint32_t timescale_ = 0;
  std::vector<std::unique_ptr<Track>> tracks_;
  std::unordered_map<std::uint32_t, Track*> byId_;
  SampleProblems problems_;
  bool fragmentsRead_ = false;
  std::uint32_t fragments_ = 0;
  RowKeep keep_;
};

}  // namespace mp4
