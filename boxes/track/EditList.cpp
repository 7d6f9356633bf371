#include "boxes/track/EditList.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "boxes/base/BoxReading.h"
#include "io/BulkRead.h"
#include "io/ByteOrder.h"
#include "io/Charge.h"
#include "io/Prices.h"

namespace {

constexpr std::size_t kEntrySize = 12;
constexpr std::size_t kEntriesPerRead = 256;

tagElstItem LoadEdit(const unsigned char* entry) {
  return {static_cast<std::int32_t>(mp4::LoadBe32(entry)),
          static_cast<std::int32_t>(mp4::LoadBe32(entry + 4)), mp4::LoadBe32(entry + 8)};
}

void ReadEntries(mmStreamReader* reader, std::size_t count, std::vector<tagElstItem>* edits) {
  unsigned char entries[kEntriesPerRead * kEntrySize];
  for (std::size_t done = 0; done < count;) {
    const std::size_t n = std::min(count - done, kEntriesPerRead);
    mp4::ReadBytes(reader, entries, sizeof entries, static_cast<long long>(n * kEntrySize));
    for (std::size_t i = 0; i < n; ++i) edits->push_back(LoadEdit(entries + i * kEntrySize));
    done += n;
  }
}

}  // namespace

bool mp4::ReadEditList(mmStreamReader* reader, std::vector<tagElstItem>* edits) {
  constexpr auto kWidth = static_cast<long long>(kEntrySize);
  reader->GetBe32();  // size
  reader->GetLe32();  // type
  SkipFullBoxHeader(reader);
  const auto declared = static_cast<std::int32_t>(reader->GetBe32());
  if (declared <= 0) return true;
  const long long exist = std::min<long long>(declared, Remaining(reader) / kWidth);
  const long long bytes = exist * kWidth;
  const bool afforded = Charge(reader, bytes, bytes * prices::kMemoryPerEditByte);
  // Edits cannot change a judgement.
  if (!afforded || OnlyJudges(reader)) {
    PassAsRead(reader, declared * kWidth);
    return afforded;
  }
  if (!WithoutThrowing([&] { ReadEntries(reader, static_cast<std::size_t>(exist), edits); })) {
    return false;
  }
  PassAsRead(reader, (declared - exist) * kWidth);
  return true;
}
