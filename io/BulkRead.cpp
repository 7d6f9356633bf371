#include "io/BulkRead.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>

#include "io/Charge.h"
#include "io/NewArray.h"
#include "io/Prices.h"
#include "io/ScanControl.h"
#include "io/WithoutThrowing.h"
#include "io/WrapMath.h"

namespace mp4 {

namespace {

constexpr long long kLargestRead = 1LL << 30;
constexpr std::size_t kSmallestTable = 32;

/// Whether a read at the end of the source advances (memory does, a file does not). Consumes one
/// byte where it does.
bool AdvancesPastEnd(mmStreamReader* reader) {
  const long long before = reader->GetPos();
  reader->GetByte();
  return reader->GetPos() != before;
}

std::size_t ReadHeld(mmStreamReader* reader, unsigned char* dst, long long n) {
  long long got = 0;
  while (got < n) {
    const auto chunk = static_cast<unsigned>(std::min(n - got, kLargestRead));
    const unsigned delivered = reader->GetData(dst + got, chunk);
    got += delivered;
    if (delivered < chunk) break;
  }
  return static_cast<std::size_t>(got);
}

}  // namespace

long long Remaining(mmStreamReader* reader) {
  const ScanControl* scan = reader->Scan();
  const long long size = scan != nullptr ? scan->sourceSize : reader->GetSize();
  return std::max(0LL, size - reader->GetPos());
}

void PassAsRead(mmStreamReader* reader, long long n) {
  if (n <= 0) return;
  const long long inside = std::min(n, Remaining(reader));
  if (inside > 0) reader->Skip(inside);
  const long long outside = n - inside;
  if (outside > 0 && AdvancesPastEnd(reader)) reader->Skip(outside - 1);
}

bool OnlyJudges(mmStreamReader* reader) {
  const ScanControl* scan = reader->Scan();
  return scan != nullptr && scan->tablesUnread;
}

std::size_t ReadBytes(mmStreamReader* reader, void* dst, std::size_t capacity, long long n) {
  if (n <= 0) return 0;
  auto* out = static_cast<unsigned char*>(dst);
  const long long wanted = std::min(n, static_cast<long long>(capacity));
  const long long held = std::min(wanted, Remaining(reader));
  const std::size_t got = ReadHeld(reader, out, held);
  std::memset(out + got, 0, static_cast<std::size_t>(wanted) - got);
  PassAsRead(reader, n - held);
  return got;
}

bool ReadTable(mmStreamReader* reader, long long n, std::size_t entrySize,
               std::unique_ptr<mmBuffer>* entries) {
  entries->reset();
  if (n < 0) reader->Skip(n);
  const long long held = std::min(std::max(n, 0LL), Remaining(reader));
  std::unique_ptr<mmBuffer> buffer;
  WithoutThrowing([&] { buffer = std::make_unique<mmBuffer>(); });
  // No account affords so many bytes that the product wraps.
  const bool afforded = Charge(reader, held, WrapMul(held, prices::kMemoryPerTableByte));
  const bool unread = OnlyJudges(reader);
  const auto room = std::max(unread ? 0 : static_cast<std::size_t>(held), kSmallestTable);
  if (!afforded || buffer == nullptr || !buffer->Allocate(room)) {
    PassAsRead(reader, n);
    return false;
  }
  if (unread) {
    PassAsRead(reader, n);
  } else {
    const std::size_t got = ReadHeld(reader, buffer->data.get(), held);
    buffer->used = got - got % entrySize;
    PassAsRead(reader, n - held);
  }
  *entries = std::move(buffer);
  return true;
}

std::unique_ptr<unsigned char[]> ReadArray(mmStreamReader* reader, long long n, std::size_t* held) {
  *held = 0;
  const long long exists = std::min(std::max(n, 0LL), Remaining(reader));
  const auto allocated = static_cast<std::size_t>(exists + 16) & ~std::size_t{15};
  std::unique_ptr<unsigned char[]> bytes;
  if (Charge(reader, exists, exists)) bytes = NewArray<unsigned char>(allocated);
  if (bytes == nullptr) {
    PassAsRead(reader, n);
    return nullptr;
  }
  *held = ReadHeld(reader, bytes.get(), exists);
  std::memset(bytes.get() + *held, 0, allocated - *held);
  PassAsRead(reader, n - exists);
  return bytes;
}

}  // namespace mp4
