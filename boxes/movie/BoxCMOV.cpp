#include "boxes/movie/BoxCMOV.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "io/BulkRead.h"
#include "io/FourCC.h"
#include "io/Limits.h"
#include "io/NewArray.h"
#include "io/Prices.h"
#include "io/ScanControl.h"
#include "io/WithoutThrowing.h"
#include "io/WrapMath.h"

namespace {

/// A child's header and its one 32-bit field: the compression of a "dcom", the announced size of a
/// "cmvd".
constexpr std::uint32_t kChildHeader = 8;
constexpr std::uint32_t kChildFixed = 12;

/// Whether so many compressed bytes may become a movie of the announced size.
bool IsJustified(std::uint32_t announced, long long compressed) {
  return announced <= mp4::limits::kLargestInflated &&
         announced <= mp4::limits::kInflateRatio * compressed + mp4::limits::kInflateSpare;
}

/// Inflates into a new array of `announced` bytes; null when memory or zlib refuses.
std::unique_ptr<unsigned char[]> Uncompress(const unsigned char* packed, std::size_t length,
                                            std::uint32_t announced) {
  auto plain = mp4::NewArray<unsigned char>(announced);
  uLongf filled = announced;
  if (plain == nullptr || uncompress(plain.get(), &filled, packed, length) != Z_OK) return nullptr;
  std::memset(plain.get() + filled, 0, announced - filled);
  return plain;
}

}  // namespace

bool BoxCMOV::ReadData(mmStreamReader* reader, long long size, Mp4Context* /*context*/) {
  if (reader == nullptr || size < 0) return false;
  long long consumed = 0;
  const bool inflated = ReadChildren(reader, size, &consumed);
  reader->Skip(size - consumed);
  return inflated;
}

bool BoxCMOV::ReadChildren(mmStreamReader* reader, long long size, long long* consumed) {
  const std::uint32_t dcomSize = reader->GetBe32();
  *consumed = kChildHeader;
  if (reader->GetLe32() != mp4::FourCC("dcom")) return false;
  *consumed = kChildFixed;
  if (reader->GetLe32() != mp4::FourCC("zlib") || dcomSize < kChildFixed) return false;
  reader->Skip(dcomSize - kChildFixed);

  const std::uint32_t stored = reader->GetBe32();
  *consumed = static_cast<long long>(dcomSize) + kChildHeader;
  if (reader->GetLe32() != mp4::FourCC("cmvd")) return false;
  const std::uint32_t announced = reader->GetBe32();
  *consumed = static_cast<long long>(dcomSize) + kChildFixed;
  const std::uint32_t cmvdSize =
      stored != 0 ? stored : static_cast<std::uint32_t>(mp4::Truncate32(size - dcomSize));
  if (cmvdSize < kChildFixed || announced <= cmvdSize) return false;
  return Inflate(reader, cmvdSize - kChildFixed, announced, consumed);
}

bool BoxCMOV::Inflate(mmStreamReader* reader, std::uint32_t length, std::uint32_t announced,
                      long long* consumed) {
  if (!IsJustified(announced, std::min<long long>(length, mp4::Remaining(reader)))) return false;
  mp4::ScanControl* scan = reader->Scan();
  if (scan != nullptr && !scan->TakeInflated(announced + mp4::prices::kInflateSetUp)) return false;
  std::size_t held = 0;
  const auto packed = mp4::ReadArray(reader, length, &held);
  *consumed += length;
  auto plain = packed != nullptr ? Uncompress(packed.get(), held, announced) : nullptr;
  if (plain == nullptr) return false;
  return mp4::WithoutThrowing(
      [&] { movieStream = std::make_unique<mmBufReader>(std::move(plain), announced); });
}
