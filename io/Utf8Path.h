#pragma once

#include <array>

namespace mp4 {

/// Size of the buffer a file name is converted into, and how many of its bytes may be used.
constexpr unsigned kPathBuffer = 8192;
constexpr unsigned kPathLimit = 2047;

/// A zero-terminated UTF-8 file name.
using PathBuffer = std::array<char, kPathBuffer>;

/// Converts a UTF-32 name, its terminator included. Values of 0x110000 and above become U+FFFD;
/// surrogates are written like any other value below 0x10000. Conversion stops before the
/// character that would exceed kPathLimit bytes. Null gives the empty name.
void WidePathToUtf8(const wchar_t* path, PathBuffer* out);

}  // namespace mp4
