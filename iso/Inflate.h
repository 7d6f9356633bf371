#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

namespace mp4 {

/// `n` bytes at an offset, in place until the next call, or null.
using ByteView = std::function<const unsigned char*(std::uint64_t offset, std::size_t n)>;

/// Inflates `size` compressed bytes, in zlib's format or as bare deflate data. `plain` receives at
/// most `most` bytes, also when the data is broken or cut; true when all of it was inflated. What
/// is held grows with what was inflated, never with what is announced. May throw bad_alloc.
bool InflateBytes(const ByteView& view, std::uint64_t size, std::uint64_t most,
                  std::vector<unsigned char>* plain);

}  // namespace mp4
