#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "iso/BoxRun.h"
#include "samples/Description.h"
#include "samples/FragmentRuns.h"
#include "samples/SampleProblem.h"

namespace mp4 {

/// Defaults of a track's fragments (TrackExtendsBox "trex", ISO/IEC 14496-12, 8.8.3).
struct FragmentDefaults {
  std::uint32_t description = 0;
  std::uint32_t duration = 0;
  std::uint32_t size = 0;
  std::uint32_t flags = 0;
};

/// What reading a track's fragments needs of it, and what it leaves there.
struct FragmentTrack {
  std::optional<FragmentDefaults> defaults;
  const std::vector<Description>* descriptions = nullptr;
  const GuardDescriptions* movieGuards = nullptr;  ///< null without any
  std::uint64_t time = 0;                          ///< where the next run begins
  bool noDefaultsNoted = false;
  FragmentRuns runs;
  SampleProblems* problems = nullptr;
};

/// Finds tracks by their id.
class FragmentTracks {
 public:
  virtual ~FragmentTracks() = default;
  /// The track, made when no track box has the id; null when there are too many.
  virtual FragmentTrack* TrackOf(std::uint32_t id) = 0;
};

/// Reads movie fragments ("moof", 8.8.4) into runs.
class FragmentReader {
 public:
  /// `keep` receives rows; null when the bytes read from stay where they are. All are borrowed.
  FragmentReader(FragmentTracks* tracks, RowKeep* keep, SampleProblems* problems)
      : tracks_(tracks), keep_(keep), problems_(problems) {}

  /// Reads the payload of a "moof" whose header is at `offset`; fragments count from 1.
  void Read(FieldView payload, std::uint64_t offset, std::uint32_t fragment);

 private:
  /// A track fragment (8.8.6) while its runs are read.
  struct TrackFragment;

  void ReadTrackFragment(FieldView payload);
  void ReadRun(TrackFragment* fragment, FieldView fields);
  void AddRuns(TrackFragment* fragment, FragmentRun run, bool listed);
  void Guards(TrackFragment* fragment);
  std::uint32_t ExtraFor(TrackFragment* fragment, FragmentRun* run);

  FragmentTracks* tracks_;
  RowKeep* keep_;
  SampleProblems* problems_;
  std::uint64_t moof_ = 0;
  std::uint32_t number_ = 0;
  /// Where an implicit base begins; none once that cannot be told.
  std::optional<std::uint64_t> dataEnd_;
};

}  // namespace mp4
