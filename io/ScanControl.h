#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>

namespace mp4 {

/// What one opening of a file may cost, and whether it loads what cannot change the judgement.
/// A reader carries it while a file is being opened, so that every box sees the same account;
/// readers used outside an opening carry none and are unbounded. A charge that is refused makes
/// the box that asked for it fail.
///
/// An inflated movie is a source of its own and has a control of its own, which spends from the
/// account of the file around it. Its bytes add to that account as much bulk reading as bytes of a
/// file do, and fewer box headers. They add no memory, no merging and no fixed share, since a few
/// kilobytes can inflate a thousandfold.
class ScanControl {
 public:
  /// `sourceSize` is the size of the source in bytes, taken once when the opening starts.
  explicit ScanControl(std::int64_t sourceSize, ScanControl* outer = nullptr);
  ScanControl(const ScanControl&) = delete;
  ScanControl& operator=(const ScanControl&) = delete;

  bool TakeHeader() { return Take(&account->headers, 1); }
  bool TakeBytes(std::int64_t n) { return Take(&account->bytes, n); }
  bool TakeMemory(std::int64_t n) { return Take(&account->memory, n); }
  bool TakeMerge(std::int64_t n) { return Take(&account->merge, n); }
  /// Inflated bytes are counted for the whole opening, however deep the movie is nested.
  bool TakeInflated(std::int64_t n) { return Take(&account->inflated, n); }

  /// Notes that the track record at `place` has this ID and returns the place of the first record
  /// with it; -1 unless the records before were noted one by one. Spares each track header a search
  /// among all records. May throw bad_alloc.
  std::int64_t NoteTrack(std::uint32_t id, std::size_t place) {
    if (account->tracksNoted != place) return -1;
    const auto first = account->firstTracks.try_emplace(id, place).first->second;
    ++account->tracksNoted;
    return static_cast<std::int64_t>(first);
  }

  /// Size of the source when the opening began.
  const std::int64_t sourceSize;
  /// Sample tables and run entries are passed over as if read, for a caller that only judges.
  bool tablesUnread;

 private:
  struct Account {
    Account();
    std::int64_t headers, bytes, memory, merge;
    std::int64_t inflated = 0;
    std::size_t tracksNoted = 0;
    std::unordered_map<std::uint32_t, std::size_t> firstTracks;
  };

  /// A multiple of the source; a sparse file of exabytes must not overflow it.
  std::int64_t Share(std::int64_t perByte) const;

  static bool Take(std::int64_t* left, std::int64_t n) {
    if (n > *left) {
      *left = 0;
      return false;
    }
    *left -= n;
    return true;
  }

  Account own;
  Account* account;
};

}  // namespace mp4
