#pragma once

#include <cstdint>

namespace mp4 {

/// A box type, brand, handler or format: the first character is the least significant byte, as a
/// little-endian read of the four file bytes yields it.
constexpr std::uint32_t FourCC(const char (&text)[5]) {
  return static_cast<std::uint32_t>(static_cast<unsigned char>(text[0])) |
         static_cast<std::uint32_t>(static_cast<unsigned char>(text[1])) << 8 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(text[2])) << 16 |
         static_cast<std::uint32_t>(static_cast<unsigned char>(text[3])) << 24;
}

}  // namespace mp4
