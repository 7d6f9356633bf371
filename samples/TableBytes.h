#pragma once

#include <cstdint>

#include "io/ByteOrder.h"
#include "io/LazyArray.h"
#include "iso/BoxTree.h"
#include "samples/SampleProblem.h"
#include "samples/Search.h"

namespace mp4 {

/// Bytes of a table as they stand in the file: in place where the source lies in memory, else read
/// once and owned.
class TableBytes {
 public:
  /// Up to `n` bytes of a box's payload from `from` on. Fewer when the source fails, which is
  /// noted.
  void Load(BoxTree* tree, BoxId box, std::uint64_t from, std::uint64_t n,
            SampleProblems* problems);
  /// Bytes of the caller's making.
  void Own(LazyArray<unsigned char> bytes, std::size_t n);

  const unsigned char* data() const { return data_; }
  std::size_t size() const { return size_; }
  /// Asks for a byte that will be looked at soon. One that the table has not does no harm: an
  /// address is a number here.
  void Foresee(std::uint64_t at) const {
    mp4::Foresee(reinterpret_cast<const void*>(reinterpret_cast<std::uintptr_t>(data_) + at));
  }

 private:
  const unsigned char* data_ = nullptr;
  std::size_t size_ = 0;
  LazyArray<unsigned char> own_;
};

/// Sum of `n` numbers of 32 bits, two at a time.
inline std::uint64_t SumOfBe32(const unsigned char* p, std::size_t n) {
  std::uint64_t sum = n % 2 != 0 ? LoadBe32(p) : 0;
  for (p += n % 2 * 4, n /= 2; n > 0; --n, p += 8) {
    const std::uint64_t two = LoadBe64(p);
    sum += (two >> 32) + (two & 0xFFFFFFFF);
  }
  return sum;
}

/// Loads the rows of a full box: a count at payload byte `countAt`, then rows of `width` bytes, of
/// which those that exist are kept. Returns how many; 0 when the box ends before its count.
std::size_t LoadRows(BoxTree* tree, BoxId box, std::uint64_t countAt, std::size_t width,
                     TableBytes* rows, SampleProblems* problems);

}  // namespace mp4
