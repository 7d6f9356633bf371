#pragma once

#include <map>
#include <vector>

#include "io/ByteSource.h"

namespace mp4 {

/// The ranges of a source that the caller has handed over so far. Reading anything else is trouble
/// of the kind kBytesNeeded, which names the range to bring next, some way ahead of what was
/// wanted; the caller adds it, calls StartOver and reads again from the beginning.
class RangeSource final : public ByteSource {
 public:
  explicit RangeSource(std::uint64_t size) { SetSize(size); }

  /// Copies a range. Bytes past the size are left out, and those handed over before stay. May throw
  /// bad_alloc. Costs the logarithm of the number of ranges, and the bytes.
  void Add(std::uint64_t offset, const void* bytes, std::size_t n);
  /// Forgets what was missed, not the ranges.
  void StartOver() { ForgetTrouble(); }

  const unsigned char* InMemory(std::uint64_t offset, std::size_t n) const override;
  ReadPace Pace() const override { return ReadPace::kExact; }

 private:
  using Ranges = std::map<std::uint64_t, std::vector<unsigned char>>;

  Ranges::const_iterator RangeAt(std::uint64_t offset) const;
  std::size_t Deliver(std::uint64_t offset, unsigned char* bytes, std::size_t n) override;

  Ranges ranges_;  ///< by first byte; disjoint
};

}  // namespace mp4
