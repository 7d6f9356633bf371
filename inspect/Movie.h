#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "inspect/Findings.h"

namespace mp4 {

class Signs;

/// What the movie boxes of a file say about a track.
struct TrackFacts {
  std::uint64_t entries = 0;       ///< sample entries seen
  std::uint32_t defaultEntry = 1;  ///< 1-based, of its fragments (TrackExtendsBox)
  bool isProtected = false;
};

/// A track of object descriptors, to be read once all tracks are known.
struct ObjectTrack {
  BoxId trak;
  std::vector<BoxId> sampleTables;  ///< one, unless the track is broken
};

/// A pointer to an IPMP descriptor, to be followed once all descriptors are known.
struct IpmpUse {
  BoxId box;  ///< that holds the pointer
  Subject subject;
  std::uint32_t pointer;
};

struct MovieFacts {
  bool seen = false;          ///< whether there was a movie box at all
  bool hasFragments = false;  ///< whether one announces fragments (MovieExtendsBox)
  /// Ordered: numbers from a file can be chosen so that they all hash alike.
  std::map<std::uint32_t, TrackFacts> tracks;  ///< by id
  std::vector<ObjectTrack> objectTracks;
  std::map<std::uint32_t, std::string> ipmpSchemes;  ///< of IPMP descriptors, by number
  std::vector<IpmpUse> ipmpUses;
};

/// Looks at a MovieBox "moov" (ISO/IEC 14496-12, 8.2.1), plain or compressed: all tracks with all
/// their sample entries, protection systems, and items.
void InspectMovie(Findings* findings, BoxId moov, MovieFacts* movie, Signs* signs);

}  // namespace mp4
