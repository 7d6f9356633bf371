#pragma once

#include <cstddef>
#include <cstdint>

namespace mp4 {

class Track;

/// Arrays of the caller's that receive samples column by column. Null columns are left out.
struct SampleColumns {
  static constexpr std::uint8_t kSync = 1;
  static constexpr std::uint8_t kProtected = 2;
  static constexpr std::uint8_t kOutside = 4;
  static constexpr std::uint8_t kElsewhere = 8;
  static constexpr std::uint8_t kPartialSync = 16;
  static constexpr std::uint8_t kSyncUnknown = 32;
  static constexpr std::uint8_t kProtectionUnknown = 64;

  std::uint64_t* offsets = nullptr;
  std::uint32_t* sizes = nullptr;
  std::int64_t* decodeTimes = nullptr;
  std::int64_t* compositionTimes = nullptr;
  std::uint32_t* durations = nullptr;
  std::uint8_t* flags = nullptr;
};

/// Fills the columns with up to `most` samples from number `first` on, 1-based. Returns how many.
std::size_t FillColumns(Track* track, std::uint64_t first, std::size_t most,
                        const SampleColumns& columns);

}  // namespace mp4
