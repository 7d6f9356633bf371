#pragma once

#include <cstddef>
#include <cstdint>

#include "iso/FieldView.h"

namespace mp4 {

/// A box among bytes at hand.
struct BoxBytes {
  std::uint32_t type = 0;                   ///< in the order of mp4::FourCC
  std::uint64_t at = 0;                     ///< of its header, from the start of the bytes
  std::uint64_t size = 0;                   ///< header included, cut to what is there
  std::uint8_t headerSize = 0;              ///< a user type included
  bool cut = false;                         ///< its size goes past the end
  const unsigned char* userType = nullptr;  ///< 16 bytes of a "uuid" box
  FieldView payload;                        ///< as far as it is there
};

/// Reads one header (ISO/IEC 14496-12, 4.2) at the front of `n` bytes at hand, of `left` that the
/// parent has. False when no box begins there. The payload is that within the `n` bytes.
bool ReadBoxAt(const unsigned char* bytes, std::size_t n, std::uint64_t left, BoxBytes* box);

/// The boxes of one parent whose bytes lie in one piece, one after the other: for boxes that come
/// in great numbers, of which a tree would keep more than their bytes.
class BoxRun {
 public:
  BoxRun(const unsigned char* bytes, std::size_t n) : bytes_(bytes), size_(n) {}
  explicit BoxRun(FieldView payload)
      : BoxRun(payload.Left() > 0 ? payload.Bytes(0) : nullptr, payload.Left()) {}

  /// The next box; false at the end, or where nothing more can be read.
  bool Next(BoxBytes* box);

 private:
  const unsigned char* bytes_;
  std::size_t size_;
  std::size_t at_ = 0;
};

}  // namespace mp4
