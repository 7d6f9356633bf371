#pragma once

#include "iso/ChildLayout.h"

namespace mp4 {

/// Where the child boxes of a sample entry (ISO/IEC 14496-12, 8.5.2; QuickTime sample description)
/// begin. The handler and the format tell; where neither is known, or the boxes do not tile the
/// entry that way, the other usual lengths are tried, and the first that tiles holds. An entry
/// that no length fits is noted (kNoLayoutFits) and walked at its usual one.
ChildLayout SampleEntryLayout(BoxTree* tree, BoxId entry);

/// Whether a box is a sample entry: a child of a SampleDescriptionBox that is none itself.
bool IsSampleEntry(const BoxTree& tree, BoxId id);

/// The handler type (mp4::FourCC order) of the media that a sample description belongs to, 0
/// without one.
std::uint32_t HandlerOf(BoxTree* tree, BoxId sampleDescription);

}  // namespace mp4
