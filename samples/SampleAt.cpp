#include "samples/SampleAt.h"

#include "samples/Place.h"
#include "samples/Track.h"

namespace mp4 {

SampleAt::SampleAt(Track* track) : track_(track) {
  track->Prepare();
  tables_ = &track->tables_;
  runs_ = &track->fragments_.runs;
  tableSamples_ = track->TableSamples();
  fileSize_ = track->FileSize();
  if (tables_->chunks.Packs()) cursor_ = std::make_unique<SampleCursor>(track);
}

bool SampleAt::Find(std::uint64_t number, Sample* sample) {
  if (number == 0 || number > tableSamples_ + runs_->samples) return false;
  sample->number = number;
  if (number > tableSamples_) {
    FromRuns(number - 1, sample);
  } else if (cursor_ != nullptr) {
    return cursor_->Seek(number) && cursor_->Next(sample);
  } else {
    FromTables(number - 1, sample);
  }
  return true;
}

/// Asks for the bytes that are needed before any is looked at, so that the waits for memory
/// overlap.
void SampleAt::FromTables(std::uint64_t entry, Sample* sample) const {
  const SampleTables& tables = *tables_;
  tables.times.Foresee(entry);
  tables.offsets.Foresee(entry);
  tables.sync.Foresee(entry);
  tables.sizes.Foresee(entry);
  const ChunkRows::Row row = tables.chunks.FindSample(entry);
  const std::uint64_t chunk = (entry - row.firstEntry) / row.perChunk;
  const std::uint64_t first = row.firstEntry + chunk * row.perChunk;
  tables.chunks.Foresee(row.firstChunk + chunk);
  tables.sizes.Foresee(first);

  Date(entry, sample);
  const DescriptionSays says = NamedBy(track_->Info().descriptions, row.description);
  sample->description = row.description;
  sample->fragment = 0;
  sample->sync = !tables.sync.IsThere() || tables.sync.Names(entry + 1) ? Told::kYes : Told::kNo;
  sample->isProtected = ToldBy(tables.guards.At(entry), says.byDefault);
  sample->depends = entry < tables.depends.size() ? tables.depends.data()[entry] : 0;
  sample->elsewhere = says.elsewhere;
  sample->partialSync = tables.partialSync.Names(entry + 1);

  const std::uint64_t offset = tables.chunks.OffsetOf(row.firstChunk + chunk);
  const std::uint64_t passed = tables_->sizes.Sum(first, entry);
  sample->size = tables.sizes.At(entry);
  sample->offset = offset + passed;
  sample->outside = IsOutside(offset, passed + sample->size, fileSize_);
}

void SampleAt::Date(std::uint64_t entry, Sample* sample) const {
  RunRows& times = tables_->times;
  const RunRows::Place place = times.Find(entry);
  sample->duration = times.ValueAt(place, times.LastValue());
  const std::uint64_t time = place.total + (entry - place.first) * sample->duration;
  std::int32_t offset = 0;
  if (tables_->hasOffsets) {
    RunRows& offsets = tables_->offsets;
    const std::uint32_t value = offsets.ValueAt(offsets.FindWithoutTotal(entry), 0);
    offset = static_cast<std::int32_t>(value);
  }
  sample->decodeTime = static_cast<std::int64_t>(time);
  sample->compositionTime = Composed(time, offset);
}

void SampleAt::FromRuns(std::uint64_t index, Sample* sample) const {
  const FragmentRun& run = runs_->runs[runs_->Find(index)];
  const std::uint64_t inside = index - run.firstSample;
  const RunPlace place = run.PlaceOf(inside);
  const RunRow row = run.RowAt(place.rows);
  const std::uint64_t time = run.decodeTime + place.duration;
  sample->offset = run.offset + place.bytes;
  sample->decodeTime = static_cast<std::int64_t>(time);
  sample->compositionTime = Composed(time, row.offset);
  sample->size = row.size;
  sample->duration = row.duration;
  sample->outside = IsOutside(run.offset, place.bytes + row.size, fileSize_);
  sample->description = run.description;
  sample->elsewhere = NamedBy(track_->Info().descriptions, run.description).elsewhere;
  sample->fragment = run.fragment;
  sample->isProtected = run.isProtected;
  sample->partialSync = false;
  row.ShowFlags(run.flagsTold, sample);
  if (inside == 0) run.ShowFirstFlags(sample);
  if (run.extra != 0) runs_->extras[run.extra - 1].Show(sample);
}

}  // namespace mp4
