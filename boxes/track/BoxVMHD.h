#pragma once

#include "boxes/base/BoxBase.h"

/// Video media header box "vmhd" (ISO/IEC 14496-12 VideoMediaHeaderBox), contained in "minf":
/// passes over its payload.
class MP4JUDGE_API BoxVMHD : public BoxBase {};
