#include "io/PageMemory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace mp4 {

namespace {

constexpr std::size_t kHugePage = PageMemory::kHugePage;
/// Where the system does not say.
constexpr std::size_t kUsualPage = 4096;

constexpr std::size_t Multiple(std::size_t n, std::size_t unit) {
  return (n + unit - 1) / unit * unit;
}

std::size_t SystemPageSize() {
  const long size = sysconf(_SC_PAGESIZE);
  return size > 0 ? static_cast<std::size_t>(size) : kUsualPage;
}

/// Bytes from a block's start to its first huge page.
std::size_t BytesBeforeHugePage(const void* block) {
  const auto at = reinterpret_cast<std::uintptr_t>(block);
  return Multiple(at, kHugePage) - at;
}

}  // namespace

const PageMemory& PageMemory::System() {
  static const PageMemory system(SystemPageSize());
  return system;
}

std::size_t PageMemory::WholePages(std::size_t bytes) const { return Multiple(bytes, pageSize); }

void* PageMemory::MapZeros(std::size_t bytes) {
  void* block = mmap(nullptr, bytes, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  return block != MAP_FAILED ? block : nullptr;
}

void* PageMemory::MapHugePages(std::size_t bytes, std::size_t* mapped) const {
  if (bytes > SIZE_MAX - 2 * kHugePage) return nullptr;
  const std::size_t whole = Multiple(bytes, kHugePage);
  *mapped = whole - bytes <= bytes / 2 ? whole : WholePages(bytes);
  auto* const block = static_cast<char*>(MapZeros(*mapped + kHugePage));
  if (block == nullptr) return nullptr;
  // What lies before the first huge page, and as much as is left behind, goes back at once.
  const std::size_t before = BytesBeforeHugePage(block);
  if (before != 0) munmap(block, before);
  munmap(block + before + *mapped, kHugePage - before);
  PreferHugePages(block + before, *mapped);
  return block + before;
}

void PageMemory::Unmap(void* block, std::size_t bytes) { munmap(block, bytes); }

void PageMemory::PreferHugePages(void* block, std::size_t bytes) {
  if (bytes < kHugePage) return;
#ifdef MADV_HUGEPAGE
  const std::size_t before = BytesBeforeHugePage(block);
  if (bytes < before + kHugePage) return;
  const std::size_t whole = (bytes - before) / kHugePage * kHugePage;
  madvise(static_cast<char*>(block) + before, whole, MADV_HUGEPAGE);
#endif
}

}  // namespace mp4
