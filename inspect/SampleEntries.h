#pragma once

#include "inspect/Findings.h"

namespace mp4 {

/// Looks at every sample entry of a SampleDescriptionBox "stsd" (ISO/IEC 14496-12, 8.5.2): adds
/// them to the track and says what protects them, or what may hide that. Returns how many.
std::uint64_t InspectSampleEntries(Findings* findings, BoxId stsd, ReportTrack* track);

}  // namespace mp4
