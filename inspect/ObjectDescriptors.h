#pragma once

#include "inspect/Findings.h"
#include "inspect/Movie.h"

namespace mp4 {

/// Reads the few samples of an object descriptor track (ISO/IEC 14496-14, 3.1; ISO/IEC 14496-1,
/// 7.2.5) and protects the tracks that an IPMP pointer names. The scheme stands in the IPMP
/// descriptor of that number, in a "sinf" box, as Marlin files have it.
void InspectObjectDescriptors(Findings* findings, const ObjectTrack& track, MovieFacts* movie);

}  // namespace mp4
