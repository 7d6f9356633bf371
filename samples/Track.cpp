#include "samples/Track.h"

#include <algorithm>

#include "io/FourCC.h"
#include "samples/Movie.h"
#include "samples/SampleAt.h"
#include "samples/SampleSearch.h"

namespace mp4 {

Track::Track(Movie* movie, TrackInfo info, BoxId trak)
    : movie_(movie), trak_(trak), info_(std::move(info)) {
  fragments_.descriptions = &info_.descriptions;
  fragments_.problems = &problems_;
}

Track::~Track() = default;

std::uint64_t Track::FileSize() const { return movie_->MediaSize(); }

void Track::LoadTables() {
  if (loaded_) return;
  loaded_ = true;
  tablesElsewhere_ = movie_->initTree_ != nullptr;
  BoxTree* tree = movie_->MovieTree();
  const BoxId stbl = trak_ != kNoBox ? SampleTableOf(tree, trak_) : kNoBox;
  if (stbl != kNoBox) {
    tables_.Load(tree, stbl, info_.descriptions, info_.handler, &problems_);
  } else if (trak_ != kNoBox) {
    problems_.Note(SampleFault::kMissing, FourCC("stbl"));
  }
  fragments_.runs.first = TableSamples();
  if (tables_.guardDescriptions.there) fragments_.movieGuards = &tables_.guardDescriptions;
}

FragmentTrack* Track::Fragments() {
  LoadTables();
  if (!hasFragments_) fragments_.time = fragments_.runs.endTime = tables_.EndTime();
  hasFragments_ = true;
  return &fragments_;
}

void Track::Prepare() {
  LoadTables();
  movie_->ReadFragments();
}

std::uint64_t Track::SampleCount() {
  Prepare();
  return TableSamples() + fragments_.runs.samples;
}

bool Track::At(std::uint64_t number, Sample* sample) {
  if (at_ == nullptr) at_ = std::make_unique<SampleAt>(this);
  return at_->Find(number, sample);
}

SampleSearch* Track::Search() {
  Prepare();
  if (search_ == nullptr) {
    search_ = std::make_unique<SampleSearch>(&tables_, TableSamples(), &fragments_.runs);
  }
  return search_.get();
}

std::uint64_t Track::NumberAtDecodeTime(std::int64_t time) { return Search()->AtDecodeTime(time); }

std::uint64_t Track::NumberAtCompositionTime(std::int64_t time) {
  return Search()->AtCompositionTime(time);
}

std::uint64_t Track::NumberAtPresentationTime(std::int64_t time) {
  std::int64_t mediaTime = 0;
  return info_.timeline.ToMedia(time, &mediaTime) ? NumberAtCompositionTime(mediaTime) : 0;
}

std::uint64_t Track::SyncAtOrBefore(std::uint64_t number) {
  SampleSearch* search = Search();
  return search->SyncAtOrBefore(std::min(number, SampleCount()));
}

std::uint64_t Track::ShadowOf(std::uint64_t number) {
  Prepare();
  return number <= TableSamples() ? tables_.ShadowOf(number) : 0;
}

void Track::EachStretch(const std::function<void(const Stretch&)>& call) {
  Prepare();
  const ChunkRows& chunks = tables_.chunks;
  std::uint64_t sample = 0;
  for (ChunkRows::Row row = chunks.First(); row.index < chunks.Rows() && sample < TableSamples();
       row = chunks.Next(row)) {
    const std::uint64_t frames = chunks.PackingFor(row.description).frames;
    const std::uint64_t full = row.perChunk / frames + (row.perChunk % frames != 0 ? 1 : 0);
    for (std::uint64_t chunk = row.firstChunk;
         full > 0 && chunk < row.endChunk && sample < TableSamples(); ++chunk) {
      const std::uint64_t samples = std::min(full, TableSamples() - sample);
      call({sample + 1, samples, chunks.OffsetOf(chunk)});
      sample += samples;
    }
  }
  for (const FragmentRun& run : fragments_.runs.runs) {
    call({run.firstSample + 1, run.count, run.offset});
  }
}

const SampleProblems& Track::Problems() {
  Prepare();
  if (!disagreementsNoted_ && trak_ != kNoBox) tables_.NoteDisagreements(&problems_);
  disagreementsNoted_ = true;
  return problems_;
}

}  // namespace mp4
