#include "boxes/tables/TimeRows.h"

#include <algorithm>

#include "boxes/base/TableBody.h"
#include "io/ByteOrder.h"
#include "io/WrapMath.h"

namespace mp4 {

// Hosts count on signed numbers; in ISO/IEC 14496-12 both are unsigned.
TimeState TimeState::After(const unsigned char* row) const {
  const auto rowCount = static_cast<std::int32_t>(LoadBe32(row));
  const std::int64_t delta = static_cast<std::int32_t>(LoadBe32(row + 4));
  TimeState next;
  next.count = WrapAdd32(count, rowCount);
  next.mostCount = std::max(mostCount, next.count);
  next.time = WrapAdd(time, rowCount * delta);
  next.mostTime = std::max(mostTime, next.time);
  return next;
}

bool TimeRows::Read(mmStreamReader* reader, long long body, std::uint32_t declared) {
  count = 0;
  index.Reset();
  if (!ReadTableBody(reader, body, kRowBytes, &entries)) return false;
  count = ClampCount(declared, *entries, kRowBytes);
  return true;
}

template <class Reached>
PrefixIndex<TimeState>::Place TimeRows::Find(Reached reached) {
  return index.Find(entries != nullptr ? entries->data.get() : nullptr, count, reached);
}

std::int32_t TimeRows::DurationIn(int row) const {
  return static_cast<std::int32_t>(entries->Be32At(OffsetOf(row) + 4));
}

std::int32_t TimeRows::DurationOf(int i) {
  const auto at = Find([i](const TimeState& state) { return state.mostCount > i; });
  return at.row < count ? DurationIn(at.row) : 0;
}

std::int64_t TimeRows::TimeOf(int i) {
  const auto at = Find([i](const TimeState& state) { return state.mostCount >= i; });
  if (at.row >= count) return at.before.time;
  const std::int64_t behind = WrapSub32(i, at.before.count);
  return WrapAdd(at.before.time, DurationIn(at.row) * behind);
}

std::int64_t TimeRows::SampleAt(std::int64_t time) {
  const auto at = Find([time](const TimeState& state) { return state.mostTime > time; });
  if (at.row >= count) return at.before.count;
  const std::int32_t delta = DurationIn(at.row);
  if (delta == 0) return at.before.count;
  const std::int64_t behind = WrapDiv(WrapSub(time, at.before.time), delta);
  return Truncate32(WrapAdd(at.before.count, behind));
}

bool TimeRows::Append(std::uint32_t duration, std::uint32_t samples) {
  for (; samples > 0 && !ExtendsLast(duration); --samples) {
    if (!AppendRow(duration)) return false;
  }
  if (samples == 0) return true;
  const std::int64_t last = OffsetOfLast();
  entries->PutBe32At(last, entries->Be32At(last) + samples);
  return true;
}

bool TimeRows::ExtendsLast(std::uint32_t duration) const {
  if (count < 1) return false;
  return entries->Be32At(OffsetOfLast() + 4) == duration;
}

bool TimeRows::AppendRow(std::uint32_t duration) {
  if (!EnsureBuffer(&entries, kAppendCapacity) || !entries->MakeRoom(kRowBytes)) return false;
  entries->AppendBe32(1);
  entries->AppendBe32(duration);
  count = WrapAdd32(count, 1);
  return true;
}

std::int64_t TimeRows::MostRowsFor(std::uint32_t duration, std::uint32_t samples) const {
  if (ExtendsLast(duration)) return 0;
  const std::size_t held = entries != nullptr ? entries->used / kRowBytes : 0;
  return std::min<std::int64_t>(samples, static_cast<std::int64_t>(held) - count + 1);
}

}  // namespace mp4
