#pragma once

#include <cstdint>

#include "io/mmStreamReader.h"

namespace mp4 {

/// Header boxes of version 1 hold their times in 64 bits; every other version is read as version 0
/// with 32 bits. ISO/IEC 14496-12 has those two alone.
constexpr bool HasWideTimes(std::uint8_t version) { return version == 1; }

/// A creation or modification time or a duration of a header box.
inline std::uint64_t ReadTime(mmStreamReader* reader, std::uint8_t version) {
  return HasWideTimes(version) ? reader->GetBe64() : reader->GetBe32();
}

}  // namespace mp4
