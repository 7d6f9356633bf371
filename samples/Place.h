#pragma once

#include <cstdint>

namespace mp4 {

/// Offsets from here on are outside of every source, and no sum over some samples wraps below it.
constexpr std::uint64_t kFarOutside = std::uint64_t{1} << 63;

/// Whether what lies `passed` bytes behind an offset is outside of a source: once there, samples do
/// not come back by wrapping.
inline bool IsOutside(std::uint64_t offset, std::uint64_t passed, std::uint64_t sourceSize) {
  return offset >= kFarOutside || passed >= kFarOutside || offset + passed > sourceSize;
}

/// The composition time of a sample.
inline std::int64_t Composed(std::uint64_t decodeTime, std::int32_t offset) {
  return static_cast<std::int64_t>(decodeTime + static_cast<std::uint64_t>(std::int64_t{offset}));
}

}  // namespace mp4
