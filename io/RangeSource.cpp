#include "io/RangeSource.h"

#include <algorithm>
#include <cstring>

#include "io/ReadAhead.h"

namespace mp4 {

namespace {

using Range = std::pair<const std::uint64_t, std::vector<unsigned char>>;

std::uint64_t EndOf(const Range& range) { return range.first + range.second.size(); }

}  // namespace

/// The range that holds this byte, or end().
RangeSource::Ranges::const_iterator RangeSource::RangeAt(std::uint64_t offset) const {
  auto range = ranges_.upper_bound(offset);
  if (range == ranges_.begin()) return ranges_.end();
  --range;
  return offset < EndOf(*range) ? range : ranges_.end();
}

void RangeSource::Add(std::uint64_t offset, const void* bytes, std::size_t n) {
  if (bytes == nullptr || offset >= Size()) return;
  const auto* from = static_cast<const unsigned char*>(bytes);
  const std::uint64_t end = offset + std::min<std::uint64_t>(n, Size() - offset);
  std::uint64_t at = offset;
  while (at < end) {
    const auto held = RangeAt(at);
    if (held != ranges_.end()) {
      at = EndOf(*held);
      continue;
    }
    const auto next = ranges_.upper_bound(at);
    const std::uint64_t stop = next != ranges_.end() ? std::min(end, next->first) : end;
    ranges_.emplace(at, std::vector<unsigned char>(from + (at - offset), from + (stop - offset)));
    at = stop;
  }
}

const unsigned char* RangeSource::InMemory(std::uint64_t offset, std::size_t n) const {
  const auto range = RangeAt(offset);
  if (range == ranges_.end() || n > EndOf(*range) - offset) return nullptr;
  return range->second.data() + (offset - range->first);
}

std::size_t RangeSource::Deliver(std::uint64_t offset, unsigned char* bytes, std::size_t n) {
  std::size_t got = 0;
  while (got < n) {
    const auto range = RangeAt(offset + got);
    if (range == ranges_.end()) {
      const std::uint64_t at = offset + got;
      const std::uint64_t wanted =
          std::max<std::uint64_t>(n - got, ranges_.empty() ? kFirstSlowRead : kNextSlowRead);
      Report({SourceFault::kBytesNeeded, at, std::min(wanted, Size() - at), 0});
      break;
    }
    const std::uint64_t inside = offset + got - range->first;
    const std::size_t taken = std::min<std::size_t>(n - got, range->second.size() - inside);
    std::memcpy(bytes + got, range->second.data() + inside, taken);
    got += taken;
  }
  return got;
}

}  // namespace mp4
