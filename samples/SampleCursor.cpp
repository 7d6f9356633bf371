#include "samples/SampleCursor.h"

#include <algorithm>
#include <cstring>

#include "samples/Place.h"
#include "samples/Track.h"

namespace mp4 {

namespace {

/// Taken at once; so many sizes of 32 bits do not wrap an offset.
constexpr std::size_t kMostAtOnce = 128;

std::uint64_t Packets(std::uint64_t entries, std::uint32_t frames) {
  if (frames == 1) return entries;
  return entries / frames + (entries % frames != 0 ? 1 : 0);
}

/// Copies the members from `description` on, which a chunk or run sets for all its samples.
void CopySame(const Sample& same, Sample* sample) {
  constexpr std::size_t kFrom = offsetof(Sample, description);
  std::memcpy(reinterpret_cast<char*>(sample) + kFrom, reinterpret_cast<const char*>(&same) + kFrom,
              sizeof(Sample) - kFrom);
}

}  // namespace

SampleCursor::SampleCursor(Track* track) : track_(track) {
  track->Prepare();
  tables_ = &track->tables_;
  runs_ = &track->fragments_.runs;
  tableSamples_ = track->TableSamples();
  fileSize_ = track->FileSize();
  lookAtEach_ = tables_->depends.size() > 0 || tables_->partialSync.IsThere();
  Seek(1);
}

bool SampleCursor::Seek(std::uint64_t number) {
  next_ = taken_ = 0;
  left_ = 0;
  if (number == 0 || number > tableSamples_ + runs_->samples) {
    inRun_ = true;
    nextRun_ = runs_->runs.size();
    return false;
  }
  const std::uint64_t sample = number - 1;
  same_.number = sample;
  inRun_ = sample >= tableSamples_;
  if (inRun_) {
    const std::size_t run = runs_->Find(sample);
    EnterRun(run, sample - runs_->runs[run].firstSample);
    return true;
  }
  const ChunkRows& chunks = tables_->chunks;
  row_ = chunks.FindSample(sample);
  EnterRow();
  const std::uint64_t perChunk = Packets(row_.perChunk, packFrames_);
  const std::uint64_t chunk = (sample - row_.firstSample) / perChunk;
  chunk_ = row_.firstChunk + chunk;
  entry_ = row_.firstEntry + chunk * row_.perChunk;
  guardChange_ = 0;
  EnterChunk((sample - row_.firstSample) % perChunk);
  SetTables(entry_);
  return true;
}

bool SampleCursor::TakeSome() {
  next_ = 0;
  taken_ = static_cast<std::uint32_t>(Take(some_, kSome));
  return taken_ != 0;
}

std::size_t SampleCursor::Next(Sample* samples, std::size_t most) {
  std::size_t n = 0;
  while (n < most && next_ != taken_) samples[n++] = some_[next_++];
  return n + Take(samples + n, most - n);
}

std::size_t SampleCursor::Take(Sample* samples, std::size_t most) {
  std::size_t taken = 0;
  while (taken < most && (left_ != 0 || NextStretch())) {
    const auto n = static_cast<std::size_t>(
        std::min<std::uint64_t>(left_, std::min(most - taken, kMostAtOnce)));
    Sample* const some = samples + taken;
    if (inRun_) {
      TakeRows(some, n);
    } else if (packFrames_ == 1) {
      TakeEntries(some, n);
    } else {
      TakePackets(some, n);
    }
    if (offset_ > fileSize_ && !same_.outside) MarkOutside(some, n);
    left_ -= n;
    taken += n;
  }
  return taken;
}

/// Goes to the next chunk or run that has samples.
bool SampleCursor::NextStretch() {
  if (!inRun_) {
    if (same_.number < tableSamples_ && NextChunk()) return true;
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
    EnterRow();
  }
  EnterChunk(0);
  return true;
}

/// Takes what all chunks of `row_` have.
void SampleCursor::EnterRow() {
  const Packing packing = tables_->chunks.PackingFor(row_.description);
  packFrames_ = packing.frames;
  width_ = packing.bytes != 0 ? SizeRows::Width::kConstant : tables_->sizes.Kind();
  constantSize_ = packing.bytes != 0 ? packing.bytes : tables_->sizes.Constant();
  const DescriptionSays says = NamedBy(track_->Info().descriptions, row_.description);
  byDefault_ = says.byDefault;
  guardChange_ = 0;
  same_.description = row_.description;
  same_.elsewhere = says.elsewhere;
  same_.fragment = 0;
  same_.depends = 0;
  same_.sync = tables_->sync.IsThere() ? Told::kNo : Told::kYes;
}

/// Begins at a sample of the chunk `chunk_`, whose first entry is `entry_`.
void SampleCursor::EnterChunk(std::uint64_t samplesPassed) {
  const std::uint64_t entries =
      std::min<std::uint64_t>(row_.perChunk, tables_->chunks.Entries() - entry_);
  left_ = Packets(entries, packFrames_) - samplesPassed;
  const std::uint64_t passed = samplesPassed * packFrames_;
  entriesLeft_ = entries - passed;
  std::uint64_t bytes = 0;
  if (samplesPassed > 0) {
    bytes = width_ == SizeRows::Width::kConstant ? samplesPassed * constantSize_
                                                 : tables_->sizes.Sum(entry_, entry_ + passed);
  }
  EnterPlace(tables_->chunks.OffsetOf(chunk_), bytes);
  entry_ += passed;
  ++chunk_;
  if (entry_ >= guardChange_) {
    same_.isProtected = ToldBy(tables_->guards.At(entry_, &guardChange_), byDefault_);
    guardChange_ += entry_;
  }
}

void SampleCursor::EnterPlace(std::uint64_t offset, std::uint64_t bytesPassed) {
  offset_ = offset + bytesPassed;
  same_.outside = IsOutside(offset, bytesPassed, fileSize_);
}

/// Sets the cursors over the tables to an entry.
void SampleCursor::SetTables(std::uint64_t entry) {
  times_ = CursorAt(&tables_->times, entry, tables_->times.LastValue(), &time_);
  offsets_ = RunCursor();
  if (tables_->hasOffsets) offsets_ = CursorAt(&tables_->offsets, entry, 0, nullptr);
  if (tables_->sync.IsThere()) sync_ = CursorAt(tables_->sync, entry + 1);
  if (tables_->partialSync.IsThere()) partial_ = CursorAt(tables_->partialSync, entry + 1);
}

void SampleCursor::TakeEntries(Sample* samples, std::size_t n) {
  const SizeRows& sizes = tables_->sizes;
  if (width_ == SizeRows::Width::k32) {
    const unsigned char* row = sizes.Bytes() + entry_ * 4;
    TakeSized(samples, n, [row](std::size_t i) { return LoadBe32(row + i * 4); });
  } else if (width_ == SizeRows::Width::kConstant) {
    TakeSized(samples, n, [size = constantSize_](std::size_t) { return size; });
  } else {
    TakeSized(samples, n, [&sizes, first = entry_](std::size_t i) { return sizes.At(first + i); });
  }
  if (sync_.number <= entry_ + n) MarkSync(samples, n);
  if (lookAtEach_ || guardChange_ < entry_ + n) LookUp(samples, n);
  entry_ += n;
}

template <class SizeOf>
void SampleCursor::TakeSized(Sample* samples, std::size_t n, const SizeOf& sizeOf) {
  const Sample same = same_;
  RunCursor times = times_;
  RunCursor offsets = offsets_;
  std::uint64_t offset = offset_;
  std::uint64_t time = time_;
  for (std::size_t i = 0; i < n; ++i) {
    if (times.left == 0) times.Refill();
    --times.left;
    if (offsets.left == 0) offsets.Refill();
    --offsets.left;
    const std::uint32_t size = sizeOf(i);
    Sample& sample = samples[i];
    sample.number = same.number + i + 1;
    sample.offset = offset;
    sample.decodeTime = static_cast<std::int64_t>(time);
    sample.compositionTime = Composed(time, static_cast<std::int32_t>(offsets.value));
    sample.size = size;
    sample.duration = times.value;
    CopySame(same, &sample);
    offset += size;
    time += times.value;
  }
  times_ = times;
  offsets_ = offsets;
  offset_ = offset;
  time_ = time;
  same_.number += n;
}

/// Marks the samples from the first one on that ends outside of the source.
void SampleCursor::MarkOutside(Sample* samples, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    samples[i].outside = samples[i].offset + samples[i].size > fileSize_;
  }
  same_.outside = true;
}

