#include "samples/RunRows.h"

namespace mp4 {

void RunRows::Load(BoxTree* tree, BoxId box, SampleProblems* problems) {
  rows_ = LoadRows(tree, box, 4, kWidth, &bytes_, problems);
  std::size_t last = rows_;
  while (last > 0 && CountOf(last - 1) == 0) --last;
  lastValue_ = last > 0 ? ValueOf(last - 1) : 0;
}

void RunRows::MakeAllMarks() {
  marks_.reserve(rows_ / kRowsPerMark + 1);
  std::uint64_t first = 0;
  std::uint64_t total = 0;
  for (std::size_t row = 0; row < rows_; ++row) {
    if (row % kRowsPerMark == 0) marks_.push_back({first, total});
    const std::uint64_t count = CountOf(row);
    first += count;
    total += count * ValueOf(row);
  }
  if (marks_.empty()) marks_.push_back({0, 0});
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
  if (rows_ == 1) return index < end_.first ? Place{} : end_;
  const std::size_t mark =
      LastNotAbove(marks_.size(), GuessPlace(index, marksPerSample_, marks_.size()), index,
                   [this](std::size_t i) { return marks_[i].first; });
  Place place{mark * kRowsPerMark, marks_[mark].first, marks_[mark].total};
  const unsigned char* row = bytes_.data() + place.row * kWidth;
  for (; place.row < rows_; ++place.row, row += kWidth) {
    const std::uint64_t count = LoadBe32(row);
    if (index - place.first < count) break;
    place.first += count;
    if constexpr (kTotal) place.total += count * LoadBe32(row + 4);
  }
  return place;
}

RunRows::Place RunRows::Find(std::uint64_t index) { return FindRow<true>(index); }

RunRows::Place RunRows::FindWithoutTotal(std::uint64_t index) { return FindRow<false>(index); }

RunRows::Place RunRows::FindTotal(std::uint64_t total) {
  MakeMarks();
  const std::size_t mark =
      LastNotAbove(marks_.size(), GuessPlace(total, marksPerTotal_, marks_.size()), total,
                   [this](std::size_t i) { return marks_[i].total; });
  Place place{mark * kRowsPerMark, marks_[mark].first, marks_[mark].total};
  Place found = place;
  for (; place.row < rows_ && place.total <= total; ++place.row) {
    const std::uint64_t count = CountOf(place.row);
    if (count != 0) found = place;
    place.first += count;
    place.total += count * ValueOf(place.row);
  }
  return place.row == rows_ && place.total <= total ? place : found;
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
