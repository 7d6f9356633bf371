#include "io/Utf8Path.h"

#include <cstddef>
#include <cstdint>

namespace mp4 {

namespace {

constexpr std::uint32_t kReplacement = 0xFFFD;

unsigned EncodedLength(std::uint32_t c) {
  if (c < 0x80) return 1;
  if (c < 0x800) return 2;
  return c < 0x10000 ? 3 : 4;
}

void Encode(std::uint32_t c, unsigned length, char* out) {
  static constexpr unsigned char kMark[5] = {0x00, 0x00, 0xC0, 0xE0, 0xF0};
  for (unsigned i = length - 1; i > 0; --i) {
    out[i] = static_cast<char>(0x80 | (c & 0x3F));
    c >>= 6;
  }
  out[0] = static_cast<char>(kMark[length] | c);
}

}  // namespace

void WidePathToUtf8(const wchar_t* path, PathBuffer* out) {
  out->fill(0);
  if (path == nullptr) return;
  std::size_t written = 0;
  for (; *path != 0; ++path) {
    auto c = static_cast<std::uint32_t>(*path);
    if (c >= 0x110000) c = kReplacement;
    const unsigned length = EncodedLength(c);
    if (written + length > kPathLimit) return;
    Encode(c, length, out->data() + written);
    written += length;
  }
}

}  // namespace mp4
