#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "boxes/BoxBase.h"
#include "boxes/BoxMDIA.h"
#include "boxes/BoxTKHD.h"
#include "boxes/Mp4Context.h"

/// Track box "trak".
class MP4JUDGE_API BoxTRAK : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  void Clear() {}
  bool ReadyToDemux() { return false; }
  bool GetSampleInfo(SAMPLE*) { return false; }
  bool Next() { return false; }
  long long Seek(long long) { return -1; }
  int GetTrackID() { return trackHeaderBox != nullptr ? trackHeaderBox->GetTrackID() : 0; }
  unsigned int GetHandlerType() { return 0; }

  std::unique_ptr<BoxTKHD> trackHeaderBox;
  std::unique_ptr<BoxMDIA> mediaBox;
  std::unique_ptr<SAMPLE> sample;
  std::uint32_t format = 0;
  std::uint8_t hasEditList = 0;
  std::int32_t movieTimescale = 0;
  std::int32_t editIndex = 0;
  std::vector<tagElstItem> editList;
  std::int64_t editDuration = 0;
};
