#pragma once

#include <cstdint>
#include <vector>

#include "door/HostCopy.h"
#include "io/MemorySource.h"
#include "iso/BoxTree.h"
#include "mp4judge/mp4judge.h"

namespace mp4 {

/// Tries what makes the host answer as it does: its judgement of a copy in which single bytes were
/// changed. All trials together do no more than a fixed amount of work.
class HostTrial {
 public:
  /// Bytes from a place in the copy on.
  struct Change {
    std::uint64_t offset;
    std::vector<unsigned char> bytes;
  };

  explicit HostTrial(HostCopy copy);

  /// The host's answer for the copy with these changes; unreadable once IsSpent.
  mp4judge_host_answer Answer(const std::vector<Change>& changes);
  bool IsSpent() const { return work_ >= kMostWork; }

  const HostCopy& Copy() const { return copy_; }
  /// The boxes of the copy.
  BoxTree& Tree() { return tree_; }
  /// What lets the host pass over a box, whatever it is and however its size is written. Nothing
  /// for a box inside a compressed movie.
  std::vector<Change> Without(const std::vector<BoxId>& boxes);

 private:
  /// Bytes that the trials may read, with kCallWork more for each call.
  static constexpr std::uint64_t kMostWork = std::uint64_t{4} << 20;

  HostCopy copy_;
  std::uint64_t work_ = 0;
  MemorySource memory_;
  CachedSource cache_;
  BoxTree tree_;
  std::uint64_t inflating_;  ///< work of each trial on compressed movies
};

}  // namespace mp4
