#pragma once

#include <cstddef>

namespace mp4 {

/// How many bytes of a file's beginning tell most.
constexpr std::size_t kFirstBytes = 400;

/// What a file that begins with these bytes is, as a noun ("a PNG image"), when it is a well-known
/// format outside the ISO base media family; else null.
const char* NameOfFirstBytes(const unsigned char* bytes, std::size_t n);

}  // namespace mp4
