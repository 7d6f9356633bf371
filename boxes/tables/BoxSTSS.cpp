#include "boxes/tables/BoxSTSS.h"

#include <algorithm>

#include "boxes/base/TableBody.h"
#include "io/WrapMath.h"

namespace {

constexpr std::int64_t kRow = mp4::SyncState::kRowBytes;
constexpr unsigned int kNone = ~0U;

std::int32_t ZeroBased(std::uint32_t sampleNumber) {
  return static_cast<std::int32_t>(sampleNumber - 1);
}

/// Hosts address this table by byte, so that only 0 yields an entry. In ISO/IEC 14496-12 it is one
/// of sample numbers, one after the other.
std::int64_t ByteOffsetOf(int i) { return i; }

}  // namespace

mp4::SyncState mp4::SyncState::After(const unsigned char* row) const {
  return {std::max(most, ZeroBased(LoadBe32(row)))};
}

bool BoxSTSS::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < 0) return false;
  mp4::SkipFullBoxHeader(reader);
  entryCount = static_cast<std::int32_t>(reader->GetBe32());
  entries.reset();
  index.Reset();
  const std::int64_t declared = std::max(entryCount, 0) * kRow;
  // Known before the rows are read: an opening that only judges passes over them.
  const bool empty = std::min<std::int64_t>(declared, mp4::Remaining(reader)) < kRow;
  if (entryCount >= 1) {
    entryCount = 0;
    if (!mp4::ReadTable(reader, declared, kRow, &entries)) return false;
    entryCount = static_cast<std::int32_t>(entries->used / kRow);
  }
  // The count, not the size of the box, said how much was read; hosts rely on the entries behind a
  // box that is too short. In ISO/IEC 14496-12 the box ends where its size says.
  reader->Skip(mp4::WrapSub(size, declared + 8));
  Mp4Context::TRACK* track = mp4::CurrentTrack(context);
  if (track != nullptr && empty) track->syncTableState = -1;
  return true;
}

unsigned int BoxSTSS::GetSampleIndex(int i) {
  if (i < 0 || entries == nullptr || i >= entryCount) return kNone;
  return entries->Be32At(ByteOffsetOf(i));
}

unsigned int BoxSTSS::GetSampleIndexBeforeThis(int sample) {
  if (entries == nullptr) return kNone;
  if (entryCount < 1) return 0;
  const auto later = [sample](const mp4::SyncState& state) { return state.most > sample; };
  const int first = index.Find(entries->data.get(), entryCount, later).row;
  if (first == 0) return 0;
  return static_cast<unsigned int>(ZeroBased(entries->Be32At((first - 1) * kRow)));
}

unsigned int BoxSTSS::AppendRAP(unsigned int sampleNumber) {
  const bool added =
      mp4::EnsureBuffer(&entries, mp4::kAppendCapacity) && entries->AppendBe32(sampleNumber);
  intact = intact && added;
  if (added) entryCount = mp4::WrapAdd32(entryCount, 1);
  return entries != nullptr ? static_cast<unsigned int>(entries->used) : 0;
}
