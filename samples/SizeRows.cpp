#include "samples/SizeRows.h"

#include <algorithm>

#include "io/FourCC.h"

namespace mp4 {

namespace {

constexpr std::uint64_t kHeader = 12;

std::uint64_t BitsOf(SizeRows::Width width) {
  switch (width) {
    case SizeRows::Width::k32:
      return 32;
    case SizeRows::Width::k16:
      return 16;
    case SizeRows::Width::k8:
      return 8;
    default:
      return 4;
  }
}

}  // namespace

void SizeRows::Load(BoxTree* tree, BoxId id, SampleProblems* problems) {
  const Box box = tree->At(id);
  FieldView fields = tree->Payload(id, 4, 8);
  const std::uint32_t size = fields.U32();
  const std::uint64_t says = fields.U32();
  if (!fields.Ok()) {
    problems->Note(SampleFault::kCut, box.type, 0, 0, box.offset);
    return;
  }
  if (box.type == FourCC("stsz")) {
    width_ = size != 0 ? Width::kConstant : Width::k32;
    constant_ = size;
  } else {
    switch (size & 0xFF) {
      case 4:
        width_ = Width::k4;
        break;
      case 8:
        width_ = Width::k8;
        break;
      case 16:
        width_ = Width::k16;
        break;
      default:
        problems->Note(SampleFault::kFieldSize, box.type, size & 0xFF, 16, box.offset);
        return;
    }
  }
  count_ = says;
  if (width_ == Width::kConstant) return;
  const std::uint64_t bits = BitsOf(width_);
  bytes_.Load(tree, id, kHeader, (says * bits + 7) / 8, problems);
  count_ = std::min(says, std::uint64_t{bytes_.size()} * 8 / bits);
  if (count_ < says) problems->Note(SampleFault::kFewerRows, box.type, says, count_, box.offset);
}

std::uint64_t SizeRows::SumOf(std::uint64_t from, std::uint64_t to) const {
  if (width_ == Width::k32) {
    return SumOfBe32(bytes_.data() + from * 4, static_cast<std::size_t>(to - from));
  }
  std::uint64_t sum = 0;
  for (; from < to; ++from) sum += At(from);
  return sum;
}

void SizeRows::MakeMarks() {
  if (!marks_.empty()) return;
  marks_.reserve(static_cast<std::size_t>(count_ / kSizesPerMark + 1));
  std::uint64_t sum = 0;
  for (std::uint64_t at = 0; at <= count_; at += kSizesPerMark) {
    marks_.push_back(sum);
    sum += SumOf(at, std::min(at + kSizesPerMark, count_));
  }
}

std::uint64_t SizeRows::Sum(std::uint64_t from, std::uint64_t to) {
  if (width_ == Width::kConstant) return (to - from) * constant_;
  if (to - from <= 2 * kSizesPerMark) return SumOf(from, to);
  MakeMarks();
  const std::uint64_t first = (from + kSizesPerMark - 1) / kSizesPerMark;
  const std::uint64_t last = to / kSizesPerMark;
  return SumOf(from, first * kSizesPerMark) +
         (marks_[static_cast<std::size_t>(last)] - marks_[static_cast<std::size_t>(first)]) +
         SumOf(last * kSizesPerMark, to);
}

}  // namespace mp4
