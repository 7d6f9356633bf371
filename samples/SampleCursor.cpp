#include "samples/SampleCursor.h"

#include <algorithm>

#include "samples/Track.h"

namespace mp4 {

namespace {

/// Offsets from here on are outside of every source, and no sum over a chunk wraps below it.
constexpr std::uint64_t kFarOutside = std::uint64_t{1} << 63;

std::uint64_t EntriesOf(const ChunkRows& chunks, std::uint64_t firstEntry, std::uint32_t perChunk) {
  return std::min<std::uint64_t>(perChunk, chunks.Entries() - firstEntry);
}

std::uint64_t Packets(std::uint64_t entries, std::uint32_t frames) {
  return entries / frames + (entries % frames != 0 ? 1 : 0);
}

Told ProtectedBy(Guard guard, Told byDefault) {
  if (guard == Guard::kNone) return byDefault;
  return guard == Guard::kClear ? Told::kNo : Told::kYes;
}

}  // namespace

SampleCursor::SampleCursor(Track* track) : track_(track) {
  track->Prepare();
  tables_ = &track->tables_;
  sizes_ = &tables_->sizes;
  runs_ = &track->fragments_.runs;
  tableSamples_ = track->TableSamples();
  fileSize_ = track->FileSize();
  sizeBytes_ = sizes_->Bytes();
  Seek(1);
}

bool SampleCursor::Seek(std::uint64_t number) {
  left_ = 0;
  if (number == 0 || number > tableSamples_ + runs_->samples) {
    number_ = tableSamples_ + runs_->samples;
    inRun_ = true;
    nextRun_ = runs_->runs.size();
    return false;
  }
  const std::uint64_t sample = number - 1;
  number_ = sample;
  inRun_ = sample >= tableSamples_;
  if (inRun_) {
    const std::size_t run = runs_->Find(sample);
    EnterRun(run, sample - runs_->runs[run].firstSample);
    return true;
  }
  const ChunkRows& chunks = tables_->chunks;
  if (!chunks.Packs()) Foresee(sample);
  row_ = chunks.FindSample(sample);
  const std::uint64_t perChunk = Packets(row_.perChunk, chunks.PackingFor(row_.description).frames);
  const std::uint64_t chunk = (sample - row_.firstSample) / perChunk;
  chunk_ = row_.firstChunk + chunk;
  entry_ = row_.firstEntry + chunk * row_.perChunk;
  EnterChunk((sample - row_.firstSample) % perChunk);
  SetTables(entry_);
  return true;
}

/// Asks for what the tables have of an entry, so that the waits for memory overlap.
void SampleCursor::Foresee(std::uint64_t entry) const {
  if (sizes_->Kind() == SizeRows::Width::k32) __builtin_prefetch(sizeBytes_ + entry * 4);
  tables_->times.Foresee(entry);
  tables_->offsets.Foresee(entry);
}

std::size_t SampleCursor::Next(Sample* samples, std::size_t most) {
  std::size_t n = 0;
  while (n < most && Next(samples + n)) ++n;
  return n;
}

/// Goes to the next chunk or run that has samples.
bool SampleCursor::NextStretch() {
  if (!inRun_) {
    if (number_ < tableSamples_ && NextChunk()) return true;
    inRun_ = true;
    nextRun_ = 0;
  }
  if (nextRun_ >= runs_->runs.size()) return false;
  EnterRun(nextRun_, 0);
  return true;
}

bool SampleCursor::NextChunk() {
  const ChunkRows& chunks = tables_->chunks;
  while (chunk_ >= row_.endChunk || row_.perChunk == 0) {
    if (row_.index >= chunks.Rows()) return false;
    row_ = chunks.Next(row_);
    chunk_ = row_.firstChunk;
  }
  EnterChunk(0);
  return true;
}

/// Begins at a sample of the chunk `chunk_`, whose first entry is `entry_`.
void SampleCursor::EnterChunk(std::uint64_t samplesPassed) {
  const ChunkRows& chunks = tables_->chunks;
  const std::uint64_t entries = EntriesOf(chunks, entry_, row_.perChunk);
  const Packing packing = chunks.PackingFor(row_.description);
  packFrames_ = packing.frames;
  width_ = packing.bytes != 0 ? SizeRows::Width::kConstant : sizes_->Kind();
  constantSize_ = packing.bytes != 0 ? packing.bytes : sizes_->Constant();
  left_ = Packets(entries, packFrames_) - samplesPassed;
  const std::uint64_t passed = samplesPassed * packFrames_;
  entriesLeft_ = entries - passed;
  offset_ = chunks.OffsetOf(chunk_);
  outside_ = offset_ >= kFarOutside || offset_ > fileSize_;
  if (samplesPassed > 0) {
    const std::uint64_t before = width_ == SizeRows::Width::kConstant
                                     ? samplesPassed * constantSize_
                                     : tables_->sizes.Sum(entry_, entry_ + passed);
    offset_ += before;
    outside_ = outside_ || offset_ > fileSize_;
  }
  entry_ += passed;
  ++chunk_;
  description_ = row_.description;
  const std::vector<Description>& all = track_->Info().descriptions;
  const bool known = description_ >= 1 && description_ <= all.size();
  elsewhere_ = known && all[description_ - 1].elsewhere;
  byDefault_ = !known ? Told::kUnknown : all[description_ - 1].byDefault ? Told::kYes : Told::kNo;
  const Guard guard = tables_->guards.At(entry_, &guardChange_);
  guardChange_ += entry_;
  isProtected_ = ProtectedBy(guard, byDefault_);
  const bool each = tables_->depends.size() > 0 || tables_->partialSync.IsThere();
  nextLook_ = each ? 0 : guardChange_;
}

/// Sets the cursors over the tables to an entry.
void SampleCursor::SetTables(std::uint64_t entry) {
  times_ = CursorAt(&tables_->times, entry, tables_->times.LastValue(), &time_);
  offsets_ = RunCursor();
  if (tables_->hasOffsets) offsets_ = CursorAt(&tables_->offsets, entry, 0, nullptr);
  allSync_ = !tables_->sync.IsThere();
  if (!allSync_) sync_ = CursorAt(tables_->sync, entry + 1);
  if (tables_->partialSync.IsThere()) partial_ = CursorAt(tables_->partialSync, entry + 1);
}

/// What few tracks have: groups that change, dependencies, partial sync samples. `entry_` has
/// passed the sample's (first) entry by one.
void SampleCursor::LookUp(Sample* sample) {
  const std::uint64_t entry = entry_ - 1;
  if (entry >= guardChange_) {
    const Guard guard = tables_->guards.At(entry, &guardChange_);
    guardChange_ += entry;
    isProtected_ = ProtectedBy(guard, byDefault_);
    if (nextLook_ != 0) nextLook_ = guardChange_;
  }
  sample->isProtected = isProtected_;
  if (entry < tables_->depends.size()) sample->depends = tables_->depends.data()[entry];
  if (entry_ == partial_.number) {
    partial_.Advance();
    sample->partialSync = true;
  }
}

/// A packet of several table entries: QuickTime sound.
void SampleCursor::TakePacket(Sample* sample) {
  const std::uint64_t frames = std::min<std::uint64_t>(packFrames_, entriesLeft_);
  const std::uint64_t last = entry_ + frames;
  sample->number = ++number_;
  Place(sample, constantSize_);
  sample->decodeTime = static_cast<std::int64_t>(time_);
  offsets_ = CursorAt(&tables_->offsets, entry_, 0, nullptr);
  if (offsets_.left == 0) offsets_.Refill();
  sample->compositionTime = static_cast<std::int64_t>(
      time_ + static_cast<std::uint64_t>(std::int64_t{static_cast<std::int32_t>(offsets_.value)}));
  // Packets exist where every delta is 1.
  sample->duration = static_cast<std::uint32_t>(frames);
  time_ += frames;
  sample->fragment = 0;
  sync_ = CursorAt(tables_->sync, entry_ + 1);
  sample->sync = allSync_ || sync_.number == entry_ + 1 ? Told::kYes : Told::kNo;
  sample->depends = 0;
  sample->partialSync = false;
  ++entry_;
  if (entry_ > nextLook_) LookUp(sample);
  entry_ = last;
  entriesLeft_ -= frames;
  times_ = CursorAt(&tables_->times, entry_, tables_->times.LastValue(), nullptr);
}

void SampleCursor::EnterRun(std::size_t index, std::uint64_t samplesPassed) {
  run_ = runs_->runs[index];
  nextRun_ = index + 1;
  left_ = run_.count - samplesPassed;
  rows_ = run_.rows;
  offset_ = run_.offset;
  time_ = run_.decodeTime;
  outside_ = offset_ >= kFarOutside || offset_ > fileSize_;
  flags_ = samplesPassed == 0 ? run_.firstFlags : run_.flags;
  flagsTold_ = samplesPassed == 0 ? run_.firstTold : run_.flagsTold;
  description_ = run_.description;
  isProtected_ = run_.isProtected;
  const std::vector<Description>& all = track_->Info().descriptions;
  elsewhere_ = description_ >= 1 && description_ <= all.size() && all[description_ - 1].elsewhere;
  if (samplesPassed == 0) return;
  const RunPlace place = run_.PlaceOf(samplesPassed);
  offset_ += place.bytes;
  time_ += place.duration;
  outside_ = outside_ || offset_ > fileSize_;
  rows_ = place.rows;
}

void SampleCursor::TakeFromRun(Sample* sample) {
  const unsigned char* field = rows_;
  std::uint32_t duration = run_.duration;
  std::uint32_t size = run_.size;
  std::uint32_t offset = 0;
  if ((run_.fields & FragmentRun::kDuration) != 0) duration = LoadBe32(field), field += 4;
  if ((run_.fields & FragmentRun::kSize) != 0) size = LoadBe32(field), field += 4;
  if ((run_.fields & FragmentRun::kFlags) != 0) flags_ = LoadBe32(field), field += 4;
  if ((run_.fields & FragmentRun::kOffset) != 0) offset = LoadBe32(field), field += 4;
  rows_ = field;
  sample->number = ++number_;
  Place(sample, size);
  sample->decodeTime = static_cast<std::int64_t>(time_);
  sample->compositionTime = static_cast<std::int64_t>(
      time_ + static_cast<std::uint64_t>(std::int64_t{static_cast<std::int32_t>(offset)}));
  sample->duration = duration;
  time_ += duration;
  sample->fragment = run_.fragment;
  const bool notSync = (flags_ >> 16 & 1) != 0;
  sample->sync = !flagsTold_ ? Told::kUnknown : notSync ? Told::kNo : Told::kYes;
  sample->depends = static_cast<std::uint8_t>(flags_ >> 20);
  sample->partialSync = false;
  flags_ = run_.flags;
  flagsTold_ = run_.flagsTold;
  if (run_.extra != 0) TakeExtra(sample);
}

void SampleCursor::TakeExtra(Sample* sample) const {
  const FragmentExtra& extra = runs_->extras[run_.extra - 1];
  const std::uint64_t index = sample->number - 1 + extra.shift;
  if (extra.guards != nullptr) {
    sample->isProtected = ProtectedBy(extra.guards->At(index), extra.byDefault);
  }
  if (index < extra.dependsCount) sample->depends = extra.depends[index];
}

}  // namespace mp4
