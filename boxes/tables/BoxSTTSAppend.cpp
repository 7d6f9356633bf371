#include <algorithm>
#include <cstddef>

#include "boxes/base/TableBody.h"
#include "boxes/tables/BoxSTTS.h"
#include "io/WrapMath.h"

void BoxSTTS::AppendTimes(unsigned int duration, unsigned int count) {
  if (count == 0) return;
  AddToTotals(duration, count);
  AddToEntries(duration, count);
}

void BoxSTTS::CountSamples(unsigned int duration, unsigned int count) {
  totalSamples = mp4::WrapAdd32(totalSamples, static_cast<std::int32_t>(count));
  const std::uint64_t added = static_cast<std::uint64_t>(duration) * count;
  totalDuration = mp4::WrapAdd(totalDuration, static_cast<std::int64_t>(added));
  CalcAvInfo();
}

/// The last sample is counted by itself: what it publishes can depend on the totals before it.
/// Dividing by packets of two samples or more settles after a few samples, and then nothing
/// changes.
void BoxSTTS::AddToTotals(unsigned int duration, unsigned int count) {
  if (!DividesPackets() || track->samplesPerPacket == 1) {
    if (count > 1) CountSamples(duration, count - 1);
    CountSamples(duration, 1);
    return;
  }
  for (; count > 0; --count) {
    const std::int32_t samples = totalSamples;
    const std::int64_t before = totalDuration;
    CountSamples(duration, 1);
    if (samples == totalSamples && before == totalDuration) return;
  }
}

/// Equal durations in a row share one entry.
void BoxSTTS::AddToEntries(unsigned int duration, unsigned int count) {
  for (; count > 0 && !ExtendsLastEntry(duration); --count) {
    if (!AppendEntry(duration)) return;
  }
  if (count == 0) return;
  const std::int64_t last = OffsetOfLast();
  entries->PutBe32At(last, entries->Be32At(last) + count);
}

bool BoxSTTS::ExtendsLastEntry(unsigned int duration) const {
  if (entryCount < 1) return false;
  return entries->Be32At(OffsetOfLast() + 4) == duration;
}

bool BoxSTTS::AppendEntry(unsigned int duration) {
  const bool room =
      mp4::EnsureBuffer(&entries, mp4::kAppendCapacity) && entries->MakeRoom(kRowBytes);
  intact = intact && room;
  if (!room) return false;
  entries->AppendBe32(1);
  entries->AppendBe32(duration);
  entryCount = mp4::WrapAdd32(entryCount, 1);
  return true;
}

long long BoxSTTS::MostRowsFor(unsigned int duration, unsigned int count) const {
  if (ExtendsLastEntry(duration)) return 0;
  const std::size_t held = entries != nullptr ? entries->used / kRowBytes : 0;
  return std::min<long long>(count, static_cast<long long>(held) - entryCount + 1);
}
