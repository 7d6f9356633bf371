#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "iso/FieldView.h"

namespace mp4 {

/// ProtectionSystemSpecificHeaderBox "pssh" (ISO/IEC 23001-7, 8.1). Its PIFF form is the same
/// behind the user type.
struct ProtectionSystem {
  std::array<std::uint8_t, 16> id{};
  std::vector<std::array<std::uint8_t, 16>> keyIds;
  std::uint32_t dataSize = 0;  ///< as stated
};

/// False when the payload at hand ends before the size of the data does; the system's id and the
/// key ids that are there are read all the same.
bool ReadProtectionSystem(FieldView payload, ProtectionSystem* system);

}  // namespace mp4
