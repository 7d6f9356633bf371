#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "boxes/base/SampleRecords.h"

namespace mp4 {

/// The time line that an edit list lays out: its edits one behind the other, in movie units, each
/// showing a piece of the media, in media units. Borrows the list for the duration of a call.
/// Timescales are units per second; 0 counts as 1.
class TrackEdits {
 public:
  /// Media time of an edit that is empty: it shows nothing and only takes time.
  static constexpr std::int32_t kEmptyEdit = -1;

  /// An edit and where it starts on the time line, in media units.
  struct Place {
    std::size_t edit;
    std::int64_t start;
  };

  TrackEdits(const std::vector<tagElstItem>& edits, std::int32_t mediaTimescale,
             std::int32_t movieTimescale)
      : edits(edits), mediaTimescale(mediaTimescale), movieTimescale(movieTimescale) {}

  /// Whether an edit holds the sample at a media time; a list may have it in several.
  bool Holds(std::size_t edit, std::int64_t mediaTime) const;
  /// The first edit that ends behind `target`, which is in media units on the time line; the last
  /// edit when none does. There must be one. Linear in the edits.
  Place EditAt(std::int64_t target) const;
  std::int64_t MediaUnits(std::int64_t movieUnits) const;

 private:
  const std::vector<tagElstItem>& edits;
  std::int32_t mediaTimescale;
  std::int32_t movieTimescale;
};

/// Segment durations summed so far, so that a walk over many edits stays linear. Up to 64 edits are
/// summed anew every time, so that a host may change them in place. The sum of a longer list is
/// kept while the list stays where it is and as long as it is: a host that changes one in place has
/// to seek, which forgets the sum.
class EditSum {
 public:
  /// What the edits before edit number `edit` last, in movie units.
  std::int64_t Before(const std::vector<tagElstItem>& edits, std::size_t edit);

 private:
  const tagElstItem* list = nullptr;
  std::size_t listSize = 0;
  std::size_t summed = 0;
  std::int64_t duration = 0;
};

}  // namespace mp4
