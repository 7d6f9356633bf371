#include <gtest/gtest.h>

#include <climits>

#include "boxes/description/MakeAACExtraData.h"

namespace {

/// Index bits that end up in the two bytes written without a profile.
unsigned FrequencyIndex(int rate) {
  unsigned char bytes[5] = {};
  MakeAACExtraData(bytes, 0, rate, 0);
  return (bytes[0] & 7U) << 1 | bytes[1] >> 7;
}

unsigned ExtensionIndex(int rate) {
  unsigned char bytes[5] = {};
  MakeAACExtraData(bytes, -1, rate, 0);
  return bytes[4] >> 3 & 15U;
}

}  // namespace

TEST(MakeAACExtraData, WritesTwoBytesForAPlainProfile) {
  unsigned char bytes[5] = {0xCC, 0xCC, 0xCC, 0xCC, 0xCC};
  EXPECT_EQ(2, MakeAACExtraData(bytes, 1, 44100, 2));
  EXPECT_EQ(0x12, bytes[0]);
  EXPECT_EQ(0x10, bytes[1]);
  EXPECT_EQ(0xCC, bytes[2]);
}

TEST(MakeAACExtraData, SignalsSbrForANegativeProfile) {
  unsigned char bytes[5] = {};
  EXPECT_EQ(5, MakeAACExtraData(bytes, -1, 22050, 2));
  EXPECT_EQ(0x13, bytes[0]);
  EXPECT_EQ(0x90, bytes[1]);
  EXPECT_EQ(0x56, bytes[2]);
  EXPECT_EQ(0xE5, bytes[3]);
  EXPECT_EQ(0xA0, bytes[4]);
}

TEST(MakeAACExtraData, TakesTheFrequencyIndexAtItsLowestRate) {
  const int lowest[] = {92017, 75132, 55426, 46009, 37566, 27713, 23004, 18783, 13856, 11502, 9391};
  for (unsigned i = 0; i < 11; ++i) {
    EXPECT_EQ(i, FrequencyIndex(lowest[i])) << lowest[i];
    EXPECT_EQ(i + 1, FrequencyIndex(lowest[i] - 1)) << lowest[i];
  }
  EXPECT_EQ(0U, FrequencyIndex(INT_MAX));
  EXPECT_EQ(11U, FrequencyIndex(0));
  EXPECT_EQ(11U, FrequencyIndex(-44100));
}

TEST(MakeAACExtraData, TakesTheExtensionIndexAtItsOwnLowestRates) {
  const int lowest[] = {46009, 37566, 27713, 23005, 18783, 13857, 11502, 9392, 6928, 5751, 4696};
  for (unsigned i = 0; i < 11; ++i) {
    EXPECT_EQ(i, ExtensionIndex(lowest[i])) << lowest[i];
    EXPECT_EQ(i + 1, ExtensionIndex(lowest[i] - 1)) << lowest[i];
  }
}

TEST(MakeAACExtraData, KeepsTheLowEightBitsOfEachByte) {
  unsigned char bytes[5] = {};
  MakeAACExtraData(bytes, 31, 44100, 0x21);  // object type 32, 33 channels
  EXPECT_EQ(0x02, bytes[0]);                 // 0x100 + 2
  EXPECT_EQ(0x08, bytes[1]);                 // 0x108
  EXPECT_EQ(5, MakeAACExtraData(bytes, INT_MIN, 44100, -1));
  EXPECT_EQ(0x0A, bytes[0]);  // (2^31 + 1) << 3, and 2
  EXPECT_EQ(0xF8, bytes[1]);
}

TEST(MakeAACExtraData, GivesNothingForANullBuffer) {
  EXPECT_EQ(0, MakeAACExtraData(nullptr, 1, 44100, 2));
}
