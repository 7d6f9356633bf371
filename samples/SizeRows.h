#pragma once

#include <cstdint>
#include <vector>

#include "samples/Search.h"
#include "samples/TableBytes.h"

namespace mp4 {

/// Sample sizes (ISO/IEC 14496-12, 8.7.3): SampleSizeBox "stsz", constant or 32 bits a sample, and
/// CompactSampleSizeBox "stz2" with 4, 8 or 16 bits. A count beyond the bytes is cut.
class SizeRows {
 public:
  enum class Width : std::uint8_t { kConstant, k32, k16, k8, k4 };
  static constexpr std::size_t kSizesPerMark = 64;

  void Load(BoxTree* tree, BoxId box, SampleProblems* problems);

  std::uint64_t Count() const { return count_; }
  Width Kind() const { return width_; }
  std::uint32_t Constant() const { return constant_; }
  const unsigned char* Bytes() const { return bytes_.data(); }

  /// Size of a sample below Count(), 0-based.
  std::uint32_t At(std::uint64_t index) const {
    switch (width_) {
      case Width::kConstant:
        return constant_;
      case Width::k32:
        return LoadBe32(bytes_.data() + index * 4);
      case Width::k16:
        return LoadBe16(bytes_.data() + index * 2);
      case Width::k8:
        return bytes_.data()[index];
      case Width::k4:
        break;
    }
    const unsigned pair = bytes_.data()[index / 2];
    return index % 2 == 0 ? pair >> 4 : pair & 15;
  }

  /// Asks for the bytes of a size.
  void Foresee(std::uint64_t index) const {
    if (width_ == Width::k32) bytes_.Foresee(index * 4);
  }
  /// Sum of the sizes from one sample up to another. Long stretches are bridged by marks.
  std::uint64_t Sum(std::uint64_t from, std::uint64_t to);

 private:
  std::uint64_t SumOf(std::uint64_t from, std::uint64_t to) const;
  void MakeMarks();

  Width width_ = Width::kConstant;
  std::uint32_t constant_ = 0;
  std::uint64_t count_ = 0;
  TableBytes bytes_;
  std::vector<std::uint64_t> marks_;
};

}  // namespace mp4
