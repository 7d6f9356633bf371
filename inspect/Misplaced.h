#pragma once

#include "inspect/Findings.h"

namespace mp4 {

/// Whether this is the type of a box through which the way to a sample entry, an item or a scheme
/// leads.
bool IsOnTheWay(std::uint32_t type);

/// Whether this is the type of a box that stands around sample entries, and is none.
bool IsBoxBesideEntries(std::uint32_t type);

/// Doubts a child box that is none of those its parent's walk knows when it could be a broken
/// twin of one that matters: a track's box outside its parent, or a box of unknown type that
/// holds such boxes.
void CheckUnknownBox(Findings* findings, BoxId box);

/// Whether behind `from` payload bytes of a box another one begins that is on the way: its size may
/// be wrong then, and cover its siblings.
bool CoversBoxOnTheWay(BoxTree* tree, BoxId box, std::uint64_t from);

/// Whether a child of a sample entry begins like a "sinf" box of another type.
bool LooksLikeSchemeInfo(BoxTree* tree, BoxId box);

}  // namespace mp4
