#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <memory>
#include <type_traits>

#include "io/mmBuffer.h"

TEST(mmBuffer, StartsEmpty) {
  const mmBuffer buffer;
  EXPECT_EQ(buffer.data, nullptr);
  EXPECT_EQ(buffer.capacity, 0u);
  EXPECT_EQ(buffer.used, 0u);
  EXPECT_EQ(buffer.readPos, 0u);
  EXPECT_EQ(buffer.Be32At(0), 0u);
}

TEST(mmBuffer, DataIsItsFirstFieldBehindAVirtualDestructor) {
  const mmBuffer buffer;
  EXPECT_TRUE(std::has_virtual_destructor_v<mmBuffer>);
  const auto* start = reinterpret_cast<const char*>(&buffer);
  EXPECT_EQ(reinterpret_cast<const char*>(&buffer.data) - start,
            static_cast<std::ptrdiff_t>(sizeof(void*)));
}

TEST(mmBuffer, AllocateReplacesWhatWasHeld) {
  mmBuffer buffer;
  ASSERT_TRUE(buffer.AppendBe32(1));
  buffer.readPos = 2;
  ASSERT_TRUE(buffer.Allocate(100));
  EXPECT_EQ(buffer.capacity, 100u);
  EXPECT_EQ(buffer.used, 0u);
  EXPECT_EQ(buffer.readPos, 0u);
}

TEST(mmBuffer, AppendsAreBigEndian) {
  mmBuffer buffer;
  ASSERT_TRUE(buffer.AppendBe32(0x01020304));
  ASSERT_TRUE(buffer.AppendBe64(0x1112131415161718));
  ASSERT_EQ(buffer.used, 12u);
  EXPECT_EQ(buffer.data[0], 0x01);
  EXPECT_EQ(buffer.data[3], 0x04);
  EXPECT_EQ(buffer.data[4], 0x11);
  EXPECT_EQ(buffer.data[11], 0x18);
  EXPECT_EQ(buffer.Be32At(0), 0x01020304u);
  EXPECT_EQ(buffer.Be64At(4), 0x1112131415161718u);
  EXPECT_EQ(buffer.Be32At(2), 0x03041112u);
}

TEST(mmBuffer, GrowthKeepsTheBytes) {
  mmBuffer buffer;
  for (std::uint32_t i = 0; i < 5000; ++i) ASSERT_TRUE(buffer.AppendBe32(i * 0x01010101u));
  for (std::uint32_t i = 0; i < 5000; ++i) ASSERT_EQ(buffer.Be32At(i * 4), i * 0x01010101u);
}

TEST(mmBuffer, GrowthIsAmortised) {
  mmBuffer buffer;
  int growths = 0;
  std::size_t capacity = 0;
  for (std::uint32_t i = 0; i < 100000; ++i) {
    ASSERT_TRUE(buffer.AppendBe32(i));
    if (buffer.capacity != capacity) ++growths;
    capacity = buffer.capacity;
  }
  EXPECT_LT(growths, 40);
}

TEST(mmBuffer, MakeRoomLeavesEnoughOfACapacityAlone) {
  mmBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(100));
  EXPECT_TRUE(buffer.MakeRoom(100));
  EXPECT_EQ(buffer.capacity, 100u);
  EXPECT_TRUE(buffer.MakeRoom(101));
  EXPECT_EQ(buffer.capacity, 150u);
  EXPECT_TRUE(buffer.MakeRoom(1000));
  EXPECT_EQ(buffer.capacity, 1000u);
}

TEST(mmBuffer, GrowthKeepsEveryByteHeld) {
  mmBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(1));
  buffer.data[0] = 7;
  buffer.used = 1;
  ASSERT_TRUE(buffer.MakeRoom(100));
  EXPECT_EQ(buffer.data[0], 7);
  EXPECT_EQ(buffer.used, 1u);
}

TEST(mmBuffer, ImpossibleGrowthChangesNothing) {
  mmBuffer buffer;
  ASSERT_TRUE(buffer.AppendBe32(7));
  const std::size_t capacity = buffer.capacity;
  EXPECT_FALSE(buffer.MakeRoom(SIZE_MAX));
  EXPECT_FALSE(buffer.MakeRoom(SIZE_MAX - 3));
  EXPECT_EQ(buffer.capacity, capacity);
  EXPECT_EQ(buffer.used, 4u);
  EXPECT_EQ(buffer.Be32At(0), 7u);
}

TEST(mmBuffer, ReadsOutsideTheBytesHeldAreZero) {
  mmBuffer buffer;
  ASSERT_TRUE(buffer.Allocate(64));
  ASSERT_TRUE(buffer.AppendBe64(0xFFFFFFFFFFFFFFFF));
  EXPECT_EQ(buffer.Be32At(4), 0xFFFFFFFFu);
  EXPECT_EQ(buffer.Be32At(5), 0u);
  EXPECT_EQ(buffer.Be32At(8), 0u);
  EXPECT_EQ(buffer.Be32At(-1), 0u);
  EXPECT_EQ(buffer.Be32At(LLONG_MIN), 0u);
  EXPECT_EQ(buffer.Be32At(LLONG_MAX), 0u);
  EXPECT_EQ(buffer.Be64At(0), 0xFFFFFFFFFFFFFFFFu);
  EXPECT_EQ(buffer.Be64At(1), 0u);
}

TEST(mmBuffer, OverwritesOnlyBytesHeld) {
  mmBuffer buffer;
  ASSERT_TRUE(buffer.AppendBe64(0));
  EXPECT_TRUE(buffer.PutBe32At(4, 0xA1B2C3D4));
  EXPECT_EQ(buffer.Be64At(0), 0xA1B2C3D4u);
  EXPECT_FALSE(buffer.PutBe32At(5, 1));
  EXPECT_FALSE(buffer.PutBe32At(-4, 1));
  EXPECT_EQ(buffer.Be64At(0), 0xA1B2C3D4u);
}
