#include "io/PrefixSource.h"

#include <algorithm>

namespace mp4 {

PrefixSource::PrefixSource(ByteSource* below, std::uint64_t size) : below_(below) {
  SetSize(std::min(size, below->Size()));
}

const unsigned char* PrefixSource::InMemory(std::uint64_t offset, std::size_t n) const {
  if (offset > Size() || n > Size() - offset) return nullptr;
  return below_->InMemory(offset, n);
}

std::size_t PrefixSource::Deliver(std::uint64_t offset, unsigned char* bytes, std::size_t n) {
  const std::size_t got = below_->ReadAt(offset, bytes, n);
  if (got < n && below_->Failed()) Report(below_->Trouble());
  return got;
}

}  // namespace mp4
