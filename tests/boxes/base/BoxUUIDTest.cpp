#include <gtest/gtest.h>

#include "boxes/base/BoxUUID.h"
#include "io/mmBufReader.h"
#include "tests/Bytes.h"

TEST(BoxUUID, ConsumesExactlyItsPayloadAndSucceeds) {
  const Bytes bytes = Bytes().Fill(24, 7);
  mmBufReader reader(bytes.data(), bytes.size());
  BoxUUID box;
  EXPECT_TRUE(box.ReadData(&reader, 20, nullptr));
  EXPECT_EQ(reader.GetPos(), 20);
}

TEST(BoxUUID, NullReaderFails) {
  BoxUUID box;
  EXPECT_FALSE(box.ReadData(nullptr, 20, nullptr));
}
