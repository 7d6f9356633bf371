#include "boxes/fragments/BoxTRUN.h"

#include <algorithm>
#include <cstring>

#include "boxes/base/BoxReading.h"
#include "io/BulkRead.h"
#include "io/Charge.h"
#include "io/Limits.h"
#include "io/MakeLazyArray.h"

namespace {

/// Bytes read at a time; holds whole entries of every width.
constexpr std::size_t kChunk = 4096;

/// Bytes of one entry in the file.
std::size_t EntryWidth(std::uint32_t flags) {
  std::size_t width = 0;
  for (const std::uint32_t bit : {BoxTRUN::kSampleDuration, BoxTRUN::kSampleSize,
                                  BoxTRUN::kSampleFlags, BoxTRUN::kSampleCompositionOffset}) {
    if ((flags & bit) != 0) width += 4;
  }
  return width;
}

/// Decodes one entry of the file and returns where the next one starts.
const unsigned char* DecodeEntry(const unsigned char* from, std::uint32_t flags, TrunEntry* entry) {
  const auto loadIf = [&](std::uint32_t bit, std::uint32_t* field) {
    if ((flags & bit) == 0) return;
    *field = mp4::LoadBe32(from);
    from += 4;
  };
  loadIf(BoxTRUN::kSampleDuration, &entry->duration);
  loadIf(BoxTRUN::kSampleSize, &entry->size);
  loadIf(BoxTRUN::kSampleFlags, &entry->flags);
  loadIf(BoxTRUN::kSampleCompositionOffset, &entry->composition_offset);
  return from;
}

}  // namespace

bool BoxTRUN::ReadData(mmStreamReader* reader, long long size, Mp4Context* /*context*/) {
  if (reader == nullptr || size < 0) return false;
  const mp4::FullBoxHeader header = mp4::ReadFullBoxHeader(reader);
  version = header.version;
  tr_flags = header.flags;
  sample_count = reader->GetBe32();
  long long consumed = 8;
  if ((tr_flags & kDataOffset) != 0) {
    data_offset = reader->GetBe32();
    consumed += 4;
  }
  if ((tr_flags & kFirstSampleFlags) != 0) {
    first_sample_flags = reader->GetBe32();
    consumed += 4;
  }
  entries.reset();
  absentEntries = 0;
  if (sample_count > 0 && !ReadEntries(reader)) return false;
  consumed += static_cast<long long>(EntryWidth(tr_flags)) * sample_count;
  reader->Skip(size - consumed);
  return true;
}

/// All that the count claims, behind the end of the box too: hosts rely on what follows being read
/// as entries. In ISO/IEC 14496-12 the box holds all of its entries.
bool BoxTRUN::ReadEntries(mmStreamReader* reader) {
  if (sample_count > mp4::limits::kMostRunSamples) return false;
  const auto width = static_cast<long long>(EntryWidth(tr_flags));
  const long long claimed = width * sample_count;
  const long long bytes = claimed > 0 ? std::min(claimed, mp4::Remaining(reader)) : 0;
  const long long held = width > 0 ? (bytes + width - 1) / width : 0;
  absentEntries = static_cast<std::uint32_t>(sample_count - held);
  // The same whether or not the entries are loaded, so that judging fails where opening would.
  const std::int64_t memory = mp4::CostOfLazyArray(
      (sample_count - absentEntries) * sizeof(TrunEntry), absentEntries * sizeof(TrunEntry));
  if (!mp4::Charge(reader, bytes, memory)) return false;
  if (mp4::OnlyJudges(reader)) {
    mp4::PassAsRead(reader, claimed);
    return true;
  }
  entries = mp4::MakeLazyArray<TrunEntry>(sample_count, sample_count - absentEntries);
  if (entries == nullptr) return false;
  DecodeEntries(reader, bytes);
  mp4::PassAsRead(reader, claimed - bytes);
  return true;
}

/// Reads `bytes` of entries. The last one may be cut off by the source's end: it keeps the bytes
/// that exist, as the numbers of any box do there.
void BoxTRUN::DecodeEntries(mmStreamReader* reader, long long bytes) {
  unsigned char chunk[kChunk];
  const std::size_t width = EntryWidth(tr_flags);
  TrunEntry* entry = entries.get();
  for (auto left = static_cast<std::size_t>(bytes); left > 0;) {
    const std::size_t wanted = std::min(left, kChunk - kChunk % width);
    const std::size_t got = reader->GetData(chunk, static_cast<unsigned>(wanted));
    const std::size_t rows = (got + width - 1) / width;
    std::memset(chunk + got, 0, rows * width - got);
    const unsigned char* from = chunk;
    for (std::size_t i = 0; i < rows; ++i) from = DecodeEntry(from, tr_flags, entry++);
    if (got < wanted) return;
    left -= wanted;
  }
}
