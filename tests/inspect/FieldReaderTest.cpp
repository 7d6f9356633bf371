#include <gtest/gtest.h>

#include "inspect/FieldReader.h"
#include "tests/TreeFixtures.h"

namespace {

using mp4::FieldReader;
using Rows = std::vector<std::string>;

/// A box with a payload, and a reader at its first byte.
struct Reading {
  explicit Reading(const Bytes& payload)
      : over(Box("moov", Box("zzzz", payload))), fields(&over.tree, over.At("moov/zzzz")) {}

  fixture::TreeOver over;
  FieldReader fields;
};

/// What was shown, as names and values.
void ExpectShown(FieldReader* fields, const std::vector<mp4::BoxField>& expected) {
  const std::vector<mp4::BoxField> shown = fields->Take();
  ASSERT_EQ(expected.size(), shown.size());
  for (std::size_t i = 0; i < shown.size(); ++i) {
    EXPECT_STREQ(expected[i].name, shown[i].name) << i;
    EXPECT_EQ(expected[i].value, shown[i].value) << expected[i].name;
  }
}

std::uint64_t Number(std::uint64_t value) { return value; }
std::int64_t Signed(std::int64_t value) { return value; }

}  // namespace

TEST(FieldReader, KeepsNumbersInTheirOrder) {
  Reading r(Bytes{1}.Be16(2).Be24(3).Be32(4).Be64(5).Be16(0xFFFF).Be32(0xFFFFFFFE));
  EXPECT_EQ(1, r.fields.U8("a"));
  EXPECT_EQ(2, r.fields.U16("b"));
  EXPECT_EQ(3U, r.fields.U24("c"));
  EXPECT_EQ(4U, r.fields.U32("d"));
  EXPECT_EQ(5U, r.fields.U64("e"));
  EXPECT_EQ(-1, r.fields.S16("f"));
  EXPECT_EQ(-2, r.fields.S32("g"));
  EXPECT_FALSE(r.fields.Cut());
  ExpectShown(&r.fields, {{"a", Number(1)},
                          {"b", Number(2)},
                          {"c", Number(3)},
                          {"d", Number(4)},
                          {"e", Number(5)},
                          {"f", Signed(-1)},
                          {"g", Signed(-2)}});
}

TEST(FieldReader, LeavesOutFieldsThatTheBoxHasNoBytesFor) {
  Reading r(Bytes().Be32(7).Be16(1));
  r.fields.U32("a");
  r.fields.U32("b");
  r.fields.U8("c");
  EXPECT_TRUE(r.fields.Cut());
  ExpectShown(&r.fields, {{"a", Number(7)}});
}

TEST(FieldReader, ShowsFlagsThatAreNotZero) {
  Reading without(Bytes{2}.Be24(0));
  without.fields.Full();
  EXPECT_EQ(2, without.fields.Version());
  ExpectShown(&without.fields, {{"version", Number(2)}});
  Reading with(Bytes{0}.Be24(0x20001));
  with.fields.Full();
  EXPECT_EQ(0x20001U, with.fields.Flags());
  ExpectShown(&with.fields, {{"version", Number(0)}, {"flags", Number(0x20001)}});
}

TEST(FieldReader, VersionOneAloneIsWide) {
  for (const unsigned version : {0U, 2U}) {
    Reading narrow(Bytes{}.Byte(version).Be24(0).Be32(5).Be32(6));
    narrow.fields.Full();
    EXPECT_EQ(5U, narrow.fields.ByVersion("a")) << version;
    EXPECT_EQ(4U, narrow.fields.View()->Left()) << version;
  }
  Reading wide(Bytes{1}.Be24(0).Be32(5).Be32(6).Be64(86400));
  wide.fields.Full();
  EXPECT_EQ(0x500000006U, wide.fields.ByVersion("a"));
  wide.fields.Time("b");
  ExpectShown(&wide.fields, {{"version", Number(1)},
                             {"a", Number(0x500000006)},
                             {"b", std::string("1904-01-02T00:00:00Z")}});
}

TEST(FieldReader, FixedPointNumbersAreSigned) {
  Reading r(Bytes().Be32(0x18000).Be32(0xFFFF0000).Be16(0x0180).Be16(0xFF80));
  r.fields.Fixed32("a");
  r.fields.Fixed32("b");
  r.fields.Fixed16("c");
  r.fields.Fixed16("d");
  ExpectShown(&r.fields, {{"a", 1.5}, {"b", -1.0}, {"c", 1.5}, {"d", -0.5}});
}

TEST(FieldReader, TypesAndLanguagesAreTexts) {
  Reading r(Bytes().Be16(0x15C7).Text("isommp41").Text("a/b"));
  r.fields.Language("a");
  r.fields.Type("b");
  r.fields.Types("c");
  EXPECT_EQ(3U, r.fields.View()->Left()) << "no whole type";
  ExpectShown(&r.fields,
              {{"a", std::string("eng")}, {"b", std::string("isom")}, {"c", Rows{"mp41"}}});
}

TEST(FieldReader, OfManyTypesFourTimesTheRowsAreShown) {
  Reading r(Bytes().Fill(4 * (4 * mp4::kShownRows + 1), 'x'));
  r.fields.Types("a");
  EXPECT_EQ(0U, r.fields.View()->Left());
  ExpectShown(&r.fields, {{"a", Rows(4 * mp4::kShownRows, "xxxx")}});
}

