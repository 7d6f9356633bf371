#pragma once

#include "inspect/Findings.h"

namespace mp4 {

/// Looks at the items of a MetaBox "meta" (ISO/IEC 14496-12, 8.11), or of all those in an
/// AdditionalMetadataContainerBox "meco": which of them a protection index protects (ISO/IEC
/// 23008-12 for images), or a reference to such an item. Returns how many there are.
std::uint64_t InspectItems(Findings* findings, BoxId box);

}  // namespace mp4
