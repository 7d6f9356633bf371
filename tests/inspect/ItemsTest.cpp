#include <gtest/gtest.h>

#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;
using Schemes = std::vector<std::string>;

Bytes SchemeOnly() { return Box("sinf", p::Schm("cenc")); }

TEST(InspectItems, ItemsWithoutProtectionAreClear) {
  const mp4::Report report =
      p::InspectBytes(p::ImageFile(p::Iinf({p::Infe(1, 0), p::Infe(2, 0, "Exif")})));
  EXPECT_EQ(p::kClear, report.verdict) << report.reason;
  ASSERT_EQ(2U, report.items.size());
  EXPECT_EQ(2U, report.items[1].id);
  EXPECT_EQ("Exif", report.items[1].type);
}

TEST(InspectItems, AProtectionIndexProtectsItsItem) {
  const Bytes file =
      p::ImageFile(p::Iinf({p::Infe(1, 0), p::Infe(2, 1)}) + p::Ipro({SchemeOnly()}));
  const mp4::Report report = p::InspectBytes(file);
  EXPECT_EQ(p::kProtected, report.verdict);
  EXPECT_EQ(Schemes{"cenc"}, report.schemes);
  EXPECT_FALSE(report.items.at(0).isProtected);
  EXPECT_TRUE(report.items.at(1).isProtected);
  EXPECT_EQ("cenc", report.items.at(1).scheme);
  ASSERT_EQ(2U, report.evidence.size());
  EXPECT_EQ("meta/iinf/infe[2]", report.evidence[0].boxPath);
  EXPECT_EQ("meta/ipro/sinf[1]/schm", report.evidence[1].boxPath);
  EXPECT_EQ(2U, report.evidence[1].item);
  EXPECT_EQ("hvc1", report.evidence[1].format);
}

TEST(InspectItems, TheOrderOfTheBoxesDoesNotMatter) {
  EXPECT_EQ(p::kProtected,
            p::VerdictOf(p::ImageFile(p::Ipro({SchemeOnly()}) + p::Iinf({p::Infe(1, 1)}))));
}

TEST(InspectItems, AnIndexThatPointsNowhereIsNotClear) {
  for (const unsigned index : {1U, 2U, 3U, 0xFFFFU}) {
    EXPECT_EQ(index <= 2 ? p::kProtected : p::kUndetermined,
              p::VerdictOf(p::ImageFile(p::Iinf({p::Infe(1, index)}) +
                                        p::Ipro({SchemeOnly(), SchemeOnly()}))))
        << index;
  }
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ImageFile(p::Iinf({p::Infe(1, 1)}))));
}

TEST(InspectItems, AProtectionNoItemUsesIsANote) {
  const mp4::Report report =
      p::InspectBytes(p::ImageFile(p::Iinf({p::Infe(1, 0)}) + p::Ipro({SchemeOnly()})));
  EXPECT_EQ(p::kClear, report.verdict) << report.reason;
  EXPECT_EQ(1U, report.notes.size());
}

TEST(InspectItems, ADerivedItemOverAProtectedOneIsProtected) {
  const Bytes items =
      p::Iinf({p::Infe(1, 0, "grid"), p::Infe(2, 0, "iden"), p::Infe(3, 1), p::Infe(4, 0)});
  const Bytes references = p::Iref(p::Dimg(1, {4, 2}) + p::Dimg(2, {3}));
  const mp4::Report report =
      p::InspectBytes(p::ImageFile(items + p::Ipro({SchemeOnly()}) + references));
  EXPECT_EQ(p::kProtected, report.verdict);
  const std::vector<bool> expected = {true, true, true, false};
  for (std::size_t i = 0; i < expected.size(); ++i)
    EXPECT_EQ(expected[i], report.items.at(i).isProtected) << i;
}

TEST(InspectItems, ACircleOfDerivedItemsEnds) {
  const Bytes items = p::Iinf({p::Infe(1, 0, "grid"), p::Infe(2, 0, "grid")});
  EXPECT_EQ(p::kClear,
            p::VerdictOf(p::ImageFile(items + p::Iref(p::Dimg(1, {2, 1}) + p::Dimg(2, {1})))));
}

TEST(InspectItems, AnInputThatIsNotListedIsNotClear) {
  const Bytes items = p::Iinf({p::Infe(1, 0, "grid"), p::Infe(2, 0)});
  for (const unsigned input : {1U, 2U, 3U}) {
    EXPECT_EQ(input <= 2 ? p::kClear : p::kUndetermined,
              p::VerdictOf(p::ImageFile(items + p::Iref(p::Dimg(1, {2, input})))))
        << input;
  }
}

TEST(InspectItems, ABoxAmongTheSchemesThatIsNoneIsNotClear) {
  const Bytes items = p::Iinf({p::Infe(1, 0)});
  EXPECT_EQ(p::kClear, p::VerdictOf(p::ImageFile(items + p::Ipro({SchemeOnly()}))));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ImageFile(items + p::Ipro({Box("sinx")}))));
}

