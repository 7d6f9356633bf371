#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include "iso/BoxTree.h"
#include "iso/FieldView.h"

namespace mp4 {

/// ItemInfoEntry "infe" (ISO/IEC 14496-12, 8.11.6).
struct ItemInfo {
  std::uint32_t id = 0;
  std::uint16_t protection = 0;  ///< 1-based among the "sinf" boxes of "ipro"; 0: not protected
  std::uint32_t type = 0;        ///< mp4::FourCC order; 0 in versions 0 and 1
};

/// False when the payload ends before these fields do, or its version is unknown.
bool ReadItemInfo(FieldView payload, ItemInfo* item);

/// From which item to which: the references of one type.
using ItemReferences = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

/// Adds the references of a SingleItemTypeReferenceBox, a child of an ItemReferenceBox "iref"
/// (8.11.12). False when it ends before its last reference does.
bool ReadItemReferences(BoxTree* tree, BoxId reference, ItemReferences* references);

}  // namespace mp4
