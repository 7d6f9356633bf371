#include <gtest/gtest.h>

#include "boxes/movie/BoxMDAT.h"
#include "boxes/track/BoxDINF.h"
#include "boxes/track/BoxEDTS.h"
#include "boxes/track/BoxSMHD.h"
#include "boxes/track/BoxVMHD.h"
#include "tests/TrackFixtures.h"

template <class Passed>
class PassedOverBoxes : public testing::Test {};

using Boxes = testing::Types<BoxDINF, BoxEDTS, BoxMDAT, BoxSMHD, BoxVMHD>;
TYPED_TEST_SUITE(PassedOverBoxes, Boxes);

TYPED_TEST(PassedOverBoxes, PassesExactlyItsPayload) {
  TypeParam box;
  const Bytes bytes = Bytes().Fill(40, 0xAB);
  mmBufReader reader(bytes.data(), bytes.size());
  EXPECT_TRUE(box.ReadData(&reader, 17, nullptr));
  EXPECT_EQ(reader.GetPos(), 17);
}

TYPED_TEST(PassedOverBoxes, FailsWithoutReader) {
  TypeParam box;
  EXPECT_FALSE(box.ReadData(nullptr, 17, nullptr));
}

TEST(BoxMDAT, GetSampleDataDoesNothingAndSucceeds) {
  BoxMDAT box;
  BoxBase::SAMPLE sample{};
  sample.size = 5;
  EXPECT_TRUE(box.GetSampleData(&sample));
  EXPECT_EQ(sample.size, 5u);
  EXPECT_EQ(sample.data, nullptr);
  EXPECT_TRUE(box.GetSampleData(nullptr));
}
