#include "demux/MakeBlockBuffer.h"

#include <climits>
#include <cstddef>

#include "io/MakeLazyArray.h"
#include "io/WithoutThrowing.h"

namespace mp4 {

namespace {

constexpr long long kBlockTail = 32;

int CapacityFor(int largest) {
  const long long capacity = (static_cast<long long>(largest) + kBlockTail) & ~15LL;
  return largest > 0 && capacity <= INT_MAX ? static_cast<int>(capacity) : 0;
}

}  // namespace

std::unique_ptr<Mp4BlockBuffer> MakeBlockBuffer(int largest) {
  std::unique_ptr<Mp4BlockBuffer> buffer;
  WithoutThrowing([&] { buffer = std::make_unique<Mp4BlockBuffer>(); });
  const int capacity = CapacityFor(largest);
  if (buffer == nullptr || capacity == 0) return buffer;
  buffer->data = MakeLazyArray<unsigned char>(static_cast<std::size_t>(capacity + kBlockTail));
  if (buffer->data != nullptr) buffer->capacity = capacity;
  return buffer;
}

}  // namespace mp4
