#include <algorithm>
#include <cstdint>
#include <iterator>

#include "boxes/base/BoxReading.h"
#include "boxes/fragments/BoxMOOF.h"
#include "boxes/movie/BoxMOOV.h"
#include "io/Prices.h"
#include "io/ScanControl.h"
#include "io/WithoutThrowing.h"

namespace {

/// Set in the flags of a sample that is not a sync sample; no other bit is looked at.
constexpr std::uint32_t kNotSync = 0x10000;

/// The values that hold for all runs of a track fragment.
struct FragmentValues {
  std::uint32_t descriptionIndex;
  std::uint32_t duration;
  std::uint32_t size;
  std::uint32_t flags;
  bool hasBase;
  std::uint64_t base;
};

/// The header's values where its bits are set, the track's defaults elsewhere. Without a base
/// offset of its own a fragment has base 0, wherever it lies in the file: hosts rely on it.
FragmentValues ChooseValues(const BoxTFHD& header, const BoxTREX& trex) {
  const auto choose = [&](std::uint32_t bit, std::uint32_t own, std::uint32_t fallback) {
    return (header.tf_flags & bit) != 0 ? own : fallback;
  };
  const bool hasBase = (header.tf_flags & BoxTFHD::kBaseDataOffset) != 0;
  return {
      choose(BoxTFHD::kSampleDescriptionIndex, header.sample_description_index,
             trex.default_sample_description_index),
      choose(BoxTFHD::kDefaultSampleDuration, header.default_sample_duration,
             trex.default_sample_duration),
      choose(BoxTFHD::kDefaultSampleSize, header.default_sample_size, trex.default_sample_size),
      choose(BoxTFHD::kDefaultSampleFlags, header.default_sample_flags, trex.default_sample_flags),
      hasBase,
      hasBase ? header.base_data_offset : 0};
}

/// One run on its way into its track's sample tables. The tables end as if the samples had been
/// appended one by one; equal neighbours are appended together.
class RunMerge {
 public:
  RunMerge(const BoxTRUN& run, const FragmentValues& values, BoxSTBL* tables)
      : run(run), values(values), tables(tables), held(run.sample_count) {
    constexpr std::uint32_t kAnyField = BoxTRUN::kSampleDuration | BoxTRUN::kSampleSize |
                                        BoxTRUN::kSampleFlags | BoxTRUN::kSampleCompositionOffset;
    if (run.entries == nullptr || !Has(kAnyField)) held = 0;
    if (held > 0) held -= std::min(held, run.absentEntries);
    absent = run.sample_count - held;
  }

  std::int64_t Cost() const {
    return mp4::prices::kMergedRun + SizeCost() + TimeCost() + SyncCost() + RefillCost();
  }

  /// `bytesBefore` is the size of the fragment's earlier runs; this run's is added to it.
  void Append(std::uint32_t* bytesBefore) {
    AppendChunk(*bytesBefore);
    AppendSizes(bytesBefore);
    AppendTimes();
  }

 private:
  bool Has(std::uint32_t bits) const { return (run.tr_flags & bits) != 0; }
  std::int64_t SizeCost() const;
  std::int64_t TimeCost() const;
  std::int64_t SyncCost() const;
  std::int64_t RefillCost() const;
  void AppendChunk(std::uint32_t bytesBefore);
  void AppendSizes(std::uint32_t* bytes);
  void AppendOwnSizes(BoxSTSZ* sizes, std::uint32_t* bytes);
  void AppendTimes();
  void AppendSyncSamples(std::uint32_t samplesBefore);

  /// Calls `append(value, count)` for each stretch of equal values, in order: those of the entries'
  /// `field` when the run carries it, the zeros of the entries that are not there, else `common`.
  template <class Append>
  void ForEachStretch(std::uint32_t bit, std::uint32_t TrunEntry::*field, std::uint32_t common,
                      Append&& append) const {
    if (!Has(bit)) return append(common, run.sample_count);
    for (std::uint32_t i = 0, next = 0; i < held; i = next) {
      const std::uint32_t value = run.entries[i].*field;
      for (next = i + 1; next < held && run.entries[next].*field == value;) ++next;
      append(value, next - i);
    }
    if (absent > 0) append(0, absent);
  }

