#include "samples/TrackTotals.h"

#include "samples/SampleCursor.h"

namespace mp4 {

TrackTotals TotalsOf(Track* track, std::uint64_t most) {
  TrackTotals totals;
  SampleCursor cursor(track);
  Sample sample;
  bool lastWasUsual = true;
  while (totals.samples < most && cursor.Next(&sample)) {
    if (totals.samples == 0) totals.usualDuration = sample.duration;
    totals.constantRate = totals.constantRate && lastWasUsual;
    lastWasUsual = sample.duration == totals.usualDuration;
    ++totals.samples;
    totals.bytes += sample.size;
    totals.duration += sample.duration;
    if (sample.sync == Told::kYes) ++totals.syncSamples;
  }
  totals.whole = totals.samples == track->SampleCount();
  return totals;
}

}  // namespace mp4
