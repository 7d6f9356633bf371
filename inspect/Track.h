#pragma once

#include "inspect/Findings.h"
#include "inspect/Movie.h"

namespace mp4 {

/// Looks at a TrackBox "trak" (ISO/IEC 14496-12, 8.3.1) and adds it to the report and the facts.
void InspectTrack(Findings* findings, BoxId trak, MovieFacts* movie, Signs* signs);

}  // namespace mp4
