#pragma once

#include <cstddef>
#include <cstdint>

#include "io/ByteOrder.h"

namespace mp4 {

/// The fields of a box, read one after the other from bytes at hand. Reading past the end gives 0
/// and is remembered: a parser reads like its layout table and asks Ok() once at its end.
class FieldView {
 public:
  FieldView() = default;
  FieldView(const unsigned char* bytes, std::size_t n) : bytes_(bytes), size_(n) {}

  std::uint8_t U8() { return Take(1) ? bytes_[at_ - 1] : std::uint8_t{0}; }
  std::uint16_t U16() {
    return Take(2) ? static_cast<std::uint16_t>(LoadBe16(bytes_ + at_ - 2)) : std::uint16_t{0};
  }
  std::uint32_t U24() {
    const std::uint32_t high = U8();
    return high << 16 | U16();
  }
  std::uint32_t U32() { return Take(4) ? LoadBe32(bytes_ + at_ - 4) : 0; }
  std::uint64_t U64() { return Take(8) ? LoadBe64(bytes_ + at_ - 8) : 0; }
  std::int16_t S16() { return static_cast<std::int16_t>(U16()); }
  std::int32_t S32() { return static_cast<std::int32_t>(U32()); }
  std::int64_t S64() { return static_cast<std::int64_t>(U64()); }
  /// A type, brand or format in the order of mp4::FourCC.
  std::uint32_t Type() { return Take(4) ? LoadLe32(bytes_ + at_ - 4) : 0; }

  /// `n` bytes in place, null past the end.
  const unsigned char* Bytes(std::size_t n) { return Take(n) ? bytes_ + at_ - n : nullptr; }
  void Skip(std::size_t n) { Take(n); }

  std::size_t At() const { return at_; }
  std::size_t Left() const { return size_ - at_; }
  /// Whether every field so far lay inside.
  bool Ok() const { return !short_; }

 private:
  bool Take(std::size_t n) {
    if (n > size_ - at_) {
      at_ = size_;
      short_ = true;
      return false;
    }
    at_ += n;
    return true;
  }

  const unsigned char* bytes_ = nullptr;
  std::size_t size_ = 0;
  std::size_t at_ = 0;
  bool short_ = false;
};

/// Version and flags of a full box.
struct VersionAndFlags {
  std::uint8_t version;
  std::uint32_t flags;  ///< 24 bits
};

inline VersionAndFlags ReadVersionAndFlags(FieldView* fields) {
  const std::uint8_t version = fields->U8();
  return {version, fields->U24()};
}

}  // namespace mp4
