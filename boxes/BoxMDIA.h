#pragma once

#include <memory>

#include "boxes/BoxBase.h"
#include "boxes/BoxHDLR.h"
#include "boxes/BoxMDHD.h"
#include "boxes/BoxMINF.h"

/// Media box "mdia".
class MP4JUDGE_API BoxMDIA : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  void Clear() {}
  unsigned int GetTimescale() {
    return mediaHeaderBox != nullptr ? mediaHeaderBox->GetTimescale() : 1;
  }
  bool ReadyToDemux(SAMPLE*) { return false; }
  bool GetSampleInfo(SAMPLE*) { return false; }
  bool Next() { return false; }
  long long Seek(long long) { return 0; }

  std::unique_ptr<BoxMDHD> mediaHeaderBox;
  std::unique_ptr<BoxHDLR> handlerBox;
  std::unique_ptr<BoxMINF> mediaInformationBox;
};
