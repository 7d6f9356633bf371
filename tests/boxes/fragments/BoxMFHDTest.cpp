#include <gtest/gtest.h>

#include "boxes/fragments/BoxMFHD.h"
#include "tests/FragmentFixtures.h"

namespace {

using MfhdRead = fixture::PayloadRead<BoxMFHD>;

TEST(BoxMFHD, ReadsTheSequenceNumber) {
  EXPECT_EQ(BoxMFHD().sequence_number, 0u);
  MfhdRead mfhd(FullBox("mfhd", 5, 0xFFFFFF, Bytes().Be32(0x80000001)));
  EXPECT_TRUE(mfhd.ok);
  EXPECT_EQ(mfhd.read.sequence_number, 0x80000001u);
  EXPECT_EQ(mfhd.position, 8);
}

TEST(BoxMFHD, MovesToTheEndOfItsPayload) {
  EXPECT_EQ(MfhdRead(Box("mfhd", Bytes().Fill(11))).position, 11);
  EXPECT_EQ(MfhdRead(Box("mfhd", Bytes().Fill(5))).position, 5);
}

TEST(BoxMFHD, FailsWithoutReaderOrWithNegativeSize) {
  BoxMFHD box;
  mmBufReader reader;
  EXPECT_FALSE(box.ReadData(nullptr, 8, nullptr));
  EXPECT_FALSE(box.ReadData(&reader, -1, nullptr));
}

}  // namespace
