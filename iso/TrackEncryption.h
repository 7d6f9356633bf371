#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "iso/FieldView.h"

namespace mp4 {

/// TrackEncryptionBox "tenc" (ISO/IEC 23001-7, 8.2) and its PIFF form, a "uuid" box.
struct TrackEncryption {
  bool isProtected = false;
  std::uint8_t ivSize = 0;
  std::uint8_t cryptBlocks = 0;  ///< version 1: 16-byte blocks of the pattern
  std::uint8_t skipBlocks = 0;
  std::array<std::uint8_t, 16> keyId{};
  std::vector<std::uint8_t> constantIv;
};

/// False when the payload ends before the key id does, or its version is unknown.
bool ReadTrackEncryption(FieldView payload, TrackEncryption* encryption);
/// The PIFF form: the payload behind the user type.
bool ReadPiffTrackEncryption(FieldView payload, TrackEncryption* encryption);

}  // namespace mp4
