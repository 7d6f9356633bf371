#include <gtest/gtest.h>

#include "inspect/BoxNames.h"
#include "io/FourCC.h"

using mp4::FourCC;
using mp4::NameOfBox;
using mp4::NameOfFormat;
using mp4::NameOfTag;

TEST(BoxNames, SayWhatTheStandardCallsABox) {
  EXPECT_EQ(NameOfBox(FourCC("moof"), 0).name, "Movie Fragment Box");
  EXPECT_EQ(NameOfBox(FourCC("moof"), 0).standard, "ISO/IEC 14496-12, 8.8.4");
  EXPECT_EQ(NameOfBox(FourCC("tenc"), FourCC("schi")).standard, "ISO/IEC 23001-7, 8.2");
  EXPECT_EQ(NameOfBox(FourCC("wide"), 0).standard, "QuickTime File Format");
}

TEST(BoxNames, AreEmptyForTheUnknown) {
  EXPECT_EQ(NameOfBox(FourCC("zzzz"), 0).name, "");
  EXPECT_EQ(NameOfBox(FourCC("zzzz"), FourCC("stsd")).name, "");
  EXPECT_EQ(NameOfBox(0xFFFFFFFF, 0xFFFFFFFF).standard, "");
}

TEST(BoxNames, DependOnTheParent) {
  EXPECT_EQ(NameOfBox(FourCC("text"), FourCC("gmhd")).name, "Text Media Information");
  EXPECT_EQ(NameOfBox(FourCC("text"), FourCC("stsd")).name, "QuickTime Text");
  EXPECT_EQ(NameOfBox(FourCC("cprt"), FourCC("udta")).name, "Copyright Box");
  EXPECT_EQ(NameOfBox(FourCC("cprt"), FourCC("ilst")).name, "Copyright");
  EXPECT_EQ(NameOfBox(FourCC("alac"), FourCC("stsd")).name, "Apple Lossless");
  EXPECT_EQ(NameOfBox(FourCC("alac"), FourCC("alac")).name, "ALAC Magic Cookie");
  EXPECT_EQ(NameOfBox(FourCC("chap"), FourCC("tref")).name, "Track Reference");
  EXPECT_EQ(NameOfBox(FourCC("cdsc"), FourCC("iref")).name, "Item Reference");
  EXPECT_EQ(NameOfBox(FourCC("\xA9"
                             "nam"),
                      FourCC("udta"))
                .name,
            "Title");
}

TEST(BoxNames, ProtectedEntriesNameNoFormat) {
  EXPECT_EQ(NameOfBox(FourCC("encv"), FourCC("stsd")).name, "Protected Video Sample Entry");
  EXPECT_EQ(NameOfFormat(FourCC("encv")), "");
  EXPECT_EQ(NameOfFormat(FourCC("avc1")), "H.264/AVC");
}

TEST(BoxNames, SayWhatTagsHold) {
  EXPECT_EQ(NameOfTag(FourCC("covr")), "Cover");
  EXPECT_EQ(NameOfTag(FourCC("moov")), "");
}
