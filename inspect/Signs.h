#pragma once

#include <cstdint>
#include <set>
#include <vector>

#include "inspect/Findings.h"
#include "inspect/Movie.h"

namespace mp4 {

/// Boxes outside the sample entries that only encrypted media has: "senc", its PIFF form, sample
/// groups "seig", sample auxiliary information of a scheme, and protection systems of a fragment.
/// What they mean depends on the sample entries, so they are collected first.
class Signs {
 public:
  explicit Signs(Findings* findings) : findings_(findings) {}

  /// Keeps the box if it is a sign, the first of its kind for each track. True when it is one.
  bool Collect(BoxId box, std::uint32_t track);
  /// Keeps a protection system box that a fragment or segment holds.
  void CollectSystem(BoxId box) { Keep(Kind::kSystem, box, 0); }

  /// Once all movie boxes were looked at: a sign supports what a protected track says, contradicts
  /// a clear one, and without a movie box says by itself that the media is protected.
  void Resolve(const MovieFacts& movie);

 private:
  enum class Kind : std::uint8_t { kSamples, kGroups, kGroupMap, kAuxiliary, kSystem };
  struct Sign {
    Kind kind;
    BoxId box;
    std::uint32_t track;
  };

  void Keep(Kind kind, BoxId box, std::uint32_t track);
  bool IsKind(BoxId box, Kind* kind);
  bool TurnsOnEncryption(BoxId sgpd);
  void ResolveOne(const Sign& sign, const MovieFacts& movie);
  static const char* TextOf(Kind kind);

  Findings* findings_;
  std::vector<Sign> signs_;
  std::set<std::uint64_t> seen_;             ///< track and kind
  std::set<std::uint32_t> describedTracks_;  ///< with descriptions of "seig" groups
};

}  // namespace mp4
