#include "io/CallbackSource.h"

#include <algorithm>
#include <climits>

namespace mp4 {

namespace {

/// The caller's number, which may be wider than an int.
int ErrorOf(std::int64_t answer) {
  return static_cast<int>(std::clamp<std::int64_t>(answer, INT_MIN, INT_MAX));
}

}  // namespace

CallbackSource::CallbackSource(ReadAtCallback readAt, SizeCallback size, void* user)
    : readAt_(readAt), user_(user) {
  const std::int64_t answer = readAt != nullptr && size != nullptr ? size(user) : -1;
  if (answer < 0) {
    Report({SourceFault::kReadFailed, 0, 1, ErrorOf(answer)});
  } else {
    SetSize(static_cast<std::uint64_t>(answer));
  }
}

std::size_t CallbackSource::Deliver(std::uint64_t offset, unsigned char* bytes, std::size_t n) {
  std::size_t got = 0;
  while (got < n) {
    const std::int64_t r = readAt_(user_, offset + got, bytes + got, n - got);
    if (r <= 0 || static_cast<std::uint64_t>(r) > n - got) {
      // More than was asked for is no answer to be trusted either.
      Report(
          {SourceFault::kReadFailed, offset + got, n - got, ErrorOf(std::min<std::int64_t>(r, 0))});
      break;
    }
    got += static_cast<std::size_t>(r);
  }
  return got;
}

}  // namespace mp4
