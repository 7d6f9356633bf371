#pragma once

#include <cstddef>
#include <cstdint>

#include "boxes/base/BoxBase.h"
#include "boxes/base/Mp4Context.h"
#include "boxes/tables/SizeEntries.h"

/// Sample size box "stsz" (ISO/IEC 14496-12, SampleSizeBox): one constant size with a count, or one
/// size per sample. It publishes largest size, total bytes and bit rate in the track record.
///
/// Samples are 0-based, sizes are unsigned bytes. Appending a size that differs turns the constant
/// form into the table form (SizeEntries), in which the samples before it stay a count and a size.
class MP4JUDGE_API BoxSTSZ : public BoxBase {
 public:
  /// Fails on a null reader, a size below 1, or when memory is refused.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  /// In constant form that size for every `i`; in table form 0 outside the table. O(1).
  unsigned int GetSampleSize(int i);
  /// Sum of GetSampleSize(j) for first <= j < last; O(1) and at most two scans of 128 rows.
  unsigned long long SumSizes(int first, int last);
  unsigned int GetSampleCount() const { return sampleCount; }

  /// Adds one sample behind the last. Total bytes and bit rate stay as they were read.
  void AppendSize(unsigned int size) { AppendSizes(size, 1); }
  /// As `count` calls of AppendSize, in one step.
  void AppendSizes(unsigned int size, unsigned int count);
  /// As AppendSize of each of the sizes; faster than one by one where they differ.
  void AppendEach(const std::uint32_t* sizes, std::size_t count);
  /// True while AppendSizes of `size` needs no memory (the constant form holds).
  bool StaysConstant(unsigned int size) const {
    return size != 0 && (sampleCount == 0 || constantSize == size);
  }

  /// 0 in table form.
  unsigned int GetConstantSize() const { return constantSize; }
  unsigned int GetLargestSize() const { return largestSize; }
  /// False once memory was refused: something appended or published is missing.
  bool IsIntact() const { return intact; }

 private:
  bool ReadTableForm(mmStreamReader* reader, long long body, std::uint64_t* total);
  void DividePackets(std::uint64_t* total);
  void PublishSizes();
  void PublishTotals(std::uint64_t total);
  bool IsAudio() const;

  std::uint64_t AppendStep(unsigned int size, unsigned int count);
  bool MustExpand() const;
  bool Expand();
  bool AppendRows(unsigned int size, std::size_t count);
  bool TakesRows(std::size_t count) const;
  bool AppendRows(const std::uint32_t* sizes, std::size_t count);
  void PublishAppended(unsigned int size);

  Mp4Context::TRACK* track = nullptr;
  std::uint32_t largestSize = 0;
  std::uint32_t constantSize = 0;
  std::uint32_t sampleCount = 0;
  mp4::SizeEntries rows;  ///< the table form; empty in constant form
  bool intact = true;
};
