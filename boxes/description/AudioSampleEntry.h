#pragma once

#include <memory>

#include "boxes/description/BoxESDS.h"
#include "boxes/description/BoxSTSD.h"
#include "boxes/description/BoxWAVE.h"

/// AudioSampleEntry, or a QuickTime sound description of version 0 to 2. Always sets the record's
/// format; one child is read, which in QuickTime files is searched for. The search costs one step
/// per 4 bytes that exist.
class MP4JUDGE_API BoxSTSD::AudioSampleEntry : public BoxSTSD::BaseSampleEntry {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  std::unique_ptr<BoxWAVE> wave;
  std::unique_ptr<BoxESDS> esds;
};
