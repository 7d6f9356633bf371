#include <gtest/gtest.h>

#include "io/FourCC.h"
#include "iso/ProtectedFormats.h"

namespace {

using mp4::FormatKind;
using mp4::FourCC;
using mp4::KindOfFormat;

TEST(ProtectedFormats, EachKindIsTold) {
  EXPECT_EQ(FormatKind::kProtected, KindOfFormat(FourCC("encv")));
  EXPECT_EQ(FormatKind::kProtected, KindOfFormat(FourCC("drmt")));
  EXPECT_EQ(FormatKind::kAudible, KindOfFormat(FourCC("aavd")));
  EXPECT_EQ(FormatKind::kReserved, KindOfFormat(FourCC("zavc")));
  EXPECT_EQ(FormatKind::kReceived, KindOfFormat(FourCC("rsrp")));
  EXPECT_EQ(FormatKind::kSent, KindOfFormat(FourCC("srtp")));
  EXPECT_EQ(FormatKind::kRestricted, KindOfFormat(FourCC("resv")));
  EXPECT_EQ(FormatKind::kIncomplete, KindOfFormat(FourCC("icpv")));
  EXPECT_EQ(FormatKind::kOther, KindOfFormat(FourCC("avc1")));
}

TEST(ProtectedFormats, EncAndALetterIsReserved) {
  EXPECT_EQ(FormatKind::kReserved, KindOfFormat(FourCC("encu")));
  EXPECT_EQ(FormatKind::kReserved, KindOfFormat(FourCC("enc7")));
  EXPECT_EQ(FormatKind::kOther, KindOfFormat(FourCC("end7")));
}

TEST(ProtectedFormats, RestrictedAndReceivedFormatsAreNotForProtectedMediaAlone) {
  for (const FormatKind kind :
       {FormatKind::kProtected, FormatKind::kAudible, FormatKind::kReserved})
    EXPECT_TRUE(mp4::IsForProtectedMedia(kind));
  for (const FormatKind kind : {FormatKind::kOther, FormatKind::kReceived, FormatKind::kSent,
                                FormatKind::kRestricted, FormatKind::kIncomplete})
    EXPECT_FALSE(mp4::IsForProtectedMedia(kind));
}

}  // namespace
