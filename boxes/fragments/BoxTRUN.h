#pragma once

#include <cstdint>

#include "boxes/base/BoxBase.h"
#include "io/LazyArray.h"

/// One sample of a track run; a field the run does not carry is 0.
struct TrunEntry {
  std::uint32_t duration;  ///< media timescale units
  std::uint32_t size;      ///< bytes
  std::uint32_t flags;
  std::uint32_t composition_offset;  ///< kept for the host; merging does not use it
};

/// Track run box "trun" (ISO/IEC 14496-12 TrackRunBox), inside "traf": samples that lie one behind
/// the other in the file.
class MP4JUDGE_API BoxTRUN : public BoxBase {
 public:
  enum : std::uint32_t {
    kDataOffset = 0x000001,
    kFirstSampleFlags = 0x000004,
    kSampleDuration = 0x000100,
    kSampleSize = 0x000200,
    kSampleFlags = 0x000400,
    kSampleCompositionOffset = 0x000800,
  };

  /// Reads the header and the entries, however many the count claims, behind the payload's end if
  /// need be, and moves to the payload's end. False for a null reader, a negative size, more than
  /// limits::kMostRunSamples samples, or a refusal of memory or of the opening's account. Linear in
  /// the bytes that exist. An opening that only judges passes the entries over.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  std::uint8_t version = 0;
  std::uint32_t tr_flags = 0;  ///< 24 bits
  std::uint32_t sample_count = 0;
  std::uint32_t data_offset = 0;         ///< a signed number of bytes, as read
  std::uint32_t first_sample_flags = 0;  ///< for the first sample when entries have no flags
  /// `sample_count` entries; null when there are none or they were passed over.
  mp4::LazyArray<TrunEntry> entries;
  /// How many of the last entries have no byte in the source: all their fields are 0.
  std::uint32_t absentEntries = 0;

 private:
  bool ReadEntries(mmStreamReader* reader);
  void DecodeEntries(mmStreamReader* reader, long long bytes);
};
