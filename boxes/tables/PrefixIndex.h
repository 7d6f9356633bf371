#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

#include "boxes/base/BoxReading.h"

namespace mp4 {

/// Finds the first row of a table whose running quantity passes a target. `State` is that quantity
/// before a row: default-constructed it stands before row 0, `State::kRowBytes` is a row's width,
/// and `After(row)` gives the state behind a row.
///
/// Running quantities of a hostile table may fall again (negative counts, wrapping sums). The
/// states therefore carry the largest value so far, which never falls, and which first passes a
/// target exactly where the quantity itself does.
///
/// Targets asked in rising order cost amortised constant time; any other target costs O(log n) and
/// a scan of kStride rows. Rows may be appended between queries, and the last row may change.
template <class State>
class PrefixIndex {
 public:
  /// A row and the state before it.
  struct Place {
    int row = 0;
    State before;
  };

  /// The first row behind which `reached(state)` holds, or `count` with the state behind all rows.
  /// `reached` must hold for every state behind one for which it holds. All `count` rows exist.
  template <class Reached>
  Place Find(const unsigned char* rows, int count, Reached reached) {
    if (count <= 0) return Place{};
    const int last = count - 1;
    if (HoldsTarget(rows, reached)) return cursor;
    Place at = cursor;
    const bool passed = at.row > 0 && reached(at.before);
    bool found = !passed && Scan(rows, std::min(last, at.row + kStride), reached, &at);
    if (!found && (passed || at.row < last)) {
      at = NearestBefore(rows, last, reached);
      found = Scan(rows, last, reached, &at);
    }
    cursor = at;
    if (found) return at;
    const State end = At(rows, last, at.before);
    return reached(end) ? at : Place{count, end};
  }

  /// Forgets everything: the rows have been replaced.
  void Reset() {
    checkpoints.clear();
    cursor = Place{};
  }

 private:
  static constexpr int kStride = 64;

  static State At(const unsigned char* rows, int row, const State& before) {
    return before.After(rows + static_cast<std::size_t>(row) * State::kRowBytes);
  }

  /// The row of the last query mostly holds the next target too.
  template <class Reached>
  bool HoldsTarget(const unsigned char* rows, Reached reached) const {
    return (cursor.row == 0 || !reached(cursor.before)) &&
           reached(At(rows, cursor.row, cursor.before));
  }

  /// Moves forward to the row sought, but not past `limit`, which is not looked at.
  template <class Reached>
  static bool Scan(const unsigned char* rows, int limit, Reached reached, Place* at) {
    for (; at->row < limit; ++at->row) {
      const State after = At(rows, at->row, at->before);
      if (reached(after)) return true;
      at->before = after;
    }
    return false;
  }

  template <class Reached>
  Place NearestBefore(const unsigned char* rows, int last, Reached reached) {
    WithoutThrowing([&] { Extend(rows, last); });
    const auto after = std::partition_point(checkpoints.begin(), checkpoints.end(),
                                            [&](const State& state) { return !reached(state); });
    if (after == checkpoints.begin()) return Place{};
    return {static_cast<int>(after - checkpoints.begin()) * kStride, *(after - 1)};
  }

  /// A checkpoint is made only in front of a row that exists: the last row may still grow.
  void Extend(const unsigned char* rows, int last) {
    const auto wanted = static_cast<std::size_t>(last / kStride);
    if (checkpoints.empty()) checkpoints.reserve(wanted);
    while (checkpoints.size() < wanted) {
      State state = checkpoints.empty() ? State{} : checkpoints.back();
      const int first = static_cast<int>(checkpoints.size()) * kStride;
      for (int i = 0; i < kStride; ++i) state = At(rows, first + i, state);
      checkpoints.push_back(state);
    }
  }

  std::vector<State> checkpoints;  ///< [b]: the state before row (b + 1) * kStride
  Place cursor;                    ///< where the last query ended, never behind the last row
};

}  // namespace mp4
