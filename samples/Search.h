#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace mp4 {

/// The last of `n` keys, which never fall, that is not above `value`; the first one must not be.
/// Looks around `guess` first, twice as far with each step: the marks of real tables lie about
/// evenly, so that a guess by proportion is nearly right, and the worst case stays logarithmic.
template <class Key>
std::size_t LastNotAbove(std::size_t n, std::size_t guess, std::uint64_t value, const Key& key) {
  std::size_t low = std::min(guess, n - 1);
  std::size_t high = n;
  std::size_t step = 1;
  if (key(low) <= value) {
    while (step < n - low && key(low + step) <= value) low += step, step *= 2;
    high = step < n - low ? low + step : n;
  } else {
    high = low;
    while (step < high && key(high - step) > value) high -= step, step *= 2;
    low = step < high ? high - step : 0;
  }
  while (high - low > 1) {
    const std::size_t middle = low + (high - low) / 2;
    (key(middle) <= value ? low : high) = middle;
  }
  return low;
}

/// Places of a table of `n` for each unit of a value that grows to `whole` over it.
inline double PlacesPer(std::uint64_t whole, std::size_t n) {
  return whole != 0 ? static_cast<double>(n) / static_cast<double>(whole) : 0;
}

/// The place among `n`, at least 1, where a value probably is.
inline std::size_t GuessPlace(std::uint64_t value, double placesPer, std::size_t n) {
  const double place = static_cast<double>(value) * placesPer;
  return place < static_cast<double>(n) ? static_cast<std::size_t>(place) : n - 1;
}

/// Asks for the bytes at a place, which will be looked at soon. The empty statement has an effect
/// in the compiler's eyes, which drops calls of functions that do nothing but this.
inline void Foresee(const void* place) {
  __builtin_prefetch(place);
  asm volatile("");
}

}  // namespace mp4
