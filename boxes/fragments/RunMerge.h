#pragma once

#include <cstdint>

#include "boxes/fragments/BoxTFHD.h"
#include "boxes/fragments/BoxTRUN.h"
#include "boxes/movie/BoxTREX.h"
#include "boxes/track/BoxSTBL.h"

namespace mp4 {

/// The values that hold for all runs of a track fragment.
struct FragmentValues {
  std::uint32_t descriptionIndex;
  std::uint32_t duration;
  std::uint32_t size;
  std::uint32_t flags;
  bool hasBase;
  std::uint64_t base;
};

/// The header's values where its bits are set, the track's defaults elsewhere.
FragmentValues ChooseValues(const BoxTFHD& header, const BoxTREX& trex);

/// One run on its way into its track's sample tables. The tables end as if the samples had been
/// appended one by one; equal neighbours are appended together.
class RunMerge {
 public:
  /// Borrows all three.
  RunMerge(const BoxTRUN& run, const FragmentValues& values, BoxSTBL* tables);

  /// What merging it costs, by the prices of io/Prices.h.
  std::int64_t Cost() const;

  /// `bytesBefore` is the size of the fragment's earlier runs; this run's is added to it.
  void Append(std::uint32_t* bytesBefore) {
    AppendChunk(*bytesBefore);
    AppendSizes(bytesBefore);
    AppendTimes();
  }

 private:
  bool Has(std::uint32_t bits) const { return (run.tr_flags & bits) != 0; }
  std::int64_t SizeCost() const;
  std::int64_t TimeCost() const;
  std::int64_t SyncCost() const;
  std::int64_t RefillCost() const;
  void AppendChunk(std::uint32_t bytesBefore);
  void AppendSizes(std::uint32_t* bytes);
  void AppendOwnSizes(BoxSTSZ* sizes, std::uint32_t* bytes);
  void AppendTimes();
  void AppendSyncSamples(std::uint32_t samplesBefore);

  template <class Take>
  void ForEachStretch(std::uint32_t bit, std::uint32_t TrunEntry::*field, std::uint32_t common,
                      Take&& take) const;

  const BoxTRUN& run;
  const FragmentValues& values;
  BoxSTBL* tables;
  std::uint32_t held;    ///< samples whose entries are there to be looked at
  std::uint32_t absent;  ///< the others, behind them
};

}  // namespace mp4
