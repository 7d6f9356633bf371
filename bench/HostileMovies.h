#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "tests/Bytes.h"

namespace bench {

/// A file made to cost its reader as much as it can.
struct HostileMovie {
  std::string name;
  int compressed = 0;                           ///< movies nested in it by compression
  std::function<Bytes(std::size_t size)> make;  ///< about `size` bytes
};

/// Every kind, each against one charge or one loop of the library.
std::vector<HostileMovie> HostileMovies();

}  // namespace bench
