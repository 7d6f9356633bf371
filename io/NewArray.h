#pragma once

#include <cstddef>
#include <memory>

#include "io/WithoutThrowing.h"

namespace mp4 {

/// A new array of `count` plain elements, uninitialised or zero; null when memory is refused.
template <class T>
std::unique_ptr<T[]> NewArray(std::size_t count) {
  std::unique_ptr<T[]> array;
  WithoutThrowing([&] { array.reset(new T[count]); });
  return array;
}

template <class T>
std::unique_ptr<T[]> NewZeroedArray(std::size_t count) {
  std::unique_ptr<T[]> array;
  WithoutThrowing([&] { array.reset(new T[count]()); });
  return array;
}

}  // namespace mp4
