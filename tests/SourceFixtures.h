#pragma once

#include <algorithm>
#include <cstring>

#include "tests/Bytes.h"

/// 0, 1, 2, ... 255, 0, 1, ...
inline Bytes CountingFromZero(std::size_t n) {
  Bytes bytes;
  for (std::size_t i = 0; i < n; ++i) bytes.Byte(static_cast<unsigned>(i & 255));
  return bytes;
}

/// Two callbacks over bytes that count their calls and fail where a test says.
struct Caller {
  Bytes bytes;
  int calls = 0;
  std::size_t most = SIZE_MAX;  ///< delivered at a time
  std::uint64_t failFrom = UINT64_MAX;
  std::int64_t failure = -5;

  static std::int64_t Read(void* user, std::uint64_t offset, void* dst, std::size_t n) {
    auto* self = static_cast<Caller*>(user);
    ++self->calls;
    if (offset >= self->failFrom) return self->failure;
    const std::size_t taken = std::min(n, self->most);
    std::memcpy(dst, self->bytes.data() + offset, taken);
    return static_cast<std::int64_t>(taken);
  }
  static std::int64_t Size(void* user) {
    return static_cast<std::int64_t>(static_cast<Caller*>(user)->bytes.size());
  }
  static std::int64_t NoSize(void*) { return -7; }
};
