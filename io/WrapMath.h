#pragma once

#include <cstdint>
#include <limits>

/// Arithmetic on numbers a file supplies: two's complement wrap instead of undefined behaviour.
namespace mp4 {

constexpr std::int64_t WrapAdd(std::int64_t a, std::int64_t b) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}

constexpr std::int64_t WrapSub(std::int64_t a, std::int64_t b) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b));
}

constexpr std::int64_t WrapMul(std::int64_t a, std::int64_t b) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b));
}

/// Quotient truncated toward zero; a divisor of 0 counts as 1, division by -1 negates with wrap.
constexpr std::int64_t WrapDiv(std::int64_t a, std::int64_t b) {
  if (b == 0) return a;
  if (b == -1) return WrapSub(0, a);
  return a / b;
}

constexpr std::int32_t WrapAdd32(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

constexpr std::int32_t WrapSub32(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

constexpr std::int32_t WrapMul32(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

/// 32-bit form of WrapDiv.
constexpr std::int32_t WrapDiv32(std::int32_t a, std::int32_t b) {
  if (b == 0) return a;
  if (b == -1) return WrapSub32(0, a);
  return a / b;
}

/// The one place where a 64-bit number loses its upper half.
constexpr std::int32_t Truncate32(std::int64_t v) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(v)));
}

}  // namespace mp4
