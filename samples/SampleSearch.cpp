#include "samples/SampleSearch.h"

#include <algorithm>
#include <limits>

#include "samples/HeldSum.h"

namespace mp4 {

namespace {

constexpr std::int64_t kLastTime = std::numeric_limits<std::int64_t>::max();

std::int64_t Signed(std::uint64_t time) { return static_cast<std::int64_t>(time); }

/// The row of an index, going down from there. Behind the last row lies one more without end, of
/// the value that samples there have.
class RowsDown {
 public:
  RowsDown(RunRows* rows, const RunRows::Place& place, std::uint32_t past)
      : rows_(rows), past_(past), place_(place) {}
  std::uint64_t First() const { return place_.first; }
  std::uint32_t Value() const { return rows_->ValueAt(place_, past_); }
  /// Sum of the values in front of an index in the row.
  std::uint64_t TotalAt(std::uint64_t index) const {
    return place_.total + (index - place_.first) * Value();
  }
  /// Goes to the row that holds the index in front of First(), which is not 0.
  void Down() {
    std::uint64_t count = 0;
    while (count == 0) {
      count = rows_->CountOf(--place_.row);
      place_.first -= count;
      place_.total -= count * rows_->ValueOf(place_.row);
    }
  }

 private:
  RunRows* rows_;
  std::uint32_t past_;
  RunRows::Place place_;
};

}  // namespace

std::uint64_t SampleSearch::EntryAtDecodeTime(std::uint64_t time) {
  RunRows& times = tables_->times;
  const RunRows::Place place = times.FindTotal(time);
  const bool past = place.row == times.Rows();
  const std::uint32_t delta = past ? times.LastValue() : times.ValueOf(place.row);
  std::uint64_t inside = ~std::uint64_t{0};
  if (delta != 0) inside = (time - place.total) / delta;
  if (!past) inside = std::min<std::uint64_t>(inside, times.CountOf(place.row) - 1);
  const std::uint64_t last = tables_->Entries() - 1;
  return place.first > last || inside > last - place.first ? last : place.first + inside;
}

std::uint64_t SampleSearch::AtDecodeTime(std::int64_t time) {
  if (time < 0) return 0;
  const auto value = static_cast<std::uint64_t>(time);
  const std::size_t run = runs_->LastAtTime(value);
  if (run < runs_->runs.size()) {
    const FragmentRun& found = runs_->runs[run];
    return found.firstSample + found.LastAtTime(value) + 1;
  }
  if (tableSamples_ == 0) return 0;
  return tables_->chunks.SampleOf(EntryAtDecodeTime(value)) + 1;
}

void SampleSearch::FindOffsetRange() {
  if (rangeKnown_) return;
  rangeKnown_ = true;
  leastOffset_ = std::min(runs_->leastOffset, 0);
  greatestOffset_ = std::max(runs_->greatestOffset, 0);
  bool any = false;
  std::int32_t least = 0;
  std::int32_t greatest = 0;
  const RunRows& offsets = tables_->offsets;
  for (std::size_t row = 0; row < offsets.Rows(); ++row) {
    const auto offset = static_cast<std::int32_t>(offsets.ValueOf(row));
    least = any ? std::min(least, offset) : offset;
    greatest = any ? std::max(greatest, offset) : offset;
    any = true;
  }
  leastOffset_ = std::min(leastOffset_, least);
  greatestOffset_ = std::max(greatestOffset_, greatest);
}

/// The latest decode time of a sample that may be composed at or before `time`.
std::uint64_t SampleSearch::Latest(std::int64_t time) const {
  const std::int64_t latest = HeldSum(time, -std::int64_t{leastOffset_});
  return latest < 0 ? 0 : static_cast<std::uint64_t>(latest);
}

std::uint64_t SampleSearch::AtCompositionTime(std::int64_t time) {
  FindOffsetRange();
  if (HeldSum(time, -std::int64_t{leastOffset_}) < 0) return 0;
  Best best;
  SearchRuns(time, &best);
  if (tableSamples_ > 0) SearchTables(time, &best);
  return best.number;
}

/// Downwards over the stretches in which delta and offset are the same: there composition times
/// rise, and the best is found by arithmetic.
void SampleSearch::SearchTables(std::int64_t time, Best* best) {
  if (best->number != 0 && best->Beats(HeldSum(Signed(tables_->EndTime()), greatestOffset_)))
    return;
  std::uint64_t last = EntryAtDecodeTime(Latest(time));
  if (tables_->chunks.Packs()) {
    // Packets are as long as their entries, and are not reordered.
    const std::uint64_t entry =
        EntryAtDecodeTime(static_cast<std::uint64_t>(std::max<std::int64_t>(time, 0)));
    if (time >= 0) best->Offer(tables_->chunks.SampleOf(entry) + 1, Signed(tables_->TimeOf(entry)));
    return;
  }
  tables_->offsets.Foresee(last);
  RowsDown times(&tables_->times, tables_->times.Find(last), tables_->times.LastValue());
  RowsDown offsets(&tables_->offsets, tables_->offsets.FindWithoutTotal(last), 0);
  for (;;) {
    const std::uint64_t start = std::max(times.First(), offsets.First());
    const std::uint32_t delta = times.Value();
    const auto offset = static_cast<std::int32_t>(offsets.Value());
    const std::int64_t first = HeldSum(Signed(times.TotalAt(start)), offset);
    const std::int64_t final = HeldSum(Signed(times.TotalAt(last)), offset);
    if (final <= time) {
      best->Offer(last + 1, final);
    } else if (first <= time && delta != 0) {
      const std::uint64_t steps = static_cast<std::uint64_t>(time - first) / delta;
      best->Offer(start + steps + 1, first + Signed(steps * delta));
    }
    if (start == 0 || best->Beats(HeldSum(Signed(times.TotalAt(start)), greatestOffset_))) return;
    last = start - 1;
    if (times.First() == start) times.Down();
    if (offsets.First() == start) offsets.Down();
  }
}

void SampleSearch::SearchRuns(std::int64_t time, Best* best) {
  const std::uint64_t latest = Latest(time);
  std::size_t run = runs_->LastAtTime(latest);
  if (run == runs_->runs.size()) return;
  for (;; --run) {
    SearchRun(runs_->runs[run], time, best);
    if (run == 0) return;
    if (best->Beats(runs_->runs[run - 1].composedBy)) return;
  }
}

void SampleSearch::SearchRun(const FragmentRun& run, std::int64_t time, Best* best) {
  const std::size_t width = run.Width();
  const bool sameDelta = (run.fields & FragmentRun::kDuration) == 0;
  const bool sameOffset = (run.fields & FragmentRun::kOffset) == 0;
  std::uint64_t number = run.firstSample;
  std::uint64_t decode = run.decodeTime;
  if (sameDelta && sameOffset) {
    if (Signed(decode) > time) return;
    std::uint64_t steps = run.count - 1U;
    if (run.duration != 0) {
      steps = std::min(steps, static_cast<std::uint64_t>(time - Signed(decode)) / run.duration);
    }
    best->Offer(number + steps + 1, Signed(decode + steps * run.duration));
    return;
  }
  Best here;
  for (const unsigned char* row = run.rows; row < run.rows + run.count * width; row += width) {
    const auto offset = sameOffset ? 0 : static_cast<std::int32_t>(LoadBe32(row + width - 4));
    const std::int64_t at = HeldSum(Signed(decode), offset);
    ++number;
    if (at <= time && (here.number == 0 || at >= here.time)) here = {number, at};
    decode += sameDelta ? run.duration : LoadBe32(row);
  }
  if (here.number != 0) best->Offer(here.number, here.time);
}

std::uint64_t SampleSearch::SyncInTables(std::uint64_t number) {
  const SyncRows& sync = tables_->sync;
  if (!sync.IsThere() || number == 0) return number;
  const ChunkRows& chunks = tables_->chunks;
  if (!chunks.Packs()) {
    const std::size_t rows = sync.RowsUpTo(number);
    return rows > 0 ? sync.NumberAt(rows - 1) : 0;
  }
  // The table counts entries; one that does not begin a sample names none.
  for (std::size_t row = sync.RowsUpTo(chunks.EntryOf(number - 1) + 1); row > 0; --row) {
    const std::uint64_t named = sync.NumberAt(row - 1);
    if (named == 0) break;
    const std::uint64_t sample = chunks.SampleOf(named - 1);
    if (chunks.EntryOf(sample) == named - 1) return sample + 1;
  }
  return 0;
}

std::uint64_t SampleSearch::SyncAtOrBefore(std::uint64_t number) {
  if (number <= tableSamples_) return SyncInTables(number);
  const std::size_t index = runs_->Find(number - 1);
  const FragmentRun& run = runs_->runs[index];
  std::uint64_t within = run.LastSync(number - 1 - run.firstSample);
  if (within != 0) return run.firstSample + within;
  const std::uint32_t before = index > 0 ? runs_->runs[index - 1].syncRun : 0;
  if (before == 0) return SyncInTables(tableSamples_);
  const FragmentRun& found = runs_->runs[before - 1];
  return found.firstSample + found.LastSync(found.count - 1U);
}

}  // namespace mp4
