#pragma once

#include "boxes/base/BoxBase.h"

/// QuickTime sound decompression atom "wave". It tells the byte order of integer PCM, and as a
/// whole is the extradata of a "QDM2" track; other children are not parsed. False on a null reader
/// or context, a size below 1, or refused memory. One step per 8 bytes that exist.
class MP4JUDGE_API BoxWAVE : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;
};
