#pragma once

#include "door/MovieInfo.h"
#include "iso/BoxTree.h"
#include "samples/Description.h"

namespace mp4 {

/// What a sample entry and the configuration boxes in it say. May throw bad_alloc.
CodecInfo CodecOf(BoxTree* tree, BoxId entry, const Description& description);

}  // namespace mp4