TEST(InspectItems, CutReferencesAreNotClear) {
  const Bytes items = p::Iinf({p::Infe(1, 0, "grid"), p::Infe(2, 0)});
  const Bytes cut = Box("dimg", Bytes().Be16(1).Be16(2).Be16(2));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ImageFile(items + p::Iref(cut))));
}

TEST(InspectItems, ACountOfMoreItemsThanAreHeldIsNotClear) {
  for (const unsigned count : {0U, 1U, 2U, 0xFFFFU}) {
    const Bytes iinf = FullBox("iinf", 0, 0, Bytes().Be16(count).Append(p::Infe(1, 0)));
    EXPECT_EQ(count <= 1 ? p::kClear : p::kUndetermined, p::VerdictOf(p::ImageFile(iinf))) << count;
  }
}

TEST(InspectItems, AnUnreadableItemIsNotClear) {
  const Bytes unknown = FullBox("infe", 4, 0, Bytes().Fill(20));
  const Bytes cut = FullBox("infe", 2, 0, Bytes().Be16(1).Be16(0).Text("hvc"));
  for (const Bytes& item : {unknown, cut, Box("infx", Bytes().Fill(20))})
    EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ImageFile(p::Iinf({p::Infe(1, 0), item}))));
}

TEST(InspectItems, EveryVersionOfAnItemIsRead) {
  const Bytes ipro = p::Ipro({SchemeOnly()});
  for (const unsigned version : {0U, 1U, 2U, 3U}) {
    for (const unsigned index : {0U, 1U}) {
      Bytes fields = version == 3 ? Bytes().Be32(1) : Bytes().Be16(1);
      fields.Be16(index);
      if (version >= 2) fields.Text("hvc1");
      const Bytes infe = FullBox("infe", version, 0, fields.Fill(3));
      EXPECT_EQ(index == 0 ? p::kClear : p::kProtected,
                p::VerdictOf(p::ImageFile(p::Iinf({infe}) + ipro)))
          << version;
    }
  }
}

TEST(InspectItems, APrimaryItemThatIsNotListedIsNotClear) {
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ImageFile(p::Iinf({p::Infe(2, 0)}))));
}

TEST(InspectItems, LocationsWithoutItemInformationAreNotClear) {
  const Bytes meta =
      FullBox("meta", 0, 0, p::Hdlr("pict") + FullBox("iloc", 1, 0, Bytes().Fill(4)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ClearMovie() + meta));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::ClearMovie() + FullBox("meta", 0, 0, p::Hdlr("mdta"))));
}

TEST(InspectItems, EncryptionParametersWithoutAProtectedItemAreNotClear) {
  for (const char* type : {"ienc", "iaux", "ispe"}) {
    const Bytes properties = Box("iprp", Box("ipco", FullBox(type, 0, 0, Bytes().Fill(20))));
    EXPECT_EQ(std::string(type) == "ispe" ? p::kClear : p::kUndetermined,
              p::VerdictOf(p::ImageFile(p::Iinf({p::Infe(1, 0)}) + properties)));
  }
}

TEST(InspectItems, ItemInformationOfALaterVersionIsNotClear) {
  for (const unsigned version : {0U, 1U, 2U}) {
    const Bytes count = version == 0 ? Bytes().Be16(1) : Bytes().Be32(1);
    EXPECT_EQ(version <= 1 ? p::kClear : p::kUndetermined,
              p::VerdictOf(p::ImageFile(FullBox("iinf", version, 0, count + p::Infe(1, 0)))));
    EXPECT_EQ(p::kProtected,
              p::VerdictOf(p::ImageFile(FullBox("iinf", version, 0, count + p::Infe(1, 1)) +
                                        p::Ipro({SchemeOnly()}))));
  }
}

TEST(InspectItems, AHiddenItemCounts) {
  const Bytes infe = FullBox("infe", 2, 1, Bytes().Be16(1).Be16(1).Text("hvc1").Byte(0));
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::ImageFile(p::Iinf({infe}) + p::Ipro({SchemeOnly()}))));
}

TEST(InspectItems, ItemsOfMovieAndTracksAreSeen) {
  const Bytes meta = p::Meta(p::Iinf({p::Infe(1, 1)}) + p::Ipro({SchemeOnly()}));
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::Movie(p::VideoTrak() + meta)));
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::Movie(p::Trak(1, "vide", {p::ClearVideo()}, meta))));
}

TEST(InspectItems, ACutMetaBoxIsNotClear) {
  const Bytes image = p::ImageFile(p::Iinf({p::Infe(1, 0)}));
  for (std::size_t n = 24; n < image.size() - p::MediaData().size(); ++n)
    EXPECT_EQ(p::kUndetermined, p::VerdictOf(Bytes(image).Cut(n))) << n;
}

TEST(InspectItems, ProtectionSystemsOfItemsAreListed) {
  const mp4::Report report = p::InspectBytes(p::ImageFile(p::Iinf({p::Infe(1, 0)}) + p::Pssh()));
  EXPECT_EQ(p::kClear, report.verdict);
  ASSERT_EQ(1U, report.systems.size());
  EXPECT_EQ("Widevine", report.systems[0].name);
}

}  // namespace
