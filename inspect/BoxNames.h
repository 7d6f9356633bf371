#pragma once

#include <cstdint>
#include <string_view>

namespace mp4 {

/// What a standard calls a box, and where it describes it. Both empty when no entry is known.
struct BoxName {
  std::string_view name;      ///< "Movie Fragment Box"
  std::string_view standard;  ///< "ISO/IEC 14496-12, 8.8.4"
};

/// By type and by the parent's type (mp4::FourCC order), since a "text" below "stsd" is a sample
/// entry and a "desc" below "ilst" a tag. `parent` is 0 at the top level.
BoxName NameOfBox(std::uint32_t type, std::uint32_t parent);

/// What a sample entry's format stands for, as people say it: "H.264/AVC" for "avc1". Empty for
/// unknown ones, and for formats that only say that the media is protected.
std::string_view NameOfFormat(std::uint32_t format);

/// What a metadata item below "ilst" holds: "Title" for "\xA9nam". Empty for unknown ones.
std::string_view NameOfTag(std::uint32_t type);

}  // namespace mp4
