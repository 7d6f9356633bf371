#pragma once

#include <cstdint>

#include "iso/FieldView.h"

namespace mp4 {

/// What an elementary stream descriptor (ISO/IEC 14496-1, 7.2.6.5) says about its decoder.
struct DecoderConfig {
  bool found = false;
  std::uint8_t objectType = 0;
  std::uint8_t streamType = 0;
  std::uint32_t bufferSize = 0;
  std::uint32_t maximumBitrate = 0;  ///< bits a second
  std::uint32_t averageBitrate = 0;
  /// Of an AudioSpecificConfig (ISO/IEC 14496-3, 1.6.2.1); 0 without one.
  unsigned audioObject = 0;
  std::uint32_t sampleRate = 0;
  unsigned channels = 0;
  /// profile_and_level_indication of MPEG-4 Visual; 0 without one.
  std::uint8_t visualProfile = 0;
};

/// `fields` stands at the descriptor, behind version and flags of its box.
DecoderConfig ReadDecoderConfig(FieldView fields);

}  // namespace mp4
