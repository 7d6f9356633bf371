#pragma once

#include <cstdint>

#include "boxes/base/BoxBase.h"

/// Movie header box "mvhd" (ISO/IEC 14496-12): the movie's timescale and duration, which also go
/// to the context. Rate, volume, matrix and next track ID are not read.
class MP4JUDGE_API BoxMVHD : public BoxBase {
 public:
  /// False without reader or payload.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  std::uint64_t creationTime = 0;      ///< seconds since 1904-01-01
  std::uint64_t modificationTime = 0;  ///< likewise
  std::uint32_t timescale = 0;         ///< units per second, at least 1 once read
  std::uint64_t duration = 0;          ///< movie timescale units
};
