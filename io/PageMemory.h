#pragma once

#include <cstddef>

namespace mp4 {

/// Memory taken from the system in whole pages. It holds nothing: the caller releases what it maps.
class PageMemory {
 public:
  /// A huge page of x86 and most others; where they are larger, nothing comes of asking for them.
  static constexpr std::size_t kHugePage = std::size_t{2} << 20;

  /// Pages as the system has them, which is asked once.
  static const PageMemory& System();
  /// Pages of another size: a power of two, no smaller than the system's and no larger than a huge
  /// page. For tests.
  explicit constexpr PageMemory(std::size_t pageSize) : pageSize(pageSize) {}

  /// Bytes of the pages that writing the first `bytes` of a mapped block takes.
  std::size_t WholePages(std::size_t bytes) const;

  /// `bytes` zero bytes of address space, without memory until written; null on failure. Unmap
  /// takes the same `bytes`.
  static void* MapZeros(std::size_t bytes);
  /// Address space for `bytes` in huge pages, as far as the system has them; null on failure. The
  /// last one is a huge page too unless that takes more than half as much again. `mapped` receives
  /// what to release.
  void* MapHugePages(std::size_t bytes, std::size_t* mapped) const;
  static void Unmap(void* block, std::size_t bytes);

  /// Asks for huge pages under a large block that is about to be filled: they cost a tenth of the
  /// page faults' time. Whole huge pages inside the block alone are affected, so that it takes no
  /// more memory for it.
  static void PreferHugePages(void* block, std::size_t bytes);

 private:
  std::size_t pageSize;
};

}  // namespace mp4
