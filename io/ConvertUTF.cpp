#include "io/ConvertUTF.h"

#include <cstddef>

const char trailingBytesForUTF8[256] = {
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
    1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1,
    2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 3, 3, 3, 3, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5};

const unsigned int offsetsFromUTF8[6] = {0x00000000, 0x00003080, 0x000E2080,
                                         0x03C82080, 0xFA082080, 0x82082080};

const unsigned char firstByteMark[7] = {0x00, 0x00, 0xC0, 0xE0, 0xF0, 0xF8, 0xFC};

namespace {

struct ByteRange {
  unsigned char first;
  unsigned char last;
};

/// Values the second byte may take: narrower behind four leads, which keeps out over-long forms,
/// surrogates and values above 0x10FFFF.
ByteRange SecondByte(unsigned char lead) {
  switch (lead) {
    case 0xE0:
      return {0xA0, 0xBF};
    case 0xED:
      return {0x80, 0x9F};
    case 0xF0:
      return {0x90, 0xBF};
    case 0xF4:
      return {0x80, 0x8F};
    default:
      return {0x80, 0xBF};
  }
}

bool IsWellFormed(const unsigned char* sequence, std::size_t trailing) {
  const unsigned char lead = sequence[0];
  if (lead < 0x80) return true;
  if (lead < 0xC2 || lead > 0xF4) return false;
  const ByteRange second = SecondByte(lead);
  if (sequence[1] < second.first || sequence[1] > second.last) return false;
  for (std::size_t i = 2; i <= trailing; ++i) {
    if ((sequence[i] & 0xC0) != 0x80) return false;
  }
  return true;
}

/// Adds the bytes up as they stand and takes their mark bits away in one go.
unsigned int Decode(const unsigned char* sequence, std::size_t trailing) {
  unsigned int sum = 0;
  for (std::size_t i = 0; i <= trailing; ++i) sum = (sum << 6) + sequence[i];
  return sum - offsetsFromUTF8[trailing];
}

}  // namespace

ConversionResult ConvertUTF8toUTF32(const unsigned char* sourceStart,
                                    const unsigned char* sourceEnd, unsigned int* targetStart,
                                    unsigned int* targetEnd, ConversionFlags /*flags*/) {
  if (sourceStart == nullptr || sourceEnd == nullptr) return sourceIllegal;
  const bool noTarget = targetStart == nullptr || targetEnd == nullptr;
  unsigned int* target = targetStart;
  for (const unsigned char* source = sourceStart; source < sourceEnd;) {
    const auto trailing = static_cast<std::size_t>(trailingBytesForUTF8[*source]);
    const auto left = static_cast<std::size_t>(sourceEnd - source);
    if (trailing > 0 && trailing + 1 >= left) return sourceExhausted;
    if (!IsWellFormed(source, trailing)) return sourceIllegal;
    if (noTarget || target >= targetEnd) return targetExhausted;
    *target++ = Decode(source, trailing);
    source += trailing + 1;
  }
  return conversionOK;
}
