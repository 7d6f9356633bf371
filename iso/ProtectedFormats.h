#pragma once

#include <cstdint>

namespace mp4 {

/// What the format of a sample entry says by itself (mp4::FourCC order).
enum class FormatKind : std::uint8_t {
  kOther,
  kProtected,   ///< for protected media only
  kAudible,     ///< the same with its "adrm" box
  kReserved,    ///< for protected media, but with a scheme beside it
  kReceived,    ///< packets as they were received, encrypted for the way
  kSent,        ///< instructions for packets that are encrypted for the way
  kRestricted,  ///< restricted, which is no protection (ISO/IEC 14496-12, 8.15)
  kIncomplete,  ///< an incomplete track (8.17)
};

FormatKind KindOfFormat(std::uint32_t format);

/// Whether only protected media has entries of such a format, scheme or not.
bool IsForProtectedMedia(FormatKind kind);

}  // namespace mp4
