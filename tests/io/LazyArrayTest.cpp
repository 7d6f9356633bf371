#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <utility>

#include "io/LazyArray.h"
#include "io/PageMemory.h"

namespace {

mp4::LazyArray<unsigned char> Mapped(std::size_t bytes) {
  auto* block = static_cast<unsigned char*>(mp4::PageMemory::MapZeros(bytes));
  return mp4::LazyArray<unsigned char>(block, mp4::LazyArrayDeleter<unsigned char>(bytes));
}

TEST(LazyArray, AnOrdinaryArrayMayTakeItsPlace) {
  auto array = Mapped(1000);
  array.reset(new unsigned char[2]{1, 2});
  EXPECT_EQ(array.get_deleter().mapped, 0u);
  array = std::make_unique<unsigned char[]>(3);
  EXPECT_EQ(array[2], 0u);
}

TEST(LazyArray, MovedFromPointersTakeOrdinaryArrays) {
  auto bytes = Mapped(std::size_t{2} << 20);
  auto owner = std::move(bytes);
  bytes.reset(new unsigned char[8]);
  EXPECT_EQ(bytes.get_deleter().mapped, 0u);
  EXPECT_EQ(owner.get_deleter().mapped, std::size_t{2} << 20);
  owner = std::make_unique<unsigned char[]>(8);
  EXPECT_EQ(owner.get_deleter().mapped, 0u);
}

}  // namespace
