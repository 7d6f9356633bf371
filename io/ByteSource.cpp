#include "io/ByteSource.h"

#include <algorithm>

namespace mp4 {

ByteSource::~ByteSource() = default;

std::size_t ByteSource::ReadAt(std::uint64_t offset, void* bytes, std::size_t n) {
  if (offset >= size_ || bytes == nullptr) return 0;
  const auto there = static_cast<std::size_t>(std::min<std::uint64_t>(n, size_ - offset));
  return there > 0 ? Deliver(offset, static_cast<unsigned char*>(bytes), there) : 0;
}

void ByteSource::Report(const SourceTrouble& trouble) {
  if (!Failed()) trouble_ = trouble;
}

}  // namespace mp4
