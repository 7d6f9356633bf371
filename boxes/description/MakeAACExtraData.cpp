#include "boxes/description/MakeAACExtraData.h"

#include <cstddef>

namespace {

constexpr std::size_t kThresholds = 11;

/// Lowest rates in Hz of the sampling frequency indices 0 to 10; below the last one it is 11.
constexpr int kRates[kThresholds] = {92017, 75132, 55426, 46009, 37566, 27713,
                                     23004, 18783, 13856, 11502, 9391};

/// Likewise for the extension index, which stands for twice the rate. The host relies on these
/// values, three of which are one above those of the table before.
constexpr int kExtensionRates[kThresholds] = {46009, 37566, 27713, 23005, 18783, 13857,
                                              11502, 9392,  6928,  5751,  4696};

unsigned int Index(const int (&lowest)[kThresholds], int sampleRate) {
  unsigned int index = 0;
  while (index < kThresholds && sampleRate < lowest[index]) ++index;
  return index;
}

}  // namespace

int MakeAACExtraData(unsigned char* buffer, int profile, int sampleRate, int channels) {
  if (buffer == nullptr) return 0;
  const unsigned int index = Index(kRates, sampleRate);
  const auto unsignedProfile = static_cast<unsigned int>(profile);
  const unsigned int objectType = (profile < 0 ? 0U - unsignedProfile : unsignedProfile) + 1;
  buffer[0] = static_cast<unsigned char>((objectType << 3) + (index >> 1));
  buffer[1] = static_cast<unsigned char>(static_cast<unsigned int>(channels) << 3 | index << 7);
  if (profile >= 0) return 2;
  // Sync extension 0x2B7 with object type 5 (SBR), then the flag and the extension's rate.
  buffer[2] = 0x56;
  buffer[3] = 0xE5;
  buffer[4] = static_cast<unsigned char>(0x80 | Index(kExtensionRates, sampleRate) << 3);
  return 5;
}
