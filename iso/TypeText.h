#pragma once

#include <cstdint>
#include <string>

namespace mp4 {

/// The four characters of a type (mp4::FourCC order), with \xHH for each that is not printable
/// ASCII, and for '\', '/', '[' and ']'.
void AppendType(std::uint32_t type, std::string* text);
/// Whether all four are printable, as those of real types are; QuickTime has the sign \xA9, too.
bool IsTypeText(std::uint32_t type);
std::string TypeText(std::uint32_t type);

}  // namespace mp4
