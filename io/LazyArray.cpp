#include "io/LazyArray.h"

#include <sys/mman.h>

namespace mp4 {

void* MapZeros(std::size_t bytes) {
  void* block = mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  return block != MAP_FAILED ? block : nullptr;
}

void UnmapZeros(void* block, std::size_t bytes) { munmap(block, bytes); }

}  // namespace mp4
