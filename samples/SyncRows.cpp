#include "samples/SyncRows.h"

#include <algorithm>
#include <new>
#include <vector>

#include "io/MakeLazyArray.h"

namespace mp4 {

void SyncRows::Load(BoxTree* tree, BoxId box, SampleProblems* problems) {
  there_ = true;
  rows_ = LoadRows(tree, box, 4, 4, &bytes_, problems);
  for (std::size_t row = 1; row < rows_; ++row) {
    if (NumberAt(row) <= NumberAt(row - 1)) {
      Sort();
      break;
    }
  }
  if (rows_ > 0) rowsPerNumber_ = PlacesPer(NumberAt(rows_ - 1), rows_);
}

/// Keeps every number once, in order.
void SyncRows::Sort() {
  std::vector<std::uint32_t> numbers(rows_);
  for (std::size_t row = 0; row < rows_; ++row) numbers[row] = NumberAt(row);
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  LazyArray<unsigned char> sorted = NewBytes(numbers.size() * 4);
  if (sorted == nullptr) throw std::bad_alloc();
  rows_ = numbers.size();
  for (std::size_t row = 0; row < rows_; ++row) StoreBe32(sorted.get() + row * 4, numbers[row]);
  bytes_.Own(std::move(sorted), rows_ * 4);
}

bool SyncRows::Names(std::uint64_t number) const {
  const std::size_t rows = RowsUpTo(number);
  return rows > 0 && NumberAt(rows - 1) == number;
}

std::size_t SyncRows::RowsUpTo(std::uint64_t number) const {
  if (rows_ == 0 || NumberAt(0) > number) return 0;
  const std::size_t guess = GuessPlace(number, rowsPerNumber_, rows_);
  return LastNotAbove(rows_, guess, number, [this](std::size_t row) { return NumberAt(row); }) + 1;
}

SyncCursor CursorAt(const SyncRows& rows, std::uint64_t number) {
  SyncCursor cursor;
  const std::size_t before = number > 0 ? rows.RowsUpTo(number - 1) : 0;
  cursor.end = rows.Bytes() + rows.Rows() * 4;
  cursor.next = rows.Bytes() + before * 4;
  cursor.Advance();
  return cursor;
}

}  // namespace mp4
