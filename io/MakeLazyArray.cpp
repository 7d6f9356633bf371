#include "io/MakeLazyArray.h"

#include "io/Prices.h"

namespace mp4 {

std::int64_t CostOfLazyArray(std::size_t written, std::size_t untouched, const PageMemory& pages) {
  if (untouched < kMapZerosFrom) return static_cast<std::int64_t>(written + untouched);
  return static_cast<std::int64_t>(pages.WholePages(written)) + prices::kMapping +
         static_cast<std::int64_t>(untouched) / prices::kUntouchedBytesPerByte;
}

LazyArray<unsigned char> NewBytes(std::size_t count, const PageMemory& pages) {
  if (count < kMapBytesFrom) return NewArray<unsigned char>(count);
  std::size_t mapped = 0;
  auto* const block = static_cast<unsigned char*>(pages.MapHugePages(count, &mapped));
  if (block == nullptr) return nullptr;
  return LazyArray<unsigned char>(block, LazyArrayDeleter<unsigned char>(mapped));
}

}  // namespace mp4
