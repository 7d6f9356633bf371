#include "boxes/fragments/RunMerge.h"

#include <algorithm>
#include <iterator>

#include "io/Prices.h"

namespace mp4 {

namespace {

/// Set in the flags of a sample that is not a sync sample (sample_is_non_sync_sample). No other bit
/// is looked at, sample_depends_on in particular.
constexpr std::uint32_t kNotSync = 0x10000;

}  // namespace

/// Without a base offset of its own a fragment has base 0, wherever it lies in the file: hosts rely
/// on it. In ISO/IEC 14496-12 the base then is the start of the "moof", or the end of the data of
/// the track fragment before it.
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

RunMerge::RunMerge(const BoxTRUN& run, const FragmentValues& values, BoxSTBL* tables)
    : run(run), values(values), tables(tables), held(run.sample_count) {
  constexpr std::uint32_t kAnyField = BoxTRUN::kSampleDuration | BoxTRUN::kSampleSize |
                                      BoxTRUN::kSampleFlags | BoxTRUN::kSampleCompositionOffset;
  if (run.entries == nullptr || !Has(kAnyField)) held = 0;
  if (held > 0) held -= std::min(held, run.absentEntries);
  absent = run.sample_count - held;
}

/// Calls `take(value, count)` for each stretch of equal values, in order: those of the entries'
/// `field` when the run carries it, the zeros of the entries that are not there, else `common`.
template <class Take>
void RunMerge::ForEachStretch(std::uint32_t bit, std::uint32_t TrunEntry::*field,
                              std::uint32_t common, Take&& take) const {
  if (!Has(bit)) return take(common, run.sample_count);
  for (std::uint32_t i = 0, next = 0; i < held; i = next) {
    const std::uint32_t value = run.entries[i].*field;
    for (next = i + 1; next < held && run.entries[next].*field == value;) ++next;
    take(value, next - i);
  }
  if (absent > 0) take(0, absent);
}

std::int64_t RunMerge::Cost() const {
  return prices::kMergedRun + SizeCost() + TimeCost() + SyncCost() + RefillCost();
}

std::int64_t RunMerge::SizeCost() const {
  if (tables->sampleSizeBox == nullptr) return 0;
  const bool read = Has(BoxTRUN::kSampleSize) && held > 0;
  const std::uint32_t size = Has(BoxTRUN::kSampleSize) ? 0 : values.size;
  if (!read && tables->sampleSizeBox->StaysConstant(size)) return 0;
  return prices::kMergedSize * run.sample_count;
}

std::int64_t RunMerge::TimeCost() const {
  const BoxSTTS* times = tables->timeToSampleBox.get();
  if (times == nullptr) return 0;
  const bool read = Has(BoxTRUN::kSampleDuration);
  // Equal durations share one row, which the run pays for, unless the table's count is hostile.
  const long long shared =
      read ? times->MostRowsFor(0, absent) : times->MostRowsFor(values.duration, run.sample_count);
  return prices::kMergedTime * ((read ? held : 0) + std::max(0LL, shared - 1));
}

std::int64_t RunMerge::SyncCost() const {
  if (tables->sampleSizeBox == nullptr || tables->syncSampleBox == nullptr) return 0;
  if (!Has(BoxTRUN::kSampleFlags) && (values.flags & kNotSync) != 0) {
    return Has(BoxTRUN::kFirstSampleFlags) ? prices::kMergedSync : 0;
  }
  return prices::kMergedSync * run.sample_count + prices::kMergedStep * absent;
}

/// Nothing, unless two tracks of a hostile file take turns in filling one track record.
std::int64_t RunMerge::RefillCost() const {
  const BoxSTTS* times = tables->timeToSampleBox.get();
  const BoxSTCO* offsets = tables->chunkOffsetBox.get();
  const std::int64_t rows = (times != nullptr ? times->RowsToRefill() : 0) +
                            (offsets != nullptr ? offsets->RowsToRefill() : 0);
  return prices::kMergedStep * rows;
}

/// A run is one chunk. Behind an explicit base the earlier runs are deliberately not counted: runs
/// without an offset of their own then all start at the base. In ISO/IEC 14496-12 such a run starts
/// where the one before it ends.
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

}  // namespace mp4
