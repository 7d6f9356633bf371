#include <gtest/gtest.h>

#include <climits>

#include "demux/MakeBlockBuffer.h"

namespace {

int CapacityFor(int largest) {
  const auto buffer = mp4::MakeBlockBuffer(largest);
  EXPECT_NE(buffer, nullptr);
  EXPECT_EQ(buffer->data == nullptr, buffer->capacity == 0) << largest;
  return buffer->capacity;
}

TEST(MakeBlockBuffer, CapacityIsTheLargestBlockAnd32RoundedDownTo16) {
  EXPECT_EQ(CapacityFor(1), 32);
  EXPECT_EQ(CapacityFor(15), 32);
  EXPECT_EQ(CapacityFor(16), 48);
  EXPECT_EQ(CapacityFor(1000), 1024);
}

TEST(MakeBlockBuffer, NoBytesNeedNoBuffer) {
  EXPECT_EQ(CapacityFor(0), 0);
  EXPECT_EQ(CapacityFor(-1), 0);
}

TEST(MakeBlockBuffer, LargestCapacityFitsAnInt) {
  EXPECT_EQ(CapacityFor(INT_MAX - 32), 0x7FFFFFF0);
  EXPECT_EQ(CapacityFor(INT_MAX - 31), 0);
  EXPECT_EQ(CapacityFor(INT_MAX), 0);
}

TEST(MakeBlockBuffer, BytesCanBeWrittenBehindTheCapacityToo) {
  const auto buffer = mp4::MakeBlockBuffer(100);
  ASSERT_NE(buffer->data, nullptr);
  for (int i = 0; i < buffer->capacity + 32; ++i) buffer->data[static_cast<std::size_t>(i)] = 1;
  EXPECT_EQ(buffer->data[static_cast<std::size_t>(buffer->capacity) + 31], 1);
}

}  // namespace
