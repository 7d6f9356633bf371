#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "samples/Description.h"
#include "samples/EditList.h"

namespace mp4 {

/// CompositionToDecodeBox ("cslg", 8.6.1.4). Times count in units of the media's timescale.
struct CompositionRange {
  std::int64_t shift = 0;  ///< added to composition times, none is below its decode time
  std::int64_t leastOffset = 0;
  std::int64_t greatestOffset = 0;
  std::int64_t start = 0;  ///< of the sample composed first
  std::int64_t end = 0;    ///< of the sample composed last; 0 when not told
};

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
  std::optional<CompositionRange> composition;

  /// Whether some description is protected.
  bool IsProtected() const;
};

/// Reads a "trak"; `movieScale` is the timescale of edits.
TrackInfo ReadTrackInfo(BoxTree* tree, BoxId trak, std::uint32_t movieScale,
                        SampleProblems* problems);

/// The sample table of a track, or kNoBox.
BoxId SampleTableOf(BoxTree* tree, BoxId trak);

}  // namespace mp4
