#pragma once

#include <cstdint>
#include <vector>

#include "iso/FieldView.h"
#include "samples/Sample.h"

namespace mp4 {

/// What the "seig" sample group (ISO/IEC 23001-7, 6) says of a sample.
enum class Guard : std::uint8_t {
  kNone,       ///< in no group: the track's defaults hold
  kClear,      ///< in a group that is not protected
  kProtected,  ///< in a group that is protected
  kUnreadable  ///< in a group that cannot be read: never taken for clear
};

/// Whether a sample is protected, by its group or else by the default of its description.
inline Told ToldBy(Guard guard, Told byDefault) {
  if (guard == Guard::kNone) return byDefault;
  return guard == Guard::kClear ? Told::kNo : Told::kYes;
}

/// SampleGroupDescriptionBox ("sgpd", ISO/IEC 14496-12, 8.9.3) of grouping type "seig", reduced to
/// whether its entries are protected.
struct GuardDescriptions {
  bool there = false;
  std::vector<Guard> entries;
  std::uint32_t byDefault = 0;  ///< version 2: 1-based index for samples that no map names, or 0

  /// 1-based; what is not there cannot be read.
  Guard At(std::uint64_t index) const {
    return index >= 1 && index <= entries.size() ? entries[static_cast<std::size_t>(index - 1)]
                                                 : Guard::kUnreadable;
  }
};

/// Reads the payload of an "sgpd"; entries that are cut are left out.
GuardDescriptions ReadGuardDescriptions(FieldView payload);

/// SampleToGroupBox ("sbgp", 8.9.2) or CompactSampleToGroupBox ("csgp", 8.9.5): stretches of
/// samples over which a pattern of group indexes repeats.
struct GroupStretches {
  struct Stretch {
    std::uint64_t samples;
    std::uint32_t pattern;  ///< place of its first index
    std::uint32_t length;   ///< indexes in it, at least 1
  };
  bool there = false;
  bool cut = false;  ///< claims more than it holds
  std::vector<Stretch> stretches;
  std::vector<std::uint32_t> indexes;
};

GroupStretches ReadSampleToGroup(FieldView payload);
/// In a track fragment, an index may say by its highest bit that it is the fragment's own; those
/// come out above 0x10000 as in "sbgp".
GroupStretches ReadCompactSampleToGroup(FieldView payload, bool inFragment);

/// The answer for every sample, by its index in the track or track fragment: stretches over which
/// a pattern of answers repeats, then one answer for all the rest.
class GuardMap {
 public:
  /// `own` are the descriptions beside the map, `movie` those of the movie box: the same for a
  /// track, two for a track fragment. Either may be null.
  static GuardMap Of(const GroupStretches& map, const GuardDescriptions* own,
                     const GuardDescriptions* movie, bool inFragment);

  /// Whether the first `samples` have one answer, which At(0) gives.
  bool IsSame(std::uint64_t samples) const;
  Guard At(std::uint64_t index) const;
  /// The answer, and how many samples from `index` on are known to have it too (at least 1).
  Guard At(std::uint64_t index, std::uint64_t* same) const {
    if (!stretches_.empty()) return Find(index, same);
    *same = ~std::uint64_t{0} - index;
    return rest_;
  }

 private:
  struct Stretch {
    std::uint64_t end;  ///< index behind its last sample
    std::uint32_t pattern;
    std::uint32_t length;
  };
  Guard Find(std::uint64_t index, std::uint64_t* same) const;
  void Add(std::uint64_t samples, const std::vector<Guard>& pattern);
  std::uint64_t StartOf(std::size_t stretch) const {
    return stretch > 0 ? stretches_[stretch - 1].end : 0;
  }

  std::vector<Stretch> stretches_;
  std::vector<Guard> patterns_;
  Guard rest_ = Guard::kNone;
};

}  // namespace mp4
