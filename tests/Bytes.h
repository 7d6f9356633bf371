#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

/// The byte builder behind every fixture. Values chain; sizes of boxes are right unless a test asks
/// for a wrong one.
///
///   Bytes file = Box("ftyp", Bytes().Text("isom").Be32(0)) + Box("moov", mvhd + trak);
class Bytes {
 public:
  Bytes() = default;
  Bytes(std::initializer_list<int> values) {
    for (const int v : values) Byte(static_cast<unsigned>(v));
  }

  Bytes& Byte(unsigned v) {
    bytes_.push_back(static_cast<unsigned char>(v));
    return *this;
  }
  Bytes& Be16(unsigned v) { return Byte(v >> 8).Byte(v); }
  Bytes& Be24(unsigned v) { return Byte(v >> 16).Be16(v); }
  Bytes& Be32(std::uint32_t v) { return Be16(v >> 16).Be16(v); }
  Bytes& Be64(std::uint64_t v) {
    return Be32(static_cast<std::uint32_t>(v >> 32)).Be32(static_cast<std::uint32_t>(v));
  }
  Bytes& Text(std::string_view text) {
    bytes_.insert(bytes_.end(), text.begin(), text.end());
    return *this;
  }
  Bytes& Fill(std::size_t n, unsigned v = 0) {
    bytes_.insert(bytes_.end(), n, static_cast<unsigned char>(v));
    return *this;
  }
  Bytes& Append(const Bytes& other) {
    bytes_.insert(bytes_.end(), other.bytes_.begin(), other.bytes_.end());
    return *this;
  }
  friend Bytes operator+(Bytes a, const Bytes& b) { return a.Append(b); }

  /// Overwrites bytes already there.
  Bytes& PutBe32(std::size_t at, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) bytes_.at(at + i) = static_cast<unsigned char>(v >> (24 - 8 * i));
    return *this;
  }
  Bytes& Cut(std::size_t n) {
    bytes_.resize(n);
    return *this;
  }

  const unsigned char* data() const { return bytes_.data(); }
  std::size_t size() const { return bytes_.size(); }
  unsigned char operator[](std::size_t i) const { return bytes_.at(i); }

 private:
  std::vector<unsigned char> bytes_;
};

/// A box with the right size.
inline Bytes Box(std::string_view type, const Bytes& payload = {}) {
  return Bytes().Be32(static_cast<std::uint32_t>(payload.size() + 8)).Text(type).Append(payload);
}

/// A box whose size field says `size`, whatever its payload.
inline Bytes SizedBox(std::uint32_t size, std::string_view type, const Bytes& payload = {}) {
  return Bytes().Be32(size).Text(type).Append(payload);
}

/// A full box: version and flags before the payload.
inline Bytes FullBox(std::string_view type, unsigned version, std::uint32_t flags,
                     const Bytes& payload = {}) {
  return Box(type, Bytes().Byte(version).Be24(flags).Append(payload));
}
