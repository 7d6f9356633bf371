#pragma once

#include "inspect/Findings.h"

namespace mp4 {

/// Adds a ProtectionSystemSpecificHeaderBox "pssh" (ISO/IEC 23001-7, 8.1) or its PIFF form to the
/// report's systems; a repetition is not added. False for other boxes.
bool InspectSystem(Findings* findings, BoxId box);

}  // namespace mp4
