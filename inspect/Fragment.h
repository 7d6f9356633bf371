#pragma once

#include "inspect/Findings.h"
#include "inspect/Signs.h"

namespace mp4 {

/// The track and sample entry that a TrackFragmentBox uses, to be checked once all movie boxes
/// were looked at.
struct FragmentUse {
  BoxId box;
  std::uint32_t track;
  std::uint32_t entry;  ///< 1-based; 0: the default of the track
};

/// Looks at a MovieFragmentBox "moof" (ISO/IEC 14496-12, 8.8.4).
class Fragments {
 public:
  Fragments(Findings* findings, Signs* signs) : findings_(findings), signs_(signs) {}

  void Inspect(BoxId moof);
  /// Doubts fragments of tracks or sample entries that no movie box has.
  void Check(const MovieFacts& movie);

 private:
  void LookAtTrack(BoxId traf);
  void LookAtHeader(BoxId tfhd, std::uint32_t* track);

  Findings* findings_;
  Signs* signs_;
  std::vector<FragmentUse> uses_;
  std::set<std::uint64_t> seen_;
};

}  // namespace mp4
