#pragma once

#include <cstdint>
#include <string>

namespace mp4 {

/// Profiles and levels as their standards name them; a number in words for unknown ones.
std::string AvcProfile(std::uint8_t profile, std::uint8_t constraints);
std::string AvcLevel(std::uint8_t level, std::uint8_t constraints);
std::string HevcProfile(std::uint8_t profile);
std::string Av1Profile(std::uint8_t profile);
std::string Av1Level(std::uint8_t index);
std::string Mpeg4VisualProfile(std::uint8_t indication);
/// The objectTypeIndication of a decoder (ISO/IEC 14496-1, table 5).
std::string ObjectTypeName(std::uint8_t type);
/// The audio object type (ISO/IEC 14496-3, table 1.17).
std::string AudioObjectName(unsigned type);
/// "4:2:0" for 1, as chroma_format_idc counts.
const char* ChromaName(unsigned format);

}  // namespace mp4
