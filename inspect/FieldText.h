#pragma once

#include <cstdint>
#include <string>

namespace mp4 {

/// "2026-11-21T09:30:00Z" for seconds since the beginning of 1904; "unset" for 0.
std::string TimeText(std::uint64_t since1904);
/// The three letters of a packed language code; QuickTime's older codes as their number.
std::string LanguageText(std::uint16_t packed);
/// Two lower-case digits a byte.
std::string HexText(const unsigned char* bytes, std::size_t n);
/// A key id or system id: 32 digits with dashes.
std::string DashedId(const unsigned char* bytes);

}  // namespace mp4
