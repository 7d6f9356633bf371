#pragma once

#include <cstdint>

#include "boxes/base/BoxBase.h"

/// Track fragment header box "tfhd" (ISO/IEC 14496-12 TrackFragmentHeaderBox), inside "traf": the
/// track a fragment belongs to and its defaults, each present when its bit says so. A fragment's
/// start is never taken as the base of its offsets: bit 0x020000, default-base-is-moof in the
/// standard, has no effect.
class MP4JUDGE_API BoxTFHD : public BoxBase {
 public:
  enum : std::uint32_t {
    kBaseDataOffset = 0x000001,
    kSampleDescriptionIndex = 0x000002,
    kDefaultSampleDuration = 0x000008,
    kDefaultSampleSize = 0x000010,
    kDefaultSampleFlags = 0x000020,
    kDurationIsEmpty = 0x010000,
  };

  /// Reads the fields whose bits are set and moves to the end of the payload, back if the payload
  /// is shorter. Read again, it replaces the first three fields and those whose bits are set. False
  /// for a null reader or a negative size.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  std::uint8_t version = 0;
  std::uint32_t tf_flags = 0;  ///< 24 bits
  std::uint32_t track_ID = 0;
  std::uint64_t base_data_offset = 0;          ///< absolute file offset
  std::uint32_t sample_description_index = 0;  ///< 1-based
  std::uint32_t default_sample_duration = 0;   ///< media timescale units
  std::uint32_t default_sample_size = 0;       ///< bytes
  std::uint32_t default_sample_flags = 0;      ///< as in "trun"
  bool duration_is_empty = false;
};
