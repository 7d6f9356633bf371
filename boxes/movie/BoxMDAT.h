#pragma once

#include "boxes/base/BoxBase.h"

/// Media data box "mdat" (ISO/IEC 14496-12 MediaDataBox): passes over its payload.
class MP4JUDGE_API BoxMDAT : public BoxBase {
 public:
  /// Reads nothing and succeeds: callers fetch sample bytes themselves.
  bool GetSampleData(SAMPLE* /*sample*/) { return true; }
};
