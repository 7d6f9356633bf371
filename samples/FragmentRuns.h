#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

#include "io/ByteOrder.h"
#include "io/LazyArray.h"
#include "samples/GroupMap.h"
#include "samples/Sample.h"

namespace mp4 {

/// A place inside a run.
struct RunPlace {
  const unsigned char* rows = nullptr;
  std::uint64_t bytes = 0;     ///< of the samples in front of it
  std::uint64_t duration = 0;  ///< of the samples in front of it
};

/// What a run says of one sample.
struct RunRow {
  std::uint32_t duration = 0;
  std::uint32_t size = 0;
  std::uint32_t flags = 0;
  std::int32_t offset = 0;  ///< composition time behind the decode time

  /// Sets what flags tell, if they are told.
  void ShowFlags(bool told, Sample* sample) const {
    const bool notSync = (flags >> 16 & 1) != 0;
    sample->sync = !told ? Told::kUnknown : notSync ? Told::kNo : Told::kYes;
    sample->depends = static_cast<std::uint8_t>(flags >> 20);
  }
};

/// A stretch of samples of one track run (TrackRunBox "trun", ISO/IEC 14496-12, 8.8.8): a run
/// whole, or at most kRunRows samples of one with rows. What the rows do not tell holds for all.
struct FragmentRun {
  /// Fields of a row, in their order.
  static constexpr std::uint8_t kDuration = 1;
  static constexpr std::uint8_t kSize = 2;
  static constexpr std::uint8_t kFlags = 4;
  static constexpr std::uint8_t kOffset = 8;

  std::uint64_t firstSample = 0;  ///< 0-based in the track
  std::uint64_t decodeTime = 0;
  std::uint64_t offset = 0;
  std::int64_t composedBy = 0;  ///< no sample of this run and those before it is composed later
  const unsigned char* rows = nullptr;  ///< as in the file
  std::uint32_t count = 0;
  std::uint32_t fragment = 0;  ///< 1-based
  std::uint32_t duration = 0;
  std::uint32_t size = 0;
  std::uint32_t flags = 0;
  std::uint32_t firstFlags = 0;  ///< of the first sample
  std::uint32_t description = 0;
  std::uint32_t syncRun = 0;  ///< 1-based: the last run up to this one with a sync sample; 0: none
  std::uint32_t extra = 0;    ///< 1-based among the extras; 0: none
  std::uint8_t fields = 0;
  bool flagsTold = false;
  bool firstTold = false;  ///< whether firstFlags are told
  Told isProtected = Told::kUnknown;

  std::size_t Width() const { return WidthOf(fields); }
  /// Bytes of some fields: a call of the runtime would count the bits of them.
  static std::size_t WidthOf(unsigned fields) {
    constexpr std::uint64_t kFieldsOf = 0x4332322132212110;
    return (kFieldsOf >> (fields * 4) & 15) * 4;
  }
  /// The row at `field`; what it does not tell is the same for all, of the first sample too.
  RunRow RowAt(const unsigned char* field) const {
    RunRow row{duration, size, flags, 0};
    if ((fields & kDuration) != 0) row.duration = LoadBe32(field), field += 4;
    if ((fields & kSize) != 0) row.size = LoadBe32(field), field += 4;
    if ((fields & kFlags) != 0) row.flags = LoadBe32(field), field += 4;
    if ((fields & kOffset) != 0) row.offset = static_cast<std::int32_t>(LoadBe32(field));
    return row;
  }
  /// Sets what the flags of the first sample tell.
  void ShowFirstFlags(Sample* first) const {
    if ((fields & kFlags) == 0) RunRow{0, 0, firstFlags, 0}.ShowFlags(firstTold, first);
  }
  /// Behind the first `samples`.
  RunPlace PlaceOf(std::uint64_t samples) const;
  /// Index of the last sample whose decode time is at or before `time`, which is not below the
  /// first one's.
  std::uint64_t LastAtTime(std::uint64_t time) const;
  /// The last sync sample up to index `last`, 1-based; 0 without one.
  std::uint64_t LastSync(std::uint64_t last) const;
};

/// What few runs have: samples whose protection or dependencies are told one by one.
struct FragmentExtra {
  std::shared_ptr<const GuardMap> guards;  ///< null when one answer holds for the run
  std::uint64_t shift = 0;  ///< added to a sample's index in the track: its index in the fragment
  const unsigned char* depends = nullptr;  ///< payload of "sdtp"
  std::uint64_t dependsCount = 0;
  Told byDefault = Told::kUnknown;  ///< outside of any group

  void Show(Sample* sample) const;
};

constexpr std::uint32_t kRunRows = 128;

/// The runs of one track, in file order.
struct FragmentRuns {
  std::deque<FragmentRun> runs;
  std::vector<FragmentExtra> extras;
  std::uint64_t first = 0;    ///< samples of the movie box in front of them
  std::uint64_t samples = 0;  ///< of all runs
  bool timesRise = true;      ///< whether decode times never fall from run to run
  std::uint64_t endTime = 0;
  std::int32_t leastOffset = 0;  ///< composition offsets
  std::int32_t greatestOffset = 0;

  /// Index of the run that holds a sample, 0-based in the track and inside the runs.
  std::size_t Find(std::uint64_t sample) const;
  /// The last run that has a sample whose decode time is at or before `time`; runs.size() without
  /// one.
  std::size_t LastAtTime(std::uint64_t time);

 private:
  void FindLeastTimes();
  std::vector<std::uint64_t> leastTimes_;  ///< where times fall: from each run on
};

/// Keeps the rows of runs: where the source lies in memory they stay there.
class RowKeep {
 public:
  const unsigned char* Keep(const unsigned char* rows, std::size_t n);
  std::size_t Bytes() const { return bytes_; }

 private:
  std::vector<LazyArray<unsigned char>> blocks_;
  std::size_t left_ = 0;
  std::size_t bytes_ = 0;
  unsigned char* next_ = nullptr;
};

}  // namespace mp4
