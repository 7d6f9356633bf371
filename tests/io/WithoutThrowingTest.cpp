#include <gtest/gtest.h>

#include <new>

#include "io/NewArray.h"
#include "io/WithoutThrowing.h"

namespace {

TEST(WithoutThrowing, IsTrueForWorkThatWasDone) {
  int done = 0;
  EXPECT_TRUE(mp4::WithoutThrowing([&] { done = 1; }));
  EXPECT_EQ(done, 1);
}

TEST(WithoutThrowing, IsFalseForWorkThatThrew) {
  int done = 0;
  EXPECT_FALSE(mp4::WithoutThrowing([&] {
    done = 1;
    throw std::bad_alloc();
  }));
  EXPECT_FALSE(mp4::WithoutThrowing([] { throw 7; }));
  EXPECT_EQ(done, 1);
}

struct Refused {
  static void* operator new[](std::size_t) { throw std::bad_alloc(); }
};

TEST(NewArray, IsNullWhenMemoryIsRefused) {
  EXPECT_EQ(mp4::NewArray<Refused>(1), nullptr);
  EXPECT_EQ(mp4::NewZeroedArray<Refused>(1), nullptr);
}

TEST(NewArray, ZeroedElementsAreZero) {
  const auto array = mp4::NewZeroedArray<int>(1000);
  ASSERT_NE(array, nullptr);
  for (int i = 0; i < 1000; ++i) ASSERT_EQ(array[static_cast<std::size_t>(i)], 0);
}

}  // namespace
