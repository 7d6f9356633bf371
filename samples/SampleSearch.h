#pragma once

#include <cstdint>

#include "samples/FragmentRuns.h"
#include "samples/SampleTables.h"

namespace mp4 {

/// Finds samples of a track by time and by being sync samples, through the marks of its tables and
/// runs. Numbers are 1-based, 0 is none. Borrows both.
class SampleSearch {
 public:
  /// `tableSamples` are the samples listed from the tables.
  SampleSearch(SampleTables* tables, std::uint64_t tableSamples, FragmentRuns* runs)
      : tables_(tables), tableSamples_(tableSamples), runs_(runs) {}

  /// The last sample whose decode time is at or before `time`.
  std::uint64_t AtDecodeTime(std::int64_t time);
  /// The sample with the greatest composition time at or before `time`, of several the last.
  std::uint64_t AtCompositionTime(std::int64_t time);
  /// The last sync sample up to `number`, which is at most the last number.
  std::uint64_t SyncAtOrBefore(std::uint64_t number);

 private:
  /// The best sample found so far for a composition time.
  struct Best {
    std::uint64_t number = 0;
    std::int64_t time = 0;
    void Offer(std::uint64_t candidate, std::int64_t at) {
      if (number == 0 || at > time) number = candidate, time = at;
    }
    /// Whether nothing with a time up to `greatest` can be better.
    bool Beats(std::int64_t greatest) const { return number != 0 && greatest <= time; }
  };

  std::uint64_t EntryAtDecodeTime(std::uint64_t time);
  void SearchTables(std::int64_t time, Best* best);
  void SearchRuns(std::int64_t time, Best* best);
  void SearchRun(const FragmentRun& run, std::int64_t time, Best* best);
  std::uint64_t SyncInTables(std::uint64_t number);
  void FindOffsetRange();
  std::uint64_t Latest(std::int64_t time) const;

  SampleTables* tables_;
  std::uint64_t tableSamples_;
  FragmentRuns* runs_;
  bool rangeKnown_ = false;
  std::int32_t leastOffset_ = 0;
  std::int32_t greatestOffset_ = 0;
};

}  // namespace mp4
