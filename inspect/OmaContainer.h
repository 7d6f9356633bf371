#pragma once

#include "inspect/Findings.h"

namespace mp4 {

/// Looks at an OMADRMContainerBox "odrm" (OMA DRM Content Format 2): protected unless its common
/// headers say that nothing is encrypted.
void InspectOmaContainer(Findings* findings, BoxId odrm);

}  // namespace mp4
