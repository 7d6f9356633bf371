#pragma once

#include "boxes/base/BoxBase.h"

/// Edit box "edts" (ISO/IEC 14496-12 EditBox): passes over its payload. The track box does not use
/// it and reads the edit list itself.
class MP4JUDGE_API BoxEDTS : public BoxBase {};
