#include <algorithm>

#include "boxes/tables/BoxSTTS.h"
#include "io/ByteOrder.h"
#include "io/WrapMath.h"

namespace {

/// Hosts were written against durations cut to one signed byte: 1024 reads as 0, 3003 as -69.
signed char LowByte(std::int32_t duration) {
  return static_cast<signed char>(static_cast<unsigned char>(duration & 0xFF));
}

}  // namespace

mp4::TimeState mp4::TimeState::After(const unsigned char* row) const {
  const auto rowCount = static_cast<std::int32_t>(LoadBe32(row));
  const std::int64_t delta = static_cast<std::int32_t>(LoadBe32(row + 4));
  TimeState next;
  next.count = WrapAdd32(count, rowCount);
  next.mostCount = std::max(mostCount, next.count);
  next.time = WrapAdd(time, rowCount * delta);
  next.mostTime = std::max(mostTime, next.time);
  return next;
}

template <class Reached>
mp4::PrefixIndex<mp4::TimeState>::Place BoxSTTS::Find(Reached reached) {
  return index.Find(entries != nullptr ? entries->data.get() : nullptr, entryCount, reached);
}

signed char BoxSTTS::GetSampleDuration(int i) {
  if (hasConstantDuration) return LowByte(constantDuration);
  const auto at = Find([i](const mp4::TimeState& state) { return state.mostCount > i; });
  if (at.row >= entryCount) return 0;
  return LowByte(static_cast<std::int32_t>(entries->Be32At(OffsetOf(at.row) + 4)));
}

long long BoxSTTS::GetPTS(int i) {
  if (IsConstant()) return static_cast<long long>(constantDuration) * i;
  const auto at = Find([i](const mp4::TimeState& state) { return state.mostCount >= i; });
  if (at.row >= entryCount) return at.before.time;
  const auto delta = static_cast<std::int32_t>(entries->Be32At(OffsetOf(at.row) + 4));
  const std::int64_t behind = mp4::WrapSub32(i, at.before.count);
  return mp4::WrapAdd(at.before.time, delta * behind);
}

long long BoxSTTS::GetSampleIndexBefore(long long time) {
  if (IsConstant()) return time / constantDuration;
  const auto at = Find([time](const mp4::TimeState& state) { return state.mostTime > time; });
  if (at.row >= entryCount) return at.before.count;
  const auto delta = static_cast<std::int32_t>(entries->Be32At(OffsetOf(at.row) + 4));
  if (delta == 0) return at.before.count;
  const std::int64_t behind = mp4::WrapDiv(mp4::WrapSub(time, at.before.time), delta);
  return mp4::Truncate32(mp4::WrapAdd(at.before.count, behind));
}
