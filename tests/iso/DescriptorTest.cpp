#include <gtest/gtest.h>

#include "iso/Descriptor.h"
#include "tests/Bytes.h"

namespace {

TEST(Descriptor, LengthsOfOneToFourBytesAreRead) {
  const std::vector<Bytes> lengths = {{3}, {0x80, 3}, {0x80, 0x80, 3}, {0x80, 0x80, 0x80, 3}};
  for (const Bytes& length : lengths) {
    const Bytes bytes = Bytes{5} + length + Bytes{1, 2, 3, 9};
    mp4::FieldView fields(bytes.data(), bytes.size());
    mp4::Descriptor descriptor;
    ASSERT_TRUE(mp4::ReadDescriptor(&fields, &descriptor));
    EXPECT_EQ(5, descriptor.tag);
    EXPECT_EQ(3U, descriptor.payload.Left());
    EXPECT_EQ(1, descriptor.payload.U8());
    EXPECT_EQ(9, fields.U8());
  }
}

TEST(Descriptor, LongLengthsArePutTogether) {
  const Bytes bytes = Bytes{5, 0x81, 0x00}.Fill(128);
  mp4::FieldView fields(bytes.data(), bytes.size());
  mp4::Descriptor descriptor;
  ASSERT_TRUE(mp4::ReadDescriptor(&fields, &descriptor));
  EXPECT_EQ(128U, descriptor.payload.Left());
}

TEST(Descriptor, WhatDoesNotFitIsRefused) {
  const std::vector<Bytes> broken = {
      {}, {5}, {5, 0x80}, {5, 1}, {5, 0x80, 0x80, 0x80, 0x80, 0}, {5, 3, 1, 2}};
  for (const Bytes& bytes : broken) {
    mp4::FieldView fields(bytes.data(), bytes.size());
    mp4::Descriptor descriptor;
    EXPECT_FALSE(mp4::ReadDescriptor(&fields, &descriptor)) << bytes.size();
  }
}

}  // namespace
