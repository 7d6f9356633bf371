#pragma once

#include <cstdint>

#include "io/mmStreamReader.h"

namespace mp4 {

/// Version and flags of a full box (ISO/IEC 14496-12 FullBox).
///
/// There are three ways past them because a seek may go past the end of a file where a read stays
/// at it. Hosts see where a box that is cut there leaves the reader, so each box keeps its way.
struct FullBoxHeader {
  std::uint8_t version;
  std::uint32_t flags;
};

/// Reads both.
inline FullBoxHeader ReadFullBoxHeader(mmStreamReader* reader) {
  const std::uint8_t version = reader->GetByte();
  return {version, reader->GetBe24()};
}

/// Reads the version and seeks over the flags.
inline std::uint8_t ReadVersion(mmStreamReader* reader) {
  const std::uint8_t version = reader->GetByte();
  reader->Skip(3);
  return version;
}

/// Seeks over both.
inline void SkipFullBoxHeader(mmStreamReader* reader) { reader->Skip(4); }

}  // namespace mp4
