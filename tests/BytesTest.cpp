#include <gtest/gtest.h>

#include "tests/Bytes.h"

TEST(Bytes, BoxSizeCountsItsHeader) {
  const Bytes box = Box("free", Bytes{1, 2, 3});
  ASSERT_EQ(box.size(), 11u);
  EXPECT_EQ(box[3], 11);
  EXPECT_EQ(box[4], 'f');
  EXPECT_EQ(box[10], 3);
}
