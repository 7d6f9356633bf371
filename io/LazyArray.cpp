#include "io/LazyArray.h"

#include <sys/mman.h>

#include <cstdint>

namespace mp4 {

namespace {

constexpr std::size_t Multiple(std::size_t n, std::size_t unit) {
  return (n + unit - 1) / unit * unit;
}

}  // namespace

void PreferHugePages(void* block, std::size_t bytes) {
  if (bytes < kHugePage) return;
#ifdef MADV_HUGEPAGE
  const auto at = reinterpret_cast<std::uintptr_t>(block);
  const std::size_t before = Multiple(at, kHugePage) - at;
  if (bytes < before + kHugePage) return;
  const std::size_t whole = (bytes - before) / kHugePage * kHugePage;
  madvise(static_cast<char*>(block) + before, whole, MADV_HUGEPAGE);
#endif
}

void* MapZeros(std::size_t bytes) {
  void* block = mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  return block != MAP_FAILED ? block : nullptr;
}

void* MapHugePages(std::size_t bytes, std::size_t* mapped) {
  if (bytes > SIZE_MAX - 2 * kHugePage) return nullptr;
  const std::size_t whole = Multiple(bytes, kHugePage);
  *mapped = whole - bytes <= bytes / 2 ? whole : WholePages(bytes);
  auto* const block = static_cast<char*>(MapZeros(*mapped + kHugePage));
  if (block == nullptr) return nullptr;
  // What lies before the first huge page, and as much as is left behind, goes back at once.
  const auto at = reinterpret_cast<std::uintptr_t>(block);
  const std::size_t before = Multiple(at, kHugePage) - at;
  if (before != 0) munmap(block, before);
  munmap(block + before + *mapped, kHugePage - before);
  PreferHugePages(block + before, *mapped);
  return block + before;
}

LazyArray<unsigned char> NewBytes(std::size_t count) {
  if (count < kMapBytesFrom) {
    return LazyArray<unsigned char>(new (std::nothrow) unsigned char[count]);
  }
  std::size_t mapped = 0;
  auto* const block = static_cast<unsigned char*>(MapHugePages(count, &mapped));
  if (block == nullptr) return nullptr;
  return LazyArray<unsigned char>(block, LazyArrayDeleter<unsigned char>(mapped));
}

void UnmapZeros(void* block, std::size_t bytes) { munmap(block, bytes); }

}  // namespace mp4
