#pragma once

#include <cstddef>
#include <memory>
#include <utility>

#include "io/Export.h"

namespace mp4 {

/// Gives back the mapping that holds an array (io/MakeLazyArray.h makes them).
MP4JUDGE_API void ReleaseMapping(void* block, std::size_t bytes);

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
      ReleaseMapping(block, mapped);
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

}  // namespace mp4
