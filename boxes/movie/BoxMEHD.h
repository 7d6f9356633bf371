#pragma once

#include <cstdint>

#include "boxes/base/BoxBase.h"

/// Movie extends header box "mehd" (ISO/IEC 14496-12 MovieExtendsHeaderBox), inside "mvex": the
/// duration of the movie with all its fragments. Kept for the host; the library does not use it.
class MP4JUDGE_API BoxMEHD : public BoxBase {
 public:
  /// Reads 8 bytes (version 0) or 12 (any other) and moves to the end of the payload, back if the
  /// payload is shorter. False for a null reader or a negative size.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  std::uint8_t version = 0;
  std::uint32_t flags = 0;              ///< 24 bits
  std::uint64_t fragment_duration = 0;  ///< movie timescale units
};
