#pragma once

#include "iso/BoxTree.h"

namespace mp4 {

/// What a "uuid" box is, as far as protection goes: the boxes of the Protected Interoperable File
/// Format that became "pssh", "tenc" and "senc".
enum class UserTypeKind { kOther, kSystem, kTrackEncryption, kSampleEncryption };

/// kOther for boxes of other types, too.
UserTypeKind KindOfUserType(BoxTree* tree, BoxId id);

}  // namespace mp4
