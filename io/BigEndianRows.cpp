#include "io/BigEndianRows.h"

#include <algorithm>
#include <cstring>

#include "io/ByteOrder.h"

// The same loops compiled twice: GCC and clang make wide instructions of the second form, which is
// taken where the processor has them.
#if defined(__x86_64__) && defined(__GNUC__)
#define MP4JUDGE_WIDE __attribute__((target("avx2")))
#define MP4JUDGE_HAS_WIDE __builtin_cpu_supports("avx2")
#else
#define MP4JUDGE_WIDE
#define MP4JUDGE_HAS_WIDE false
#endif
#define MP4JUDGE_INLINE __attribute__((always_inline)) inline

namespace mp4 {

namespace {

MP4JUDGE_INLINE RowTotals Total(const unsigned char* rows, std::size_t count) {
  RowTotals totals;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t value = LoadBe32(rows + 4 * i);
    totals.largest = std::max(totals.largest, value);
    totals.sum += value;
  }
  return totals;
}

MP4JUDGE_INLINE void Copy(const unsigned char* rows, std::size_t count, unsigned char* out) {
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t value = LoadBe32(rows + 4 * i);
    std::memcpy(out + 4 * i, &value, sizeof value);
  }
}

MP4JUDGE_INLINE TimeTotals Times(const unsigned char* rows, std::size_t count) {
  TimeTotals totals;
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint32_t samples = LoadBe32(rows + 8 * i);
    const auto duration = static_cast<std::int32_t>(LoadBe32(rows + 8 * i + 4));
    totals.samples += samples;
    totals.duration += static_cast<std::uint64_t>(static_cast<std::int64_t>(duration) *
                                                  static_cast<std::int32_t>(samples));
  }
  return totals;
}

MP4JUDGE_WIDE RowTotals WideTotal(const unsigned char* rows, std::size_t count) {
  return Total(rows, count);
}

MP4JUDGE_WIDE void WideCopy(const unsigned char* rows, std::size_t count, unsigned char* out) {
  Copy(rows, count, out);
}

MP4JUDGE_WIDE TimeTotals WideTimes(const unsigned char* rows, std::size_t count) {
  return Times(rows, count);
}

}  // namespace

RowTotals TotalBe32(const unsigned char* rows, std::size_t count) {
  return MP4JUDGE_HAS_WIDE ? WideTotal(rows, count) : Total(rows, count);
}

void CopyBe32(const unsigned char* rows, std::size_t count, void* out) {
  auto* const bytes = static_cast<unsigned char*>(out);
  if (MP4JUDGE_HAS_WIDE) {
    WideCopy(rows, count, bytes);
  } else {
    Copy(rows, count, bytes);
  }
}

TimeTotals TotalTimes(const unsigned char* rows, std::size_t count) {
  return MP4JUDGE_HAS_WIDE ? WideTimes(rows, count) : Times(rows, count);
}

}  // namespace mp4