TEST(FieldReader, LongBytesEndInDots) {
  Reading r(Bytes().Fill(32, 0xAB).Fill(33, 0xCD));
  r.fields.Hex("a", 32);
  r.fields.RestHex("b");
  r.fields.RestHex("c");
  std::string whole, cut;
  for (int i = 0; i < 32; ++i) {
    whole += "ab";
    cut += "cd";
  }
  ExpectShown(&r.fields, {{"a", whole}, {"b", cut + "..."}});
}

TEST(FieldReader, BytesAndIdsThatAreCutAreLeftOut) {
  Reading bytes(Bytes().Fill(15));
  bytes.fields.Hex("a", 16);
  EXPECT_TRUE(bytes.fields.Cut());
  ExpectShown(&bytes.fields, {});
  Reading id(Bytes().Fill(15));
  id.fields.Id("a");
  ExpectShown(&id.fields, {});
  Reading whole(Bytes().Fill(16, 0x11));
  whole.fields.Id("a");
  ExpectShown(&whole.fields, {{"a", std::string("11111111-1111-1111-1111-111111111111")}});
}

TEST(FieldReader, AMatrixThatDoesNothingIsNotShown) {
  const Bytes identity = Bytes().Be32(0x10000).Fill(12).Be32(0x10000).Fill(12).Be32(0x40000000);
  Reading same(identity);
  same.fields.Matrix();
  EXPECT_EQ(0U, same.fields.View()->Left());
  ExpectShown(&same.fields, {});
  Reading turned(Bytes()
                     .Be32(0)
                     .Be32(0xFFFF0000)
                     .Be32(0)
                     .Be32(0x8000)
                     .Fill(8)
                     .Be32(0x140000)
                     .Fill(4)
                     .Be32(0x20000000));
  turned.fields.Matrix();
  ExpectShown(&turned.fields,
              {{"matrix", Rows{"0", "-1", "0", "0.5", "0", "0", "20", "0", "0.5"}}});
}

TEST(FieldReader, ATextEndsAtItsZeroOrWithTheBox) {
  Reading r(Bytes().Text("one").Byte(0).Byte(0).Text("two"));
  r.fields.Text("a");
  r.fields.Text("b");
  r.fields.Text("c");
  r.fields.Text("d");
  EXPECT_FALSE(r.fields.Cut());
  ExpectShown(&r.fields, {{"a", std::string("one")},
                          {"b", std::string()},
                          {"c", std::string("two")},
                          {"d", std::string()}});
}

TEST(FieldReader, TheRestKeepsItsZeros) {
  Reading r(Bytes().Text("on").Byte(0).Text("e"));
  r.fields.Rest("a");
  ExpectShown(&r.fields, {{"a", std::string("on\0e", 4)}});
}

TEST(FieldReader, ALongTextIsNotCutInACharacter) {
  Reading whole(Bytes().Fill(mp4::kShownText, 'a'));
  whole.fields.Rest("a");
  ExpectShown(&whole.fields, {{"a", std::string(mp4::kShownText, 'a')}});
  Reading plain(Bytes().Fill(mp4::kShownText + 1, 'a'));
  plain.fields.Rest("a");
  ExpectShown(&plain.fields, {{"a", std::string(mp4::kShownText, 'a') + "..."}});
  // The euro sign, whose three bytes begin two before the end.
  Reading split(Bytes().Fill(mp4::kShownText - 2, 'a').Text("\xE2\x82\xAC\xE2\x82\xAC"));
  split.fields.Rest("a");
  ExpectShown(&split.fields, {{"a", std::string(mp4::kShownText - 2, 'a') + "..."}});
}

TEST(FieldReader, RowsAreTheFirstThatAreWhole) {
  const auto row = [](mp4::FieldView* view) { return std::to_string(view->U16()); };
  Bytes ten;
  for (unsigned i = 0; i < 10; ++i) ten.Be16(i);
  Reading many(ten);
  many.fields.Rows("a", 10, row);
  ExpectShown(&many.fields, {{"a", Rows{"0", "1", "2", "3", "4", "5", "6", "7"}}});
  Reading cut(Bytes().Be16(1).Be16(2).Byte(3));
  cut.fields.Rows("a", 0xFFFFFFFF, row);
  EXPECT_TRUE(cut.fields.Cut());
  ExpectShown(&cut.fields, {{"a", Rows{"1", "2"}}});
  Reading none(ten);
  none.fields.Rows("a", 0, row);
  ExpectShown(&none.fields, {});
}

TEST(FieldReader, KnowsTheParentOfItsBox) {
  Reading r(Bytes().Be32(1));
  EXPECT_EQ(mp4::LoadLe32(reinterpret_cast<const unsigned char*>("moov")), r.fields.ParentType());
  EXPECT_EQ(r.over.At("moov/zzzz"), r.fields.Id());
}

TEST(FieldReader, ParsersAreFoundByTheirType) {
  const mp4::FieldParserRow rows[] = {{1, [](FieldReader* f) { f->U8("one"); }},
                                      {2, [](FieldReader* f) { f->U8("two"); }}};
  EXPECT_EQ(rows[1].parser, mp4::FindParser(rows, 2));
  EXPECT_EQ(nullptr, mp4::FindParser(rows, 3));
}
