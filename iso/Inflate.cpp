#include "iso/Inflate.h"

#include <zlib.h>

#include <algorithm>

namespace mp4 {

namespace {

constexpr std::size_t kInflatedPiece = std::size_t{16} << 10;

/// A zlib header is a multiple of 31 and names deflate as its method.
bool HasZlibHeader(const unsigned char* bytes) {
  return (bytes[0] & 15) == 8 && (bytes[0] * 256 + bytes[1]) % 31 == 0;
}

/// Releases zlib's state however inflating ends.
struct Stream {
  z_stream z{};
  bool open = false;
  ~Stream() {
    if (open) inflateEnd(&z);
  }
};

/// Inflates what zlib has been given and returns its last word; Z_MEM_ERROR when there is more
/// than `most`.
int Drain(z_stream* z, std::uint64_t most, std::vector<unsigned char>* plain) {
  int result = Z_OK;
  do {
    unsigned char out[kInflatedPiece];
    z->next_out = out;
    z->avail_out = sizeof out;
    result = inflate(z, Z_NO_FLUSH);
    const std::size_t got = sizeof out - z->avail_out;
    const auto kept = static_cast<std::size_t>(std::min<std::uint64_t>(got, most - plain->size()));
    plain->insert(plain->end(), out, out + kept);
    if (kept < got) return Z_MEM_ERROR;
  } while (result == Z_OK && z->avail_out == 0);
  return result;
}

}  // namespace

bool InflateBytes(const ByteView& view, std::uint64_t size, std::uint64_t most,
                  std::vector<unsigned char>* plain) {
  plain->clear();
  const unsigned char* start = size >= 2 ? view(0, 2) : nullptr;
  if (start == nullptr) return false;
  Stream stream;
  constexpr int kBareDeflate = -MAX_WBITS;
  if (inflateInit2(&stream.z, HasZlibHeader(start) ? MAX_WBITS : kBareDeflate) != Z_OK)
    return false;
  stream.open = true;
  int result = Z_OK;
  // A buffer error only asks for more input.
  for (std::uint64_t at = 0; at < size && (result == Z_OK || result == Z_BUF_ERROR);) {
    const auto n = static_cast<std::size_t>(std::min<std::uint64_t>(size - at, kInflatedPiece));
    const unsigned char* piece = view(at, n);
    if (piece == nullptr) return false;
    stream.z.next_in = const_cast<unsigned char*>(piece);
    stream.z.avail_in = static_cast<uInt>(n);
    result = Drain(&stream.z, most, plain);
    at += n;
  }
  return result == Z_STREAM_END;
}

}  // namespace mp4
