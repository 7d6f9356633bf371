#include "samples/RunRows.h"

#include <algorithm>

namespace mp4 {

void RunRows::Load(BoxTree* tree, BoxId box, SampleProblems* problems) {
  rows_ = LoadRows(tree, box, 4, kWidth, &bytes_, problems);
  std::size_t last = rows_;
  while (last > 0 && CountOf(last - 1) == 0) --last;
  lastValue_ = last > 0 ? ValueOf(last - 1) : 0;
}

/// Whether the rows of the mark that stands at a row have the same count: then a sample's row comes
/// from a division.
bool RunRows::IsEven(std::size_t row) const {
  const std::uint32_t count = CountOf(row);
  const std::size_t end = std::min(row + kRowsPerMark, rows_);
  while (row < end && CountOf(row) == count) ++row;
  return row == end && count != 0;
}

void RunRows::MakeAllMarks() {
  marks_.reserve(rows_ / kRowsPerMark + 1);
  std::uint64_t first = 0;
  std::uint64_t total = 0;
  for (std::size_t row = 0; row < rows_; ++row) {
    if (row % kRowsPerMark == 0) {
      Mark& mark = marks_.emplace_back();
      mark.first = first & kMostSamples;
      mark.even = IsEven(row);
      mark.total = total;
    }
    const std::uint64_t count = CountOf(row);
    first += count;
    if (__builtin_add_overflow(total, count * ValueOf(row), &total) && rising_ == 0)
      rising_ = marks_.size();
  }
  if (marks_.empty()) marks_.emplace_back();
  if (rising_ == 0) rising_ = marks_.size();
  end_ = {rows_, first, total};
  marksPerSample_ = PlacesPer(first, marks_.size());
  marksPerTotal_ = PlacesPer(total, marks_.size());
}

RunRows::Place RunRows::End() {
  MakeMarks();
  return end_;
}

template <bool kTotal>
RunRows::Place RunRows::FindRow(std::uint64_t index) {
  MakeMarks();
  if (index >= end_.first) return end_;
  if (rows_ == 1) return {};
  if (index - found_.first < foundCount_) return found_;
  const std::size_t mark =
      LastNotAbove(marks_.size(), GuessPlace(index, marksPerSample_, marks_.size()), index,
                   [this](std::size_t i) { return marks_[i].first; });
  Place place{mark * kRowsPerMark, marks_[mark].first, marks_[mark].total};
  const unsigned char* row = bytes_.data() + place.row * kWidth;
  std::uint64_t count = LoadBe32(row);
  if (!kTotal && marks_[mark].even) {
    const std::uint64_t rows = count == 1 ? index - place.first : (index - place.first) / count;
    place.row += static_cast<std::size_t>(rows);
    place.first += rows * count;
    return place;
  }
  while (index - place.first >= count) {
    place.first += count;
    if constexpr (kTotal) place.total += count * LoadBe32(row + 4);
    ++place.row;
    count = LoadBe32(row += kWidth);
  }
  return place;
}

RunRows::Place RunRows::Find(std::uint64_t index) { return FindRow<true>(index); }

RunRows::Place RunRows::FindWithoutTotal(std::uint64_t index) { return FindRow<false>(index); }

RunRows::Place RunRows::FindTotal(std::uint64_t total) {
  MakeMarks();
  if (rows_ == 1) return total < end_.total ? Place{} : end_;
  const std::size_t guess = GuessPlace(total, marksPerTotal_, marks_.size());
  ForeseeRows(guess);
  const std::size_t mark =
      LastNotAbove(rising_, guess, total, [this](std::size_t i) { return marks_[i].total; });
  Place place{mark * kRowsPerMark, marks_[mark].first, marks_[mark].total};
  Place found = place;
  for (; place.row < rows_ && place.total <= total; ++place.row) {
    const std::uint64_t count = CountOf(place.row);
    if (count != 0) found = place;
    place.first += count;
    if (__builtin_add_overflow(place.total, count * ValueOf(place.row), &place.total)) break;
  }
  if (place.row == rows_ && place.total <= total) return place;
  found_ = found;
  foundCount_ = CountOf(found.row);
  return found;
}

RunCursor CursorAt(RunRows* rows, std::uint64_t index, std::uint32_t past, std::uint64_t* sum) {
  RunCursor cursor;
  cursor.past = past;
  cursor.row = rows->Bytes();
  cursor.end = cursor.row + rows->Rows() * RunRows::kWidth;
  if (sum != nullptr) *sum = 0;
  if (index == 0) return cursor;
  const RunRows::Place place = sum != nullptr ? rows->Find(index) : rows->FindWithoutTotal(index);
  const std::uint64_t inside = index - place.first;
  cursor.row += place.row * RunRows::kWidth;
  if (place.row < rows->Rows()) {
    cursor.Refill();
    cursor.left -= inside;
    if (sum != nullptr) *sum = place.total + inside * cursor.value;
  } else {
    cursor.Refill();
    if (sum != nullptr) *sum = place.total + inside * past;
  }
  return cursor;
}

}  // namespace mp4
