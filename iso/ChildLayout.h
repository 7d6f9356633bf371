#pragma once

#include <cstdint>

#include "iso/Box.h"

namespace mp4 {

class BoxTree;

/// Where the child boxes of a box begin.
struct ChildLayout {
  bool container = false;
  bool compressed = false;    ///< the children lie in what the payload inflates to
  std::uint64_t fixed = 0;    ///< payload bytes in front of them
  std::int64_t counted = -1;  ///< how many the box announces, if it does
};

/// The layout by type, by the parent (a "text" below "stsd" is a sample entry), and by what the
/// payload begins with where versions differ. Unknown types hold no boxes.
ChildLayout LayoutOf(BoxTree* tree, BoxId id);

}  // namespace mp4
