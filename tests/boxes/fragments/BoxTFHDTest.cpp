#include <gtest/gtest.h>

#include "boxes/fragments/BoxTFHD.h"
#include "tests/FragmentFixtures.h"

namespace {

using TfhdRead = fixture::PayloadRead<BoxTFHD>;

TEST(BoxTFHD, IsZeroAfterConstruction) {
  const BoxTFHD box;
  EXPECT_EQ(box.version, 0);
  EXPECT_EQ(box.tf_flags, 0u);
  EXPECT_EQ(box.track_ID, 0u);
  EXPECT_EQ(box.base_data_offset, 0u);
  EXPECT_EQ(box.sample_description_index, 0u);
  EXPECT_EQ(box.default_sample_duration, 0u);
  EXPECT_EQ(box.default_sample_size, 0u);
  EXPECT_EQ(box.default_sample_flags, 0u);
  EXPECT_FALSE(box.duration_is_empty);
}

TEST(BoxTFHD, WithoutFlagsReadsTheTrackIDAlone) {
  TfhdRead tfhd(fixture::Tfhd(0, 3, Bytes().Be32(99)));
  EXPECT_TRUE(tfhd.ok);
  EXPECT_EQ(tfhd.read.track_ID, 3u);
  EXPECT_EQ(tfhd.read.sample_description_index, 0u);
  EXPECT_EQ(tfhd.position, 12);  // the final skip passes the unread word
}

TEST(BoxTFHD, ReadsBaseDurationSizeAndFlags) {
  TfhdRead tfhd(fixture::Tfhd(0x39, 7, Bytes().Be64(0x123456789A).Be32(11).Be32(22).Be32(33)));
  EXPECT_TRUE(tfhd.ok);
  EXPECT_EQ(tfhd.read.tf_flags, 0x39u);
  EXPECT_EQ(tfhd.read.track_ID, 7u);
  EXPECT_EQ(tfhd.read.base_data_offset, 0x123456789Au);
  EXPECT_EQ(tfhd.read.sample_description_index, 0u);
  EXPECT_EQ(tfhd.read.default_sample_duration, 11u);
  EXPECT_EQ(tfhd.read.default_sample_size, 22u);
  EXPECT_EQ(tfhd.read.default_sample_flags, 33u);
  EXPECT_FALSE(tfhd.read.duration_is_empty);
  EXPECT_EQ(tfhd.position, 28);
}

TEST(BoxTFHD, ReadsAllFieldsInOrder) {
  TfhdRead tfhd(fixture::Tfhd(0x3B, 1, Bytes().Be64(5).Be32(6).Be32(7).Be32(8).Be32(9)));
  EXPECT_EQ(tfhd.read.base_data_offset, 5u);
  EXPECT_EQ(tfhd.read.sample_description_index, 6u);
  EXPECT_EQ(tfhd.read.default_sample_duration, 7u);
  EXPECT_EQ(tfhd.read.default_sample_size, 8u);
  EXPECT_EQ(tfhd.read.default_sample_flags, 9u);
  EXPECT_EQ(tfhd.position, 32);
}

TEST(BoxTFHD, EachBitStandsForItsField) {
  EXPECT_EQ(TfhdRead(fixture::Tfhd(0x02, 1, Bytes().Be32(4))).read.sample_description_index, 4u);
  EXPECT_EQ(TfhdRead(fixture::Tfhd(0x08, 1, Bytes().Be32(4))).read.default_sample_duration, 4u);
  EXPECT_EQ(TfhdRead(fixture::Tfhd(0x10, 1, Bytes().Be32(4))).read.default_sample_size, 4u);
  EXPECT_EQ(TfhdRead(fixture::Tfhd(0x20, 1, Bytes().Be32(4))).read.default_sample_flags, 4u);
}

TEST(BoxTFHD, TheEmptyDurationBitHasNoField) {
  TfhdRead tfhd(fixture::Tfhd(0x010000, 2));
  EXPECT_TRUE(tfhd.ok);
  EXPECT_TRUE(tfhd.read.duration_is_empty);
  EXPECT_EQ(tfhd.position, 8);
}

TEST(BoxTFHD, NoOtherBitHasAField) {
  TfhdRead tfhd(fixture::Tfhd(0xFEFFC4, 2, Bytes().Be32(1).Be32(2)));
  EXPECT_TRUE(tfhd.ok);
  EXPECT_EQ(tfhd.read.base_data_offset, 0u);
  EXPECT_EQ(tfhd.read.default_sample_duration, 0u);
  EXPECT_FALSE(tfhd.read.duration_is_empty);
}

TEST(BoxTFHD, ReadAgainItReplacesOnlyTheFieldsWhoseBitsAreSet) {
  BoxTFHD box;
  const Bytes first =
      Bytes().Byte(1).Be24(0x01003B).Be32(7).Be64(5).Be32(6).Be32(70).Be32(80).Be32(90);
  const Bytes second = Bytes().Byte(2).Be24(0x10).Be32(8).Be32(81);
  mmBufReader a(first.data(), first.size());
  mmBufReader b(second.data(), second.size());
  ASSERT_TRUE(box.ReadData(&a, 32, nullptr));
  ASSERT_TRUE(box.ReadData(&b, 12, nullptr));
  EXPECT_EQ(box.version, 2);
  EXPECT_EQ(box.tf_flags, 0x10u);
  EXPECT_EQ(box.track_ID, 8u);
  EXPECT_EQ(box.base_data_offset, 5u);
  EXPECT_EQ(box.sample_description_index, 6u);
  EXPECT_EQ(box.default_sample_duration, 70u);
  EXPECT_EQ(box.default_sample_size, 81u);
  EXPECT_EQ(box.default_sample_flags, 90u);
  EXPECT_TRUE(box.duration_is_empty);
}

TEST(BoxTFHD, StepsBackFromAShortPayload) {
  const Bytes bytes = Bytes().Byte(0).Be24(0x01).Be32(4).Be64(1000);
  mmBufReader reader(bytes.data(), bytes.size());
  BoxTFHD box;
  EXPECT_TRUE(box.ReadData(&reader, 8, nullptr));
  EXPECT_EQ(box.base_data_offset, 1000u);
  EXPECT_EQ(reader.GetPos(), 8);
}

TEST(BoxTFHD, FailsWithoutReaderOrWithNegativeSize) {
  BoxTFHD box;
  mmBufReader reader;
  EXPECT_FALSE(box.ReadData(nullptr, 8, nullptr));
  EXPECT_FALSE(box.ReadData(&reader, -1, nullptr));
}

TEST(BoxTFHD, AnEmptyPayloadIsReadAndSteppedBackFrom) {
  const Bytes bytes = Bytes().Byte(0).Be24(0).Be32(4);
  mmBufReader reader(bytes.data(), bytes.size());
  BoxTFHD box;
  EXPECT_TRUE(box.ReadData(&reader, 0, nullptr));
  EXPECT_EQ(box.track_ID, 4u);
  EXPECT_EQ(reader.GetPos(), 0);
}

}  // namespace
