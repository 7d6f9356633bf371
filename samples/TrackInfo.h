#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "samples/Description.h"
#include "samples/EditList.h"

namespace mp4 {

/// What the boxes of a track (ISO/IEC 14496-12, 8.3) say of it besides its samples.
struct TrackInfo {
  std::uint32_t id = 0;
  bool inMovie = true;        ///< false: fragments alone name the track
  std::uint32_t handler = 0;  ///< in the order of mp4::FourCC; 0 when not told
  std::uint32_t timescale = 0;
  std::optional<std::uint64_t> duration;  ///< of the media header, in media units
  std::string language;                   ///< three letters, a longer tag, or "mac:N"; may be empty
  double width = 0;                       ///< presentation size of the track header
  double height = 0;
  std::vector<Description> descriptions;
  EditTimeline timeline;

  /// Whether some description is protected.
  bool IsProtected() const;
};

/// Reads a "trak"; `movieScale` is the timescale of edits.
TrackInfo ReadTrackInfo(BoxTree* tree, BoxId trak, std::uint32_t movieScale,
                        SampleProblems* problems);

/// The sample table of a track, or kNoBox.
BoxId SampleTableOf(BoxTree* tree, BoxId trak);

}  // namespace mp4
