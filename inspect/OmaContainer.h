#pragma once

#include "inspect/Findings.h"

namespace mp4 {

/// Looks at an OMADRMContainerBox "odrm" (OMA DRM Content Format 2): protected when its common
/// headers name an encryption. What an unencrypted one holds is not looked at.
void InspectOmaContainer(Findings* findings, BoxId odrm);

}  // namespace mp4
