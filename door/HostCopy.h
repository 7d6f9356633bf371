#pragma once

#include <cstdint>
#include <vector>

#include "io/CachedSource.h"

namespace mp4 {

/// What the host's judgement looks at of a source: its top-level boxes in their order, those that
/// the host passes over cut down to their headers.
struct HostCopy {
  /// Copies up to `most` bytes of what lies before `end`. May throw bad_alloc.
  static HostCopy Of(CachedSource* source, std::uint64_t end, std::uint64_t most);
  /// The same with every byte, for files whose boxes the host finds elsewhere.
  static HostCopy OfEveryByte(CachedSource* source, std::uint64_t end, std::uint64_t most);

  /// Where a byte of the copy stands in the source.
  std::uint64_t OffsetInSource(std::uint64_t offset) const;

  struct Piece {
    std::uint64_t offset;    ///< in the copy
    std::uint64_t inSource;  ///< the same byte there
  };
  std::vector<unsigned char> bytes;
  std::vector<Piece> pieces;  ///< in order
  bool whole = true;          ///< false when it would be too large, or a read failed
};

}  // namespace mp4
