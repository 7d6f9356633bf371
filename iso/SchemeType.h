#pragma once

#include <cstdint>
#include <string>

#include "iso/FieldView.h"

namespace mp4 {

/// SchemeTypeBox "schm" (ISO/IEC 14496-12, 8.12.6). Also the short form of the Marlin object
/// descriptors, whose version has 16 bits.
struct SchemeType {
  std::uint32_t type = 0;  ///< mp4::FourCC order
  std::uint32_t version = 0;
  std::string uri;  ///< up to a zero or the end of the box
};

/// False when the payload ends before the scheme does; a version cut off counts as 0.
bool ReadSchemeType(FieldView payload, SchemeType* scheme);

}  // namespace mp4
