#pragma once

#include <cstddef>
#include <cstdint>

#include "io/ByteOrder.h"
#include "io/Export.h"
#include "io/LazyArray.h"

/// An owned, growable byte array: the sample tables keep their rows in one, as the big-endian file
/// bytes. A read outside the bytes held gives 0; an append that finds no memory changes nothing
/// and returns false.
class MP4JUDGE_API mmBuffer {
 public:
  mmBuffer() = default;
  mmBuffer(const mmBuffer&) = delete;
  mmBuffer& operator=(const mmBuffer&) = delete;
  /// Releases the bytes.
  virtual ~mmBuffer();

  /// Replaces the bytes by an uninitialised array of `bytes`; nothing is held afterwards.
  bool Allocate(std::size_t bytes);
  /// Makes room for `more` bytes behind those held: grows to 3/2 of the capacity, or further.
  bool MakeRoom(std::size_t more);
  bool AppendBe32(std::uint32_t value);
  bool AppendBe64(std::uint64_t value);

  /// Big-endian values at a byte offset; 0 when not all of their bytes are held.
  std::uint32_t Be32At(std::int64_t offset) const {
    return Holds(offset, 4) ? mp4::LoadBe32(data.get() + offset) : 0;
  }
  std::uint64_t Be64At(std::int64_t offset) const {
    return Holds(offset, 8) ? mp4::LoadBe64(data.get() + offset) : 0;
  }
  /// Overwrites four held bytes; false when they are not held.
  bool PutBe32At(std::int64_t offset, std::uint32_t value);

  bool Holds(std::int64_t offset, std::int64_t n) const {
    const auto held = static_cast<std::int64_t>(used);
    return offset >= 0 && offset <= held && n <= held - offset;
  }

  mp4::LazyArray<unsigned char> data;
  std::size_t capacity = 0;
  std::size_t used = 0;
  std::size_t readPos = 0;
};
