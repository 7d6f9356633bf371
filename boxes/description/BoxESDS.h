#pragma once

#include "boxes/base/BoxBase.h"

/// MPEG-4 elementary stream descriptor box "esds" (ISO/IEC 14496-14 ESDBox). The decoder specific
/// info becomes the current record's extradata; an MP3, MPEG-1 or MPEG-2 video object type replaces
/// the record's format. False on a null reader, a size below 1, or refused memory.
class MP4JUDGE_API BoxESDS : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;
};
