#pragma once

#include <cstdint>

#include "boxes/base/BoxBase.h"

/// Track extends box "trex" (ISO/IEC 14496-12 TrackExtendsBox), inside "mvex": what a track's
/// fragments mean where they say nothing themselves.
class MP4JUDGE_API BoxTREX : public BoxBase {
 public:
  /// Reads 24 bytes and moves to the end of the payload, back if the payload is shorter. False for
  /// a null reader or a negative size.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  std::uint32_t track_ID = 0;
  std::uint32_t default_sample_description_index = 0;  ///< 1-based
  std::uint32_t default_sample_duration = 0;           ///< media timescale units
  std::uint32_t default_sample_size = 0;               ///< bytes
  std::uint32_t default_sample_flags = 0;              ///< as in "trun"
};
