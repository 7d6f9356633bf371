#pragma once

#include <cstdint>

#include "samples/Search.h"
#include "samples/TableBytes.h"

namespace mp4 {

/// Numbers of the sync samples: SyncSampleBox ("stss", ISO/IEC 14496-12, 8.6.2), and QuickTime's
/// partial ones ("stps"). Without the box every sample is one; with an empty one none is. Rows that
/// are out of order are sorted once.
class SyncRows {
 public:
  void Load(BoxTree* tree, BoxId box, SampleProblems* problems);

  bool IsThere() const { return there_; }
  std::size_t Rows() const { return rows_; }
  const unsigned char* Bytes() const { return bytes_.data(); }
  /// The sample number of a row, 1-based as stored.
  std::uint32_t NumberAt(std::size_t row) const { return LoadBe32(bytes_.data() + row * 4); }
  /// How many rows name this number or lower ones.
  std::size_t RowsUpTo(std::uint64_t number) const;
  bool Names(std::uint64_t number) const;
  /// Asks for the bytes that RowsUpTo will probably look at.
  void Foresee(std::uint64_t number) const {
    if (rows_ > 0) bytes_.Foresee(GuessPlace(number, rowsPerNumber_, rows_) * std::uint64_t{4});
  }

 private:
  void Sort();

  bool there_ = false;
  std::size_t rows_ = 0;
  double rowsPerNumber_ = 0;
  TableBytes bytes_;
};

/// Walks forward over sync numbers.
struct SyncCursor {
  const unsigned char* next = nullptr;
  const unsigned char* end = nullptr;
  std::uint64_t number = ~std::uint64_t{0};  ///< the next one named; none: beyond all

  void Advance() {
    number = next != end ? LoadBe32(next) : ~std::uint64_t{0};
    if (next != end) next += 4;
  }
};

/// A cursor whose number is the first one named that is not below `number`.
SyncCursor CursorAt(const SyncRows& rows, std::uint64_t number);

}  // namespace mp4
