#pragma once

#include "iso/BoxTree.h"
#include "samples/GroupMap.h"

namespace mp4 {

/// The first "seig" map and descriptions below a box.
struct GroupBoxes {
  GroupStretches map;
  GuardDescriptions descriptions;
};

GroupBoxes FindGroupBoxes(BoxTree* tree, BoxId parent);

}  // namespace mp4
