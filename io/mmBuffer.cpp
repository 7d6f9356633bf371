#include "io/mmBuffer.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "io/MakeLazyArray.h"

mmBuffer::~mmBuffer() = default;

bool mmBuffer::Allocate(std::size_t bytes) {
  auto fresh = mp4::NewBytes(bytes);
  if (fresh == nullptr) return false;
  data = std::move(fresh);
  capacity = bytes;
  used = readPos = 0;
  return true;
}

bool mmBuffer::MakeRoom(std::size_t more) {
  if (capacity - used >= more) return true;
  if (more > SIZE_MAX - used) return false;
  const std::size_t wanted = std::max(capacity + capacity / 2, used + more);
  auto fresh = mp4::NewBytes(wanted);
  if (fresh == nullptr) return false;
  if (used > 0) std::memcpy(fresh.get(), data.get(), used);
  data = std::move(fresh);
  capacity = wanted;
  return true;
}

bool mmBuffer::AppendBe32(std::uint32_t value) {
  if (!MakeRoom(4)) return false;
  mp4::StoreBe32(data.get() + used, value);
  used += 4;
  return true;
}

bool mmBuffer::AppendBe64(std::uint64_t value) {
  if (!MakeRoom(8)) return false;
  mp4::StoreBe64(data.get() + used, value);
  used += 8;
  return true;
}

bool mmBuffer::PutBe32At(std::int64_t offset, std::uint32_t value) {
  if (!Holds(offset, 4)) return false;
  mp4::StoreBe32(data.get() + offset, value);
  return true;
}
