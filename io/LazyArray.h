#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "io/Export.h"

namespace mp4 {

/// `bytes` zero bytes that cost resident memory only where they are written; null on failure.
MP4JUDGE_API void* AllocateLazyZeros(std::size_t bytes);
MP4JUDGE_API void FreeLazyZeros(void* block);

/// Releases an array made by MakeLazyArray; its elements need no destructor.
struct LazyArrayDeleter {
  void operator()(void* block) const { FreeLazyZeros(block); }
};

/// An owned array of zero-filled records.
template <class T>
using LazyArray = std::unique_ptr<T[], LazyArrayDeleter>;

/// Null on failure.
template <class T>
LazyArray<T> MakeLazyArray(std::size_t count) {
  if (count > SIZE_MAX / sizeof(T)) return nullptr;
  return LazyArray<T>(static_cast<T*>(AllocateLazyZeros(count * sizeof(T))));
}

}  // namespace mp4