  const BoxTRUN& run;
  const FragmentValues& values;
  BoxSTBL* tables;
  std::uint32_t held;    ///< samples whose entries are there to be looked at
  std::uint32_t absent;  ///< the others, behind them
};

std::int64_t RunMerge::SizeCost() const {
  if (tables->sampleSizeBox == nullptr) return 0;
  const bool read = Has(BoxTRUN::kSampleSize) && held > 0;
  const std::uint32_t size = Has(BoxTRUN::kSampleSize) ? 0 : values.size;
  if (!read && tables->sampleSizeBox->StaysConstant(size)) return 0;
  return mp4::prices::kMergedSize * run.sample_count;
}

std::int64_t RunMerge::TimeCost() const {
  const BoxSTTS* times = tables->timeToSampleBox.get();
  if (times == nullptr) return 0;
  const bool read = Has(BoxTRUN::kSampleDuration);
  // Equal durations share one row, which the run pays for, unless the table's count is hostile.
  const long long shared =
      read ? times->MostRowsFor(0, absent) : times->MostRowsFor(values.duration, run.sample_count);
  return mp4::prices::kMergedTime * ((read ? held : 0) + std::max(0LL, shared - 1));
}

std::int64_t RunMerge::SyncCost() const {
  if (tables->sampleSizeBox == nullptr || tables->syncSampleBox == nullptr) return 0;
  if (!Has(BoxTRUN::kSampleFlags) && (values.flags & kNotSync) != 0) {
    return Has(BoxTRUN::kFirstSampleFlags) ? mp4::prices::kMergedSync : 0;
  }
  return mp4::prices::kMergedSync * run.sample_count + mp4::prices::kMergedStep * absent;
}

/// Nothing, unless two tracks of a hostile file take turns in filling one track record.
std::int64_t RunMerge::RefillCost() const {
  const BoxSTTS* times = tables->timeToSampleBox.get();
  const BoxSTCO* offsets = tables->chunkOffsetBox.get();
  const std::int64_t rows = (times != nullptr ? times->RowsToRefill() : 0) +
                            (offsets != nullptr ? offsets->RowsToRefill() : 0);
  return mp4::prices::kMergedStep * rows;
}

/// A run is one chunk. Behind an explicit base the earlier runs are deliberately not counted: runs
/// without an offset of their own then all start at the base.
void RunMerge::AppendChunk(std::uint32_t bytesBefore) {
  std::uint64_t offset = values.hasBase ? values.base : bytesBefore;
  if (Has(BoxTRUN::kDataOffset)) {
    offset += static_cast<std::uint64_t>(std::int64_t{static_cast<std::int32_t>(run.data_offset)});
  }
  if (tables->chunkOffsetBox != nullptr) tables->chunkOffsetBox->AppendChunk(offset);
  if (tables->sampleToChunkBox != nullptr) {
    tables->sampleToChunkBox->AppendSampleToChunk(values.descriptionIndex, run.sample_count);
  }
}

void RunMerge::AppendSizes(std::uint32_t* bytes) {
  BoxSTSZ* sizes = tables->sampleSizeBox.get();
  const std::uint32_t samplesBefore = sizes != nullptr ? sizes->GetSampleCount() : 0;
  const bool own = Has(BoxTRUN::kSampleSize);
  if (own) AppendOwnSizes(sizes, bytes);
  const std::uint32_t others = own ? absent : run.sample_count;
  const std::uint32_t size = own ? 0 : values.size;
  if (sizes != nullptr) sizes->AppendSizes(size, others);
  *bytes += size * others;
  // Sync samples are numbered by the size table; without it there are none.
  if (sizes != nullptr && tables->syncSampleBox != nullptr) AppendSyncSamples(samplesBefore);
}

/// The sizes that stand in the entries, which mostly differ from one another.
void RunMerge::AppendOwnSizes(BoxSTSZ* sizes, std::uint32_t* bytes) {
  std::uint32_t block[128];
  for (std::uint32_t i = 0; i < held;) {
    const std::uint32_t n = std::min<std::uint32_t>(held - i, std::size(block));
    for (std::uint32_t k = 0; k < n; ++k) *bytes += block[k] = run.entries[i + k].size;
    if (sizes != nullptr) sizes->AppendEach(block, n);
    i += n;
  }
}

void RunMerge::AppendTimes() {
  BoxSTTS* times = tables->timeToSampleBox.get();
  if (times == nullptr) return;
  ForEachStretch(BoxTRUN::kSampleDuration, &TrunEntry::duration, values.duration,
                 [times](std::uint32_t duration, std::uint32_t count) {
                   times->AppendTimes(duration, count);
                 });
  times->OptimizeAudio();
}

/// Numbers are 1-based in the whole track.
void RunMerge::AppendSyncSamples(std::uint32_t samplesBefore) {
  std::uint32_t number = samplesBefore;
  const auto append = [&](std::uint32_t flags, std::uint32_t count) {
    for (std::uint32_t i = 0; (flags & kNotSync) == 0 && i < count; ++i) {
      tables->syncSampleBox->AppendRAP(number + i + 1);
    }
    number += count;
  };
  if (Has(BoxTRUN::kSampleFlags)) {
    ForEachStretch(BoxTRUN::kSampleFlags, &TrunEntry::flags, 0, append);
  } else {
    append(Has(BoxTRUN::kFirstSampleFlags) ? run.first_sample_flags : values.flags, 1);
    append(values.flags, run.sample_count - 1);
  }
}

/// The sample tables of a track, or null where a link is missing.
BoxSTBL* SampleTables(const BoxTRAK& trak) {
  const BoxMDIA* media = trak.mediaBox.get();
  const BoxMINF* information = media != nullptr ? media->mediaInformationBox.get() : nullptr;
  return information != nullptr ? information->sampleTableBox.get() : nullptr;
}

/// Merges one track fragment, charging `scan` unless it is null. False when a charge was refused.
bool MergeRuns(const BoxTRAK& trak, const BoxTRAF& traf, const BoxTREX& trex,
               mp4::ScanControl* scan) {
  BoxSTBL* tables = SampleTables(trak);
  if (tables == nullptr) return true;
  const FragmentValues values = ChooseValues(*traf.header, trex);
  std::uint32_t bytes = 0;
  for (const auto& run : traf.runs) {
    if (run == nullptr || run->sample_count == 0) continue;
    RunMerge merge(*run, values, tables);
    if (scan != nullptr && !scan->TakeMerge(merge.Cost())) return false;
    merge.Append(&bytes);
  }
  return true;
}

/// The track box of an ID. An unknown ID deliberately leaves a null entry in the map: hosts see it
/// there, and every walk over the tracks allows for it.
BoxTRAK* TrackOrNullEntry(BoxMOOV* moov, std::uint32_t id) {
  return moov->tracks[static_cast<std::int32_t>(id)].get();
}

void MergeAll(const BoxMOOF& fragment, BoxMOOV* moov, mp4::ScanControl* scan) {
  BoxMVEX* extends = moov->movieExtendsBox.get();
  for (const auto& traf : fragment.trackFragments) {
    if (traf == nullptr || traf->header == nullptr) continue;
    const std::uint32_t id = traf->header->track_ID;
    const BoxTRAK* trak = TrackOrNullEntry(moov, id);
    const BoxTREX* trex = extends->FindTrackExtends(id);
    if (trak == nullptr || trex == nullptr) return;
    if (!MergeRuns(*trak, *traf, *trex, scan)) return;
  }
}

}  // namespace

void BoxMOOF::MergeFragment(Mp4Context* context, BoxMOOV* moov) {
  if (context == nullptr || moov == nullptr || moov->movieExtendsBox == nullptr) return;
  mp4::WithoutThrowing([&] { MergeAll(*this, moov, context->scan); });
}

void BoxMOOF::MergeTrack(BoxTRAK* trak, BoxTRAF* traf, BoxTREX* trex) {
  if (trak == nullptr || traf == nullptr || trex == nullptr || traf->header == nullptr) return;
  mp4::WithoutThrowing([&] { MergeRuns(*trak, *traf, *trex, nullptr); });
}
