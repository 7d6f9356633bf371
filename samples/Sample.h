#pragma once

#include <cstdint>

namespace mp4 {

/// A statement that a file may also leave open.
enum class Told : std::uint8_t { kNo, kYes, kUnknown };

/// One sample of a track (ISO/IEC 14496-12, 3.1.21): where it is, when it is, what is said of it.
/// Times count in units of the media's timescale.
struct Sample {
  std::uint64_t number = 0;  ///< 1-based within the track
  std::uint64_t offset = 0;  ///< of the first byte, in the media source
  std::int64_t decodeTime = 0;
  std::int64_t compositionTime = 0;
  std::uint32_t size = 0;  ///< bytes
  std::uint32_t duration = 0;
  std::uint32_t description = 0;  ///< 1-based sample description, 0 when nothing names it
  std::uint32_t fragment = 0;     ///< 1-based among the movie fragments, 0 for the movie box
  Told sync = Told::kUnknown;
  Told isProtected = Told::kUnknown;
  /// is_leading, sample_depends_on, sample_is_depended_on, sample_has_redundancy: two bits each
  /// from the highest on (SampleDependencyTypeBox); 0 where nothing is said.
  std::uint8_t depends = 0;
  bool outside = false;      ///< not all of its bytes lie in the media source
  bool elsewhere = false;    ///< its data reference names another file
  bool partialSync = false;  ///< QuickTime: in the partial sync table
};

}  // namespace mp4
