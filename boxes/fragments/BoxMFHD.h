#pragma once

#include <cstdint>

#include "boxes/base/BoxBase.h"

/// Movie fragment header box "mfhd" (ISO/IEC 14496-12 MovieFragmentHeaderBox), inside "moof".
class MP4JUDGE_API BoxMFHD : public BoxBase {
 public:
  /// Reads 8 bytes and moves to the end of the payload, back if the payload is shorter. False for a
  /// null reader or a negative size.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  std::uint32_t sequence_number = 0;  ///< kept for the host; fragments merge in file order
};
