#pragma once

#include <memory>

#include "boxes/base/BoxBase.h"
#include "boxes/track/BoxDINF.h"
#include "boxes/track/BoxSMHD.h"
#include "boxes/track/BoxSTBL.h"
#include "boxes/track/BoxVMHD.h"

/// Media information box "minf" (ISO/IEC 14496-12 MediaInformationBox), contained in "mdia". Owns
/// the sample table and hands iteration down to it. Times are media timescale units.
class MP4JUDGE_API BoxMINF : public BoxBase {
 public:
  ~BoxMINF() override;

  /// False without reader, context or payload, when a child fails, or without a sample table. A
  /// repeated child replaces the earlier one.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;
  void Clear();

  /// The three below are false without a sample table.
  bool ReadyToDemux(SAMPLE* sample);
  bool GetSampleInfo(SAMPLE* sample);
  bool Next();
  /// Returns the media time reached, -1 without a sample table.
  long long Seek(long long mediaTime);

  std::unique_ptr<BoxVMHD> videoHeaderBox;
  std::unique_ptr<BoxSMHD> soundHeaderBox;
  std::unique_ptr<BoxDINF> dataInformationBox;
  std::unique_ptr<BoxSTBL> sampleTableBox;
};
