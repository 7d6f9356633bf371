#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "io/ByteOrder.h"

namespace fuzz {

/// The fuzzer's bytes, read from the front; zeros behind their end.
class FuzzBytes {
 public:
  FuzzBytes(const std::uint8_t* data, std::size_t size) : data(data), left(size) {}

  bool Empty() const { return left == 0; }
  std::uint8_t Byte() {
    if (left == 0) return 0;
    --left;
    return *data++;
  }
  bool Bit() { return (Byte() & 1) != 0; }
  std::uint32_t Below(std::uint32_t n) { return Byte() % n; }
  std::uint32_t Word() {
    const std::uint8_t bytes[4] = {Byte(), Byte(), Byte(), Byte()};
    return mp4::LoadBe32(bytes);
  }
  std::uint64_t Wide() {
    const std::uint64_t high = Word();
    return high << 32 | Word();
  }
  /// A small number in one byte most of the time; else an end of the range, or anything.
  std::uint32_t Number() {
    constexpr std::uint32_t kOdd[] = {0x7FFFFFFF, 0x80000000, 0x80000001, 0xFFFFFFFF,
                                      0xFFFFFFFE, 0xFFFFFFD0, 0x10000,    1000};
    const std::uint8_t b = Byte();
    if (b < 0xD0) return b;
    if (b < 0xE0) return kOdd[b & 7];
    if (b < 0xF0) return (b & 15u) << 8 | Byte();
    return Word();
  }
  /// Likewise in 64 bits, of either sign.
  std::int64_t Time() {
    const std::uint8_t b = Byte();
    if (b < 0xC0) return std::int64_t{b} * b * 3 - 100;
    if (b < 0xF0) return static_cast<std::int32_t>(Number());
    return static_cast<std::int64_t>(Wide());
  }

 private:
  const std::uint8_t* data;
  std::size_t left;
};

/// Stops the fuzzer where the library does not do what it must.
inline void Demand(bool holds) {
  if (!holds) std::abort();
}

}  // namespace fuzz
