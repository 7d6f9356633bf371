#pragma once

#include "io/ByteSource.h"

namespace mp4 {

/// A block of memory, borrowed for the life of the source. Null is an empty source.
class MemorySource final : public ByteSource {
 public:
  MemorySource(const void* bytes, std::size_t n);

  const unsigned char* InMemory(std::uint64_t offset, std::size_t n) const override;

 private:
  std::size_t Deliver(std::uint64_t offset, unsigned char* bytes, std::size_t n) override;

  const unsigned char* bytes_;
};

}  // namespace mp4
