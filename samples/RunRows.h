#pragma once

#include <cstdint>
#include <vector>

#include "samples/Search.h"
#include "samples/TableBytes.h"

namespace mp4 {

/// Rows of a sample count and a value of 32 bits: TimeToSampleBox ("stts", ISO/IEC 14496-12,
/// 8.6.1.2) and CompositionOffsetBox ("ctts", 8.6.1.3). They stay as file bytes; the first question
/// that is not about the start makes a mark every kRowsPerMark rows.
class RunRows {
 public:
  static constexpr std::size_t kRowsPerMark = 16;
  static constexpr std::size_t kWidth = 8;

  /// A row, with what the rows in front of it hold.
  struct Place {
    std::size_t row = 0;
    std::uint64_t first = 0;  ///< index of its first sample, 0-based
    std::uint64_t total = 0;  ///< sum of count times value in front of it, modulo 2^64
  };

  void Load(BoxTree* tree, BoxId box, SampleProblems* problems);

  std::size_t Rows() const { return rows_; }
  const unsigned char* Bytes() const { return bytes_.data(); }
  std::uint32_t CountOf(std::size_t row) const { return LoadBe32(bytes_.data() + row * kWidth); }
  std::uint32_t ValueOf(std::size_t row) const {
    return LoadBe32(bytes_.data() + row * kWidth + 4);
  }
  /// The value of the last row that has samples; 0 without one.
  std::uint32_t LastValue() const { return lastValue_; }

  /// The row of a sample; behind the last row when they hold fewer.
  Place Find(std::uint64_t index);
  /// The same, for those to whom the total does not matter.
  Place FindWithoutTotal(std::uint64_t index);
  /// For times: the row in which the total passes `total`: the last one that begins with samples at
  /// or below it.
  Place FindTotal(std::uint64_t total);
  /// The value at a place, `past` behind the last row.
  std::uint32_t ValueAt(const Place& place, std::uint32_t past) const {
    return place.row < rows_ ? ValueOf(place.row) : past;
  }
  /// Behind the last row.
  Place End();
  /// Asks for the bytes that Find will probably look at.
  void Foresee(std::uint64_t index) const {
    if (rows_ <= kRowsPerMark || marks_.empty()) return;
    const std::size_t mark = GuessPlace(index, marksPerSample_, marks_.size());
    mp4::Foresee(&marks_[mark]);
    ForeseeRows(mark);
  }

 private:
  /// More than any table has: a row has eight bytes, and counts 2^32 at most.
  static constexpr std::uint64_t kMostSamples = ~std::uint64_t{0} >> 1;
  struct Mark {
    std::uint64_t first : 63;
    std::uint64_t even : 1;  ///< whether its rows have the same count, which is not 0
    std::uint64_t total;
  };
  void MakeMarks() {
    if (marks_.empty()) MakeAllMarks();
  }
  void ForeseeRows(std::size_t mark) const {
    const std::uint64_t rows = std::uint64_t{mark} * kRowsPerMark * kWidth;
    bytes_.Foresee(rows);
    bytes_.Foresee(rows + kRowsPerMark * kWidth / 2);
    bytes_.Foresee(rows + kRowsPerMark * kWidth - 1);
  }
  void MakeAllMarks();
  bool IsEven(std::size_t row) const;
  template <bool kTotal>
  Place FindRow(std::uint64_t index);

  TableBytes bytes_;
  std::size_t rows_ = 0;
  std::uint32_t lastValue_ = 0;
  std::vector<Mark> marks_;
  std::size_t rising_ = 0;  ///< marks in front of the row whose total leaves 64 bits
  double marksPerSample_ = 0;
  double marksPerTotal_ = 0;
  Place end_;
  /// What FindTotal found: who asks for a time mostly asks for its sample next.
  Place found_;
  std::uint64_t foundCount_ = 0;
};

/// Walks forward over the values of run rows.
struct RunCursor {
  const unsigned char* row = nullptr;
  const unsigned char* end = nullptr;
  std::uint64_t left = 0;   ///< samples of the row not yet passed
  std::uint32_t value = 0;  ///< of the next sample, once left is not 0
  std::uint32_t past = 0;   ///< what samples behind the last row have

  /// Goes to the next row that has samples.
  void Refill() {
    while (row != end) {
      left = LoadBe32(row);
      value = LoadBe32(row + 4);
      row += RunRows::kWidth;
      if (left != 0) return;
    }
    left = ~std::uint64_t{0};
    value = past;
  }
};

/// A cursor at a sample; `sum` receives the total of the values in front of it when wanted.
RunCursor CursorAt(RunRows* rows, std::uint64_t index, std::uint32_t past, std::uint64_t* sum);

}  // namespace mp4
