#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "boxes/base/BoxReading.h"
#include "io/BulkRead.h"

namespace mp4 {

/// Reads the rows of a table box into a new buffer. `body` is what the payload holds behind the
/// table's own header; a negative one steps the reader back to the payload's end. Lengths read are
/// 32-bit: what exceeds them is skipped. False when memory or the opening's account refuses.
inline bool ReadTableBody(mmStreamReader* reader, long long body, std::size_t rowBytes,
                          std::unique_ptr<mmBuffer>* rows) {
  constexpr long long kMostRead = 0xFFFFFFFF;
  const long long read = body < 0 ? body : body & kMostRead;
  const bool ok = ReadTable(reader, read, rowBytes, rows);
  if (read != body) reader->Skip(body - read);
  return ok;
}

/// The count a file declares, but no more than the whole rows held. A negative count stays.
inline std::int32_t ClampCount(std::uint32_t declared, const mmBuffer& rows, std::size_t rowBytes) {
  const auto held = static_cast<std::int64_t>(rows.used / rowBytes);
  return static_cast<std::int32_t>(
      std::min<std::int64_t>(static_cast<std::int32_t>(declared), held));
}

/// Makes an empty buffer of `capacity` bytes where there is none; false without memory.
inline bool EnsureBuffer(std::unique_ptr<mmBuffer>* rows, std::size_t capacity) {
  if (*rows != nullptr) return true;
  return WithoutThrowing([&] { *rows = std::make_unique<mmBuffer>(); }) &&
         (*rows)->Allocate(capacity);
}

/// Bytes of a buffer made for the first appended row.
constexpr std::size_t kAppendCapacity = 1024;

}  // namespace mp4