/// Marks those that the table of sync samples names; `entry_` is that of the first one.
void SampleCursor::MarkSync(Sample* samples, std::size_t n) {
  for (; sync_.number <= entry_ + n; sync_.Advance()) {
    samples[sync_.number - entry_ - 1].sync = Told::kYes;
  }
}

void SampleCursor::LookUp(Sample* samples, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) LookUpOne(entry_ + i, samples + i);
}

/// What few tracks have: groups that change, dependencies, partial sync samples.
void SampleCursor::LookUpOne(std::uint64_t entry, Sample* sample) {
  if (entry >= guardChange_) {
    same_.isProtected = ToldBy(tables_->guards.At(entry, &guardChange_), byDefault_);
    guardChange_ += entry;
  }
  sample->isProtected = same_.isProtected;
  if (entry < tables_->depends.size()) sample->depends = tables_->depends.data()[entry];
  if (entry + 1 == partial_.number) {
    partial_.Advance();
    sample->partialSync = true;
  }
}

/// Packets of several table entries: QuickTime sound.
void SampleCursor::TakePackets(Sample* samples, std::size_t n) {
  for (Sample* sample = samples; sample < samples + n; ++sample) {
    const std::uint64_t frames = std::min<std::uint64_t>(packFrames_, entriesLeft_);
    sample->number = ++same_.number;
    sample->offset = offset_;
    sample->size = constantSize_;
    offset_ += constantSize_;
    sample->decodeTime = static_cast<std::int64_t>(time_);
    RunCursor offsets = CursorAt(&tables_->offsets, entry_, 0, nullptr);
    if (offsets.left == 0) offsets.Refill();
    sample->compositionTime = Composed(time_, static_cast<std::int32_t>(offsets.value));
    // Packets exist where every delta is 1.
    sample->duration = static_cast<std::uint32_t>(frames);
    time_ += frames;
    CopySame(same_, sample);
    if (CursorAt(tables_->sync, entry_ + 1).number == entry_ + 1) sample->sync = Told::kYes;
    if (tables_->partialSync.IsThere()) partial_ = CursorAt(tables_->partialSync, entry_ + 1);
    LookUpOne(entry_, sample);
    entry_ += frames;
    entriesLeft_ -= frames;
  }
  SetTables(entry_);
}

