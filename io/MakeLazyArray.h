#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "io/LazyArray.h"
#include "io/NewArray.h"
#include "io/PageMemory.h"

namespace mp4 {

/// Untouched zero bytes from this size on are mapped rather than written: the system's zero pages
/// serve them.
constexpr std::size_t kMapZerosFrom = 1024;

/// Uninitialised bytes from this size on get a mapping of their own that starts at a huge page.
constexpr std::size_t kMapBytesFrom = PageMemory::kHugePage / 4 * 3;

/// `count` zero records, of which the caller means to write the first `written`: the others should
/// cost no resident memory. Null when there is no memory.
template <class T>
LazyArray<T> MakeLazyArray(std::size_t count, std::size_t written = 0) {
  static_assert(std::is_trivial_v<T>);
  if (count > SIZE_MAX / sizeof(T)) return nullptr;
  if ((count - written) * sizeof(T) < kMapZerosFrom) return NewZeroedArray<T>(count);
  const std::size_t bytes = count * sizeof(T);
  void* block = PageMemory::MapZeros(bytes);
  return LazyArray<T>(static_cast<T*>(block), LazyArrayDeleter<T>(block != nullptr ? bytes : 0));
}

/// Bytes of memory that such an array is charged to an opening's account when it has `written`
/// bytes that are written and `untouched` that are not: where these are mapped, whole pages of the
/// former.
std::int64_t CostOfLazyArray(std::size_t written, std::size_t untouched,
                             const PageMemory& pages = PageMemory::System());

/// An uninitialised array of `count` bytes; null when there is no memory.
LazyArray<unsigned char> NewBytes(std::size_t count,
                                  const PageMemory& pages = PageMemory::System());

}  // namespace mp4
