#pragma once

#include <cstdint>

#include "boxes/base/BoxBase.h"

/// Media header box "mdhd" (ISO/IEC 14496-12 MediaHeaderBox), contained in "mdia". Gives the
/// current track's record its timescale, duration and language; an edit list may replace the
/// duration when the track ends.
class MP4JUDGE_API BoxMDHD : public BoxBase {
 public:
  /// False without reader or payload. Without a current track nothing is published.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;
  /// Media units per second, as stored: may be 0.
  unsigned int GetTimescale() { return timescale; }

  std::uint64_t creationTime = 0;      ///< seconds since 1904
  std::uint64_t modificationTime = 0;  ///< seconds since 1904
  std::uint32_t timescale = 0;
  std::uint64_t duration = 0;  ///< media timescale units
  std::uint16_t language = 0;  ///< packed ISO 639-2/T, as stored

 private:
  void Publish(Mp4Context* context) const;
};
