#pragma once

#include <cstdint>

#include "io/mmStreamReader.h"

namespace mp4 {

/// The fixed part of an audio sample entry, in the QuickTime form of version 0, 1 or 2 (any other
/// version reads like 0). Format and bits are those of the codec that format and sample size name.
struct SoundDescription {
  std::uint32_t format = 0;
  std::uint32_t channels = 0;
  std::uint32_t sampleRate = 0;  ///< Hz
  std::uint32_t bitsPerSample = 0;
  std::int32_t compressionId = 0;
  /// The packet values are of version 1 and 0 otherwise.
  std::uint32_t samplesPerPacket = 0;
  std::uint32_t bytesPerPacket = 0;
  std::uint32_t bytesPerFrame = 0;
  long long headerSize = 32;  ///< bytes read, the format included
};

/// Reads it from the format on; what the source does not hold reads as zero.
SoundDescription ReadSoundDescription(mmStreamReader* reader);

}  // namespace mp4
