#pragma once

#include "inspect/Findings.h"
#include "inspect/Movie.h"

namespace mp4 {

struct EntriesSeen {
  std::uint64_t count = 0;
  bool anyOfObjects = false;  ///< whether one has object descriptors for samples
};

/// Looks at every sample entry of a SampleDescriptionBox "stsd" (ISO/IEC 14496-12, 8.5.2): adds
/// them to the track and says what protects them, or what may hide that. IPMP pointers of their
/// streams are kept with the movie.
EntriesSeen InspectSampleEntries(Findings* findings, BoxId stsd, ReportTrack* track,
                                 MovieFacts* movie);

}  // namespace mp4
