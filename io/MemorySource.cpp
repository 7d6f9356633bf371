#include "io/MemorySource.h"

#include <cstring>

namespace mp4 {

MemorySource::MemorySource(const void* bytes, std::size_t n)
    : bytes_(static_cast<const unsigned char*>(bytes)) {
  if (bytes != nullptr) SetSize(n);
}

const unsigned char* MemorySource::InMemory(std::uint64_t offset, std::size_t n) const {
  return offset <= Size() && n <= Size() - offset && bytes_ != nullptr ? bytes_ + offset : nullptr;
}

std::size_t MemorySource::Deliver(std::uint64_t offset, unsigned char* bytes, std::size_t n) {
  std::memcpy(bytes, bytes_ + offset, n);
  return n;
}

}  // namespace mp4
