#pragma once

#include <memory>

#include "boxes/BoxBase.h"
#include "boxes/BoxDINF.h"
#include "boxes/BoxSMHD.h"
#include "boxes/BoxSTBL.h"
#include "boxes/BoxVMHD.h"

/// Media information box "minf".
class MP4JUDGE_API BoxMINF : public BoxBase {
 public:
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override {
    return BoxBase::ReadData(reader, size, context);
  };
  void Clear() {}
  bool ReadyToDemux(SAMPLE*) { return false; }
  bool GetSampleInfo(SAMPLE*) { return false; }
  bool Next() { return false; }
  long long Seek(long long) { return 0; }

  std::unique_ptr<BoxVMHD> videoHeaderBox;
  std::unique_ptr<BoxSMHD> soundHeaderBox;
  std::unique_ptr<BoxDINF> dataInformationBox;
  std::unique_ptr<BoxSTBL> sampleTableBox;
};
