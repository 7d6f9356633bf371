#pragma once

#include <memory>

#include "demux/Mp4Demux.h"

namespace mp4 {

/// A buffer for blocks of up to `largest` bytes; of capacity 0 when none is needed or none that
/// large can be had. Its memory is taken as it is written. Null without memory for the record.
std::unique_ptr<Mp4BlockBuffer> MakeBlockBuffer(int largest);

}  // namespace mp4
