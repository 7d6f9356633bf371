#pragma once

#include <memory>

#include "boxes/base/BoxBase.h"
#include "boxes/track/BoxHDLR.h"
#include "boxes/track/BoxMDHD.h"
#include "boxes/track/BoxMINF.h"

/// Media box "mdia" (ISO/IEC 14496-12 MediaBox), contained in "trak". Owns the media header, the
/// handler and the media information, and hands iteration down to the sample table. Times are media
/// timescale units.
class MP4JUDGE_API BoxMDIA : public BoxBase {
 public:
  ~BoxMDIA() override;

  /// False without reader or context, below 4 bytes, when a child fails, or when one of the three
  /// children is missing. A repeated child replaces the earlier one.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;
  void Clear();

  /// The media header's timescale, 1 without one.
  unsigned int GetTimescale();
  /// Puts the sample table on its first sample and fills in the sample's timescale and `isVideo`.
  /// False when a child or the sample is missing, or for a track that is neither audio nor video.
  bool ReadyToDemux(SAMPLE* sample);
  /// Fills in the current sample; false when a child or the sample is missing.
  bool GetSampleInfo(SAMPLE* sample);
  /// Goes to the next sample; false at the end or when a child is missing.
  bool Next();
  /// Returns the media time reached, 0 without media information.
  long long Seek(long long mediaTime);

  std::unique_ptr<BoxMDHD> mediaHeaderBox;
  std::unique_ptr<BoxHDLR> handlerBox;
  std::unique_ptr<BoxMINF> mediaInformationBox;

 private:
  bool IsComplete() const {
    return mediaHeaderBox != nullptr && handlerBox != nullptr && mediaInformationBox != nullptr;
  }
};
