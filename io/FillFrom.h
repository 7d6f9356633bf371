#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "io/PageMemory.h"

namespace mp4 {

/// Gives `records` exactly `count` elements, those from `first` on written by `load(from, n, out)`.
/// Grows like push_back, and throws like it. Written in blocks that stay in the cache, since new
/// elements are zeroed first.
template <class T, class Load>
void FillFrom(std::vector<T>* records, std::size_t first, std::size_t count, Load&& load) {
  constexpr std::size_t kBlock = 1024;
  if (records->capacity() < count) {
    records->reserve(std::max(count, 2 * records->capacity()));
    PageMemory::PreferHugePages(records->data(), records->capacity() * sizeof(T));
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
