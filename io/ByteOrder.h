#pragma once

#include <cstdint>
#include <cstring>

namespace mp4 {

/// Loads of unaligned file bytes. The caller owns the bounds.
inline std::uint32_t LoadBe16(const unsigned char* p) {
  return static_cast<std::uint32_t>(p[0]) << 8 | p[1];
}

inline std::uint32_t LoadBe32(const unsigned char* p) {
  std::uint32_t v;
  std::memcpy(&v, p, sizeof v);
#if __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
  v = __builtin_bswap32(v);
#endif
  return v;
}

inline std::uint64_t LoadBe64(const unsigned char* p) {
  return static_cast<std::uint64_t>(LoadBe32(p)) << 32 | LoadBe32(p + 4);
}

inline std::uint32_t LoadLe32(const unsigned char* p) {
  return static_cast<std::uint32_t>(p[0]) | static_cast<std::uint32_t>(p[1]) << 8 |
         static_cast<std::uint32_t>(p[2]) << 16 | static_cast<std::uint32_t>(p[3]) << 24;
}

inline void StoreBe32(unsigned char* p, std::uint32_t v) {
  p[0] = static_cast<unsigned char>(v >> 24);
  p[1] = static_cast<unsigned char>(v >> 16);
  p[2] = static_cast<unsigned char>(v >> 8);
  p[3] = static_cast<unsigned char>(v);
}

inline void StoreBe64(unsigned char* p, std::uint64_t v) {
  StoreBe32(p, static_cast<std::uint32_t>(v >> 32));
  StoreBe32(p + 4, static_cast<std::uint32_t>(v));
}

inline void StoreLe32(unsigned char* p, std::uint32_t v) {
  p[0] = static_cast<unsigned char>(v);
  p[1] = static_cast<unsigned char>(v >> 8);
  p[2] = static_cast<unsigned char>(v >> 16);
  p[3] = static_cast<unsigned char>(v >> 24);
}

}  // namespace mp4
