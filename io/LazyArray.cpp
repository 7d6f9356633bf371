#include "io/LazyArray.h"

#include <sys/mman.h>

#include <cstdint>

namespace mp4 {

namespace {

/// What x86 and most others have; where huge pages are larger, nothing comes of the request.
constexpr std::size_t kHugePage = std::size_t{2} << 20;

}  // namespace

void PreferHugePages(void* block, std::size_t bytes) {
  if (bytes < kHugePage) return;
#ifdef MADV_HUGEPAGE
  const auto start = (reinterpret_cast<std::uintptr_t>(block) + kHugePage - 1) & ~(kHugePage - 1);
  const auto end = (reinterpret_cast<std::uintptr_t>(block) + bytes) & ~(kHugePage - 1);
  if (start < end) madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
#endif
}

void* MapZeros(std::size_t bytes) {
  void* block = mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  return block != MAP_FAILED ? block : nullptr;
}

void UnmapZeros(void* block, std::size_t bytes) { munmap(block, bytes); }

}  // namespace mp4
