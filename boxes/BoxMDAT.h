#pragma once

#include "boxes/BoxBase.h"

/// Media data box "mdat": passed over.
class MP4JUDGE_API BoxMDAT : public BoxBase {
 public:
  /// Reads nothing: callers fetch sample bytes themselves.
  bool GetSampleData(SAMPLE* /*sample*/) { return true; }
};
