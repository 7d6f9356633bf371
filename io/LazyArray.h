#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "io/Export.h"

namespace mp4 {

/// Untouched zero bytes from this size on are mapped rather than written: the system's zero pages
/// serve them.
constexpr std::size_t kMapZerosFrom = 1024;

/// What x86 and most others have; where huge pages are larger, nothing comes of asking for them.
constexpr std::size_t kHugePage = std::size_t{2} << 20;

/// Uninitialised bytes from this size on get a mapping of their own that starts at a huge page.
constexpr std::size_t kMapBytesFrom = kHugePage / 4 * 3;

/// Asks for huge pages under a large block that is about to be filled: they cost a tenth of the
/// page faults' time. Whole huge pages inside the block alone are affected, so that it takes no
/// more memory for it.
MP4JUDGE_API void PreferHugePages(void* block, std::size_t bytes);

/// `bytes` zero bytes of address space, without memory until written; null on failure.
MP4JUDGE_API void* MapZeros(std::size_t bytes);
MP4JUDGE_API void UnmapZeros(void* block, std::size_t bytes);

/// Address space for `bytes` in huge pages, as far as the system has them; null on failure. The
/// last one is a huge page too unless that takes more than half as much again. `mapped` receives
/// what to release.
MP4JUDGE_API void* MapHugePages(std::size_t bytes, std::size_t* mapped);

/// Bytes of the pages that writing the first `bytes` of a mapped block takes.
constexpr std::size_t WholePages(std::size_t bytes) { return (bytes + 4095) / 4096 * 4096; }

/// What a mapping of its own is charged: what making and releasing it costs in time.
constexpr std::size_t kCostOfMapping = 1024;

/// What `bytes` zeros that nobody writes are charged: themselves while they are small, then the
/// mapping and a byte a page for the address space.
constexpr std::size_t CostOfZeros(std::size_t bytes) {
  return bytes < kMapZerosFrom ? bytes : kCostOfMapping + bytes / 4096;
}

/// Releases a LazyArray. An ordinary array may take its place: reset(new T[n]) and assignment from
/// std::unique_ptr<T[]> both work.
template <class T>
struct LazyArrayDeleter {
  LazyArrayDeleter() = default;
  explicit LazyArrayDeleter(std::size_t mapped) : mapped(mapped) {}
  LazyArrayDeleter(std::default_delete<T[]>) {}
  // A moved-from pointer may be given an ordinary array.
  LazyArrayDeleter(LazyArrayDeleter&& other) noexcept : mapped(std::exchange(other.mapped, 0)) {}
  LazyArrayDeleter& operator=(LazyArrayDeleter&& other) noexcept {
    mapped = std::exchange(other.mapped, 0);
    return *this;
  }

  void operator()(T* block) {
    if (mapped != 0) {
      UnmapZeros(block, mapped);
    } else {
      delete[] block;
    }
    mapped = 0;
  }

  std::size_t mapped = 0;  ///< bytes mapped, 0 for an ordinary array
};

/// An owned array of plain records.
template <class T>
using LazyArray = std::unique_ptr<T[], LazyArrayDeleter<T>>;

/// `count` zero records, of which the caller means to write the first `written`: the others should
/// cost no resident memory. Null when there is no memory.
template <class T>
LazyArray<T> MakeLazyArray(std::size_t count, std::size_t written = 0) {
  static_assert(std::is_trivial_v<T>);
  if (count > SIZE_MAX / sizeof(T)) return nullptr;
  if ((count - written) * sizeof(T) < kMapZerosFrom) {
    return LazyArray<T>(new (std::nothrow) T[count]());
  }
  const std::size_t bytes = count * sizeof(T);
  void* block = MapZeros(bytes);
  return LazyArray<T>(static_cast<T*>(block), LazyArrayDeleter<T>(block != nullptr ? bytes : 0));
}

/// An uninitialised array of `count` bytes; null when there is no memory.
MP4JUDGE_API LazyArray<unsigned char> NewBytes(std::size_t count);

/// Gives `records` exactly `count` elements, those from `first` on written by `load(from, n, out)`.
/// Grows like push_back. Written in blocks that stay in the cache, since new elements are zeroed
/// first.
template <class T, class Load>
void FillFrom(std::vector<T>* records, std::size_t first, std::size_t count, Load&& load) {
  constexpr std::size_t kBlock = 1024;
  if (records->capacity() < count) {
    records->reserve(std::max(count, 2 * records->capacity()));
    PreferHugePages(records->data(), records->capacity() * sizeof(T));
  }
  if (records->size() > count) records->resize(count);
  while (first < count) {
    const std::size_t n = std::min(count - first, kBlock);
    if (records->size() < first + n) records->resize(first + n);
    load(first, n, records->data() + first);
    first += n;
  }
}

}  // namespace mp4
