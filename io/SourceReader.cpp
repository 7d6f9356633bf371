#include "io/SourceReader.h"

#include <algorithm>
#include <climits>

namespace mp4 {

long long SourceReader::GetSize() {
  if (source_ == nullptr) return 0;
  return static_cast<long long>(std::min<std::uint64_t>(source_->Size(), LLONG_MAX));
}

std::size_t SourceReader::ReadAt(long long offset, void* dst, std::size_t n) {
  return source_->ReadAt(static_cast<std::uint64_t>(offset), dst, n);
}

}  // namespace mp4