void SampleCursor::EnterRun(std::size_t index, std::uint64_t samplesPassed) {
  const FragmentRun& run = runs_->runs[index];
  run_ = &run;
  nextRun_ = index + 1;
  left_ = run.count - samplesPassed;
  atFirst_ = samplesPassed == 0;
  const RunPlace place = run.PlaceOf(samplesPassed);
  rows_ = place.rows;
  time_ = run.decodeTime + place.duration;
  EnterPlace(run.offset, place.bytes);
  same_.description = run.description;
  same_.fragment = run.fragment;
  same_.isProtected = run.isProtected;
  same_.elsewhere = NamedBy(track_->Info().descriptions, run.description).elsewhere;
}

void SampleCursor::TakeRows(Sample* samples, std::size_t n) {
  const FragmentRun run = *run_;
  const Sample same = same_;
  const std::size_t width = run.Width();
  std::uint64_t offset = offset_;
  std::uint64_t time = time_;
  for (std::size_t i = 0; i < n; ++i) {
    const RunRow row = run.RowAt(rows_ + i * width);
    Sample& sample = samples[i];
    sample.number = same.number + i + 1;
    sample.offset = offset;
    sample.decodeTime = static_cast<std::int64_t>(time);
    sample.compositionTime = Composed(time, row.offset);
    sample.size = row.size;
    sample.duration = row.duration;
    CopySame(same, &sample);
    row.ShowFlags(run.flagsTold, &sample);
    offset += row.size;
    time += row.duration;
  }
  if (atFirst_) run.ShowFirstFlags(samples);
  atFirst_ = false;
  rows_ += n * width;
  offset_ = offset;
  time_ = time;
  same_.number += n;
  if (run.extra != 0) TakeExtra(samples, n);
}

void SampleCursor::TakeExtra(Sample* samples, std::size_t n) const {
  const FragmentExtra& extra = runs_->extras[run_->extra - 1];
  for (Sample* sample = samples; sample < samples + n; ++sample) extra.Show(sample);
}

}  // namespace mp4
