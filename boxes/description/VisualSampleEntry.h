#pragma once

#include <memory>

#include "boxes/description/BoxAVCC.h"
#include "boxes/description/BoxESDS.h"
#include "boxes/description/BoxSTSD.h"

/// VisualSampleEntry, or a QuickTime image description: picture size, compressor name and decoder
/// configuration. Sets the record's format only while that is 0.
class MP4JUDGE_API BoxSTSD::VisualSampleEntry : public BoxSTSD::BaseSampleEntry {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  std::unique_ptr<BoxESDS> esds;
  std::unique_ptr<BoxAVCC> avcc;
};
