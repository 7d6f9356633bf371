#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

#include "boxes/base/Mp4Context.h"
#include "io/BulkRead.h"

/// What the boxes of a sample description share.
namespace mp4 {

/// Puts decoder configuration into slot 0 of the record, in place of what was there.
inline void SetExtraData(Mp4Context::TRACK* track, std::unique_ptr<unsigned char[]> bytes,
                         std::size_t size) {
  track->extraData[0] = std::move(bytes);
  track->extraDataSize[0] = static_cast<std::uint32_t>(size);
}

/// Reads `n` bytes as the record's decoder configuration. `extraDataSize` counts the bytes that
/// exist. False, with the slot empty, when memory or the opening's account refuses.
inline bool ReadExtraData(mmStreamReader* reader, long long n, Mp4Context::TRACK* track) {
  SetExtraData(track, nullptr, 0);
  std::size_t held = 0;
  auto bytes = ReadArray(reader, n, &held);
  if (bytes == nullptr) return false;
  SetExtraData(track, std::move(bytes), held);
  return true;
}

}  // namespace mp4
