#pragma once

#include "boxes/base/BoxBase.h"

/// Sound media header box "smhd" (ISO/IEC 14496-12 SoundMediaHeaderBox), contained in "minf":
/// passes over its payload.
class MP4JUDGE_API BoxSMHD : public BoxBase {};
