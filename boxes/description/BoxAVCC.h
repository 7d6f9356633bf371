#pragma once

#include "boxes/base/BoxBase.h"

/// AVC configuration box "avcC" (ISO/IEC 14496-15). Its payload becomes the current record's
/// extradata. False on a null reader, a negative size, or refused memory.
class MP4JUDGE_API BoxAVCC : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;
};
