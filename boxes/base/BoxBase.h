#pragma once

#include <cstdint>

#include "io/Export.h"
#include "io/mmStreamReader.h"

class Mp4Context;

/// Base of every box. A parent creates the box when it meets its type, has it read its payload, and
/// owns it. A class that does not override ReadData passes over its payload and succeeds.
class MP4JUDGE_API BoxBase {
 public:
  /// One sample of one track, as scheduling hands it on.
  struct SAMPLE {
    std::uint8_t isVideo;    ///< 1 for "vide", 0 for "soun"
    std::uint32_t format;    ///< the track's sample-entry format
    unsigned char* data;     ///< the caller's; only BoxTRAK releases that of its own record
    std::uint32_t dataSize;  ///< the caller's
    std::uint32_t size;      ///< bytes
    std::uint32_t duration;  ///< media timescale units
    std::uint32_t timescale;
    std::uint32_t trackId;
    std::uint64_t offset;  ///< absolute file offset of the first byte
    std::int64_t time;     ///< decode time in media timescale units
  };

  /// Reads the payload. `size` is the box size less the 8-byte header and may be negative in a
  /// broken file; `context` is null for fragment and movie-extends boxes. False on failure.
  virtual bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context);
  virtual ~BoxBase();

  BoxBase() = default;
  BoxBase(const BoxBase&) = delete;
  BoxBase& operator=(const BoxBase&) = delete;
};
