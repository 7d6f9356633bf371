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
class SampleCursor {
 public:
  /// At the first sample.
  explicit SampleCursor(Track* track);

  /// The next sample; false behind the last one.
  bool Next(Sample* sample) {
    if (left_ == 0 && !NextStretch()) return false;
    --left_;
    if (inRun_) {
      TakeFromRun(sample);
    } else {
      TakeFromTables(sample);
    }
    return true;
  }
  /// Up to `most` samples; how many there were.
  std::size_t Next(Sample* samples, std::size_t most);

  /// The next sample will be this one, 1-based; false when there is none, and the cursor is at the
  /// end.
  bool Seek(std::uint64_t number);

 private:
  void TakeFromTables(Sample* sample);
  void TakeFromRun(Sample* sample);
  bool NextStretch();
  bool NextChunk();
  void EnterChunk(std::uint64_t samplesPassed);
  void EnterRun(std::size_t index, std::uint64_t samplesPassed);
  void SetTables(std::uint64_t entry);
  void Foresee(std::uint64_t entry) const;
  void TakePacket(Sample* sample);
  void LookUp(Sample* sample);
  void TakeExtra(Sample* sample) const;

  std::uint32_t NextSize() const {
    if (width_ == SizeRows::Width::k32) return LoadBe32(sizeBytes_ + entry_ * 4);
    return width_ == SizeRows::Width::kConstant ? constantSize_ : sizes_->At(entry_);
  }
  /// Takes the place: an offset that once left the source does not come back by wrapping.
  void Place(Sample* sample, std::uint32_t size) {
    sample->offset = offset_;
    sample->size = size;
    offset_ += size;
    outside_ = outside_ || offset_ > fileSize_;
    sample->outside = outside_;
    sample->elsewhere = elsewhere_;
    sample->description = description_;
    sample->isProtected = isProtected_;
  }

  // What every sample needs stands first.
  std::uint64_t left_ = 0;    ///< samples left in the chunk or run
  std::uint64_t number_ = 0;  ///< of the last sample given
  std::uint64_t entry_ = 0;   ///< the next entry of the tables, 0-based
  std::uint64_t offset_ = 0;
  std::uint64_t time_ = 0;
  std::uint64_t fileSize_ = 0;
  const unsigned char* sizeBytes_ = nullptr;
  RunCursor times_;
  RunCursor offsets_;
  SyncCursor sync_;
  std::uint64_t nextLook_ = ~std::uint64_t{0};  ///< entry from which on LookUp has something to say
  std::uint32_t constantSize_ = 0;
  std::uint32_t description_ = 0;
  std::uint32_t packFrames_ = 1;
  SizeRows::Width width_ = SizeRows::Width::kConstant;
  bool inRun_ = false;
  bool outside_ = false;
  bool elsewhere_ = false;
  bool allSync_ = false;
  Told isProtected_ = Told::kUnknown;

  // Of the tables.
  Track* track_;
  SampleTables* tables_;
  const SizeRows* sizes_;
  std::uint64_t tableSamples_ = 0;
  ChunkRows::Row row_;
  std::uint64_t chunk_ = 0;        ///< the next one, 0-based
  std::uint64_t entriesLeft_ = 0;  ///< in the chunk, where samples take several
  Told byDefault_ = Told::kUnknown;
  std::uint64_t guardChange_ = 0;
  SyncCursor partial_;

  // Of the runs.
  const FragmentRuns* runs_;
  std::size_t nextRun_ = 0;
  FragmentRun run_;
  const unsigned char* rows_ = nullptr;
  std::uint32_t flags_ = 0;
  bool flagsTold_ = false;
};

inline void SampleCursor::TakeFromTables(Sample* sample) {
  if (packFrames_ != 1) return TakePacket(sample);
  sample->number = ++number_;
  Place(sample, NextSize());
  if (times_.left == 0) times_.Refill();
  --times_.left;
  if (offsets_.left == 0) offsets_.Refill();
  --offsets_.left;
  sample->decodeTime = static_cast<std::int64_t>(time_);
  sample->compositionTime = static_cast<std::int64_t>(
      time_ + static_cast<std::uint64_t>(std::int64_t{static_cast<std::int32_t>(offsets_.value)}));
  sample->duration = times_.value;
  time_ += times_.value;
  sample->fragment = 0;
  const bool named = ++entry_ == sync_.number;
  if (named) sync_.Advance();
  sample->sync = allSync_ || named ? Told::kYes : Told::kNo;
  sample->depends = 0;
  sample->partialSync = false;
  if (entry_ > nextLook_) LookUp(sample);
}

}  // namespace mp4
