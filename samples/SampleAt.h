#pragma once

#include <cstdint>
#include <memory>

#include "samples/Sample.h"
#include "samples/SampleCursor.h"

namespace mp4 {

struct FragmentRuns;

/// Finds samples of a track by their number: each table is asked for what one sample needs. Borrows
/// the track.
class SampleAt {
 public:
  explicit SampleAt(Track* track);

  /// The sample, 1-based; false when there is none.
  bool Find(std::uint64_t number, Sample* sample);

 private:
  void FromTables(std::uint64_t entry, Sample* sample) const;
  void Date(std::uint64_t entry, Sample* sample) const;
  void FromRuns(std::uint64_t index, Sample* sample) const;

  Track* track_;
  SampleTables* tables_;
  const FragmentRuns* runs_;
  std::uint64_t tableSamples_;
  std::uint64_t fileSize_;
  std::unique_ptr<SampleCursor> cursor_;  ///< where samples of the tables are packed
};

}  // namespace mp4
