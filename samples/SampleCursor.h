#pragma once

#include <cstddef>
#include <cstdint>

#include "samples/ChunkRows.h"
#include "samples/FragmentRuns.h"
#include "samples/RunRows.h"
#include "samples/Sample.h"
#include "samples/SizeRows.h"
#include "samples/SyncRows.h"

namespace mp4 {

class Track;
struct SampleTables;

/// Walks over the samples of a track in the order of their numbers. Borrows the track.
///
/// Samples are taken from the tables a few at a time: over these, what a chunk or run says of all
/// its samples is looked at once, and the places in the tables stay in registers.
class SampleCursor {
 public:
  /// At the first sample.
  explicit SampleCursor(Track* track);

  /// The next sample; false behind the last one.
  bool Next(Sample* sample) {
    if (next_ == taken_ && !TakeSome()) return false;
    *sample = some_[next_++];
    return true;
  }
  /// Up to `most` samples; how many there were.
  std::size_t Next(Sample* samples, std::size_t most);

  /// The next sample will be this one, 1-based; false when there is none, and the cursor is at the
  /// end.
  bool Seek(std::uint64_t number);

 private:
  /// Samples taken ahead.
  static constexpr std::size_t kSome = 16;

  bool TakeSome();
  std::size_t Take(Sample* samples, std::size_t most);
  void TakeEntries(Sample* samples, std::size_t n);
  template <class SizeOf>
  void TakeSized(Sample* samples, std::size_t n, const SizeOf& sizeOf);
  void TakePackets(Sample* samples, std::size_t n);
  void TakeRows(Sample* samples, std::size_t n);
  void MarkSync(Sample* samples, std::size_t n);
  void MarkOutside(Sample* samples, std::size_t n);
  void LookUp(Sample* samples, std::size_t n);
  void LookUpOne(std::uint64_t entry, Sample* sample);
  void TakeExtra(Sample* samples, std::size_t n) const;
  bool NextStretch();
  bool NextChunk();
  void EnterRow();
  void EnterChunk(std::uint64_t samplesPassed);
  void EnterPlace(std::uint64_t offset, std::uint64_t bytesPassed);
  void EnterRun(std::size_t index, std::uint64_t samplesPassed);
  void SetTables(std::uint64_t entry);

  std::uint32_t next_ = 0;   ///< among some_
  std::uint32_t taken_ = 0;  ///< how many of them there are
  Sample some_[kSome];
  /// What all samples of the chunk or run have; its number is that of the last sample taken.
  Sample same_;

  std::uint64_t left_ = 0;  ///< samples not taken of the chunk or run
  std::uint64_t offset_ = 0;
  std::uint64_t time_ = 0;
  std::uint64_t fileSize_ = 0;
  bool inRun_ = false;

  // Of the tables.
  Track* track_;
  SampleTables* tables_;
  std::uint64_t tableSamples_ = 0;
  std::uint64_t entry_ = 0;  ///< the next entry of the tables, 0-based
  RunCursor times_;
  RunCursor offsets_;
  SyncCursor sync_;
  SyncCursor partial_;
  SizeRows::Width width_ = SizeRows::Width::kConstant;
  std::uint32_t constantSize_ = 0;
  ChunkRows::Row row_;
  std::uint64_t chunk_ = 0;        ///< the next one, 0-based
  std::uint64_t entriesLeft_ = 0;  ///< in the chunk
  std::uint32_t packFrames_ = 1;
  Told byDefault_ = Told::kUnknown;
  bool lookAtEach_ = false;  ///< whether LookUp has something to say of every sample
  std::uint64_t guardChange_ = 0;

  // Of the runs.
  const FragmentRuns* runs_;
  std::size_t nextRun_ = 0;
  const FragmentRun* run_ = nullptr;
  const unsigned char* rows_ = nullptr;
  bool atFirst_ = false;  ///< whether the next sample is the first one of the run
};

}  // namespace mp4
