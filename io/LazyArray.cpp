#include "io/LazyArray.h"

#include <sys/mman.h>

#include <cstdint>
#include <cstring>
#include <new>

namespace mp4 {

namespace {

/// Stands before the block; keeps the block aligned like any allocation.
struct alignas(16) BlockHeader {
  std::size_t mapped;
};

/// From this size on the system's own zero pages serve, untouched until written.
constexpr std::size_t kMapFrom = std::size_t{1} << 17;

}  // namespace

void* AllocateLazyZeros(std::size_t bytes) {
  if (bytes > SIZE_MAX / 2) return nullptr;
  const std::size_t whole = bytes + sizeof(BlockHeader);
  void* raw = nullptr;
  if (whole >= kMapFrom) {
    raw = mmap(nullptr, whole, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE,
               -1, 0);
    if (raw == MAP_FAILED) return nullptr;
  } else {
    raw = ::operator new(whole, std::nothrow);
    if (raw == nullptr) return nullptr;
    std::memset(raw, 0, whole);
  }
  auto* header = new (raw) BlockHeader{whole >= kMapFrom ? whole : 0};
  return header + 1;
}

void FreeLazyZeros(void* block) {
  if (block == nullptr) return;
  auto* header = static_cast<BlockHeader*>(block) - 1;
  if (header->mapped != 0) {
    munmap(header, header->mapped);
  } else {
    ::operator delete(header);
  }
}

}  // namespace mp4
