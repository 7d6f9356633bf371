#include "boxes/tables/BoxSTCO.h"

#include <algorithm>

#include "boxes/base/BoxReading.h"
#include "boxes/base/TableBody.h"
#include "io/FourCC.h"
#include "io/WrapMath.h"

namespace {

constexpr long long kChunkOffsetHeader = 8;  // version, flags, entry count
constexpr std::uint64_t kNoSuchChunk = ~std::uint64_t{0};

/// An offset above 4 GiB appended to a 32-bit table loses its upper half: the table keeps the width
/// the file gave it, and hosts compare stored offsets in that width. In ISO/IEC 14496-12 such an
/// offset takes a "co64".
constexpr std::uint32_t OffsetIn32BitTable(std::uint64_t offset) {
  return static_cast<std::uint32_t>(offset);
}

}  // namespace

bool BoxSTCO::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < 0) return false;
  mp4::SkipFullBoxHeader(reader);
  const std::uint32_t count = reader->GetBe32();
  entryCount = 0;
  if (context != nullptr) track = context->GetCurrentTrack();
  if (track != nullptr && track->chunkOffsetOwner == this) track->chunkOffsetOwner = nullptr;
  if (!mp4::ReadTableBody(reader, size - kChunkOffsetHeader, EntrySize(), &entries)) return false;
  entryCount = mp4::ClampCount(count, *entries, EntrySize());
  return mp4::WithoutThrowing([this] { PublishNew(); });
}

void BoxSTCO::OptimizeAudio() {
  mp4::WithoutThrowing([this] { PublishNew(); });
}

bool BoxSTCO::PublishesOffsets() const {
  return track != nullptr && track->handlerType == mp4::FourCC("soun");
}

bool BoxSTCO::IsAsPublished() const {
  return track->chunkOffsetOwner == this && track->chunkOffsetTable.size() == published;
}

std::int64_t BoxSTCO::RowsToRefill() const {
  return PublishesOffsets() && !IsAsPublished() ? std::max(entryCount, 0) : 0;
}

void BoxSTCO::PublishNew() {
  if (!PublishesOffsets()) return;
  auto& table = track->chunkOffsetTable;
  const std::size_t count = entryCount > 0 ? static_cast<std::size_t>(entryCount) : 0;
  std::size_t next = IsAsPublished() && published <= count ? published : 0;
  track->chunkOffsetOwner = nullptr;
  table.resize(count);
  for (; next < count; ++next) table[next].chunkOffset = OffsetAt(next);
  published = count;
  track->chunkOffsetOwner = this;
}

unsigned long long BoxSTCO::GetChunkOffset(int k) {
  if (k < 0 || k >= entryCount) return kNoSuchChunk;
  return OffsetAt(static_cast<std::size_t>(k));
}

void BoxSTCO::AppendChunk(unsigned long long offset) {
  if (!mp4::EnsureBuffer(&entries, mp4::kAppendCapacity)) return;
  const bool added = EntrySize() == 4 ? entries->AppendBe32(OffsetIn32BitTable(offset))
                                      : entries->AppendBe64(offset);
  if (!added) return;
  entryCount = mp4::WrapAdd32(entryCount, 1);
  OptimizeAudio();
}

std::size_t BoxSTCO::EntrySize() const { return type == mp4::FourCC("stco") ? 4 : 8; }

std::uint64_t BoxSTCO::OffsetAt(std::size_t k) const {
  const auto at = static_cast<std::int64_t>(k * EntrySize());
  return EntrySize() == 4 ? entries->Be32At(at) : entries->Be64At(at);
}
