#include <gtest/gtest.h>

#include <string>

#include "boxes/userdata/BoxIlst.h"
#include "io/mmBufReader.h"
#include "tests/MetadataFixtures.h"

namespace {

struct Read {
  explicit Read(const Bytes& payload) : reader(payload.data(), payload.size()) {
    FillField(context.metadata.genre);
    ok = box.ReadData(&reader, static_cast<long long>(payload.size()), &context);
  }
  mmBufReader reader;
  BoxIlst box;
  Mp4Context context;
  bool ok = false;
};

/// One item body read into a field that starts out full of 'x', with `behind` after the item.
struct ItemRead {
  explicit ItemRead(const Bytes& body, const Bytes& behind = {}) {
    FillField(field);
    const Bytes all = body + behind;
    mmBufReader reader(all.data(), all.size());
    ok = BoxIlst().Read_0xa9xxx(&reader, static_cast<long long>(body.size()), field, 1040);
    pos = reader.GetPos();
  }
  bool Untouched() const { return field[0] == L'x' && field[259] == L'x'; }
  wchar_t field[260];
  bool ok = false;
  long long pos = -1;
};

}  // namespace

TEST(BoxIlst, DataBoxThatFillsTheItemGivesItsText) {
  const Bytes body = DataBox("Album");
  ASSERT_EQ(body.size(), 21u);
  const Read ilst(Box("\251alb", body));
  EXPECT_TRUE(ilst.ok);
  EXPECT_TRUE(HoldsExactly(ilst.context.metadata.album, L"Album"));
  EXPECT_EQ(ItemRead(body, Bytes().Text("ZZZZ")).pos, 21);
  EXPECT_TRUE(HoldsExactly(ItemRead(body, Bytes().Text("ZZZZ")).field, L"Album"));
}

TEST(BoxIlst, EachKeyFillsItsField) {
  const Read ilst(DataItem("ART", "a") + DataItem("nam", "b") + DataItem("trk", "c") +
                  DataItem("alb", "d") + DataItem("day", "e") + DataItem("gen", "f"));
  EXPECT_TRUE(HoldsExactly(ilst.context.metadata.artist, L"a"));
  EXPECT_TRUE(HoldsExactly(ilst.context.metadata.name, L"b"));
  EXPECT_TRUE(HoldsExactly(ilst.context.metadata.track, L"c"));
  EXPECT_TRUE(HoldsExactly(ilst.context.metadata.album, L"d"));
  EXPECT_TRUE(HoldsExactly(ilst.context.metadata.day, L"e"));
  EXPECT_TRUE(HoldsExactly(ilst.context.metadata.genre, L"f"));
}

TEST(BoxIlst, LaterItemOverwritesTheWholeField) {
  const Read ilst(DataItem("ART", "A long name") + DataItem("aut", "Short"));
  EXPECT_TRUE(HoldsExactly(ilst.context.metadata.artist, L"Short"));
}

TEST(BoxIlst, NextChildsSizeIsReadWithTheTextAndItsZeroEndsIt) {
  const ItemRead item(DataBox("Album") + Box("name", Bytes().Fill(8)), Bytes().Text("ZZZZ"));
  EXPECT_TRUE(HoldsExactly(item.field, L"Album"));
  EXPECT_EQ(item.pos, 21 + 16);
}

TEST(BoxIlst, TextTakesFourBytesBehindTheDataBox) {
  // Deliberate: hosts see the four bytes when they are not zero.
  const ItemRead item(DataBox("Album") + Bytes().Text("WXYZrest"));
  EXPECT_TRUE(HoldsExactly(item.field, L"AlbumWXYZ"));
  EXPECT_EQ(item.pos, 29);
}

TEST(BoxIlst, TextTakesUpToThreeBytesThatEndTheItem) {
  EXPECT_TRUE(HoldsExactly(ItemRead(DataBox("Album") + Bytes().Text("W")).field, L"AlbumW"));
  EXPECT_TRUE(HoldsExactly(ItemRead(DataBox("Album") + Bytes().Text("WX")).field, L"AlbumWX"));
  EXPECT_TRUE(HoldsExactly(ItemRead(DataBox("Album") + Bytes().Text("WXY")).field, L"AlbumWXY"));
  EXPECT_TRUE(HoldsExactly(ItemRead(DataBox("Album") + Bytes().Text("WXYZ")).field, L"AlbumWXYZ"));
}

TEST(BoxIlst, OtherTypeIndicatorsStoreNothing) {
  for (const std::uint32_t indicator : {0u, 2u, 13u, 14u, 21u, 0x01000001u}) {
    const ItemRead item(DataBox("Album", indicator), Bytes().Text("ZZZZ"));
    EXPECT_TRUE(item.ok);
    EXPECT_TRUE(item.Untouched()) << indicator;
    EXPECT_EQ(item.pos, 21);
  }
}

TEST(BoxIlst, LocaleIsDiscarded) {
  const ItemRead item(Box("data", Bytes().Be32(1).Be32(0x46520409).Text("Album")));
  EXPECT_TRUE(HoldsExactly(item.field, L"Album"));
}

TEST(BoxIlst, FirstChildOtherThanDataStoresNothing) {
  const ItemRead item(Box("mean", Bytes().Fill(12)) + DataBox("Album"), Bytes().Text("ZZZZ"));
  EXPECT_TRUE(item.ok);
  EXPECT_TRUE(item.Untouched());
  EXPECT_EQ(item.pos, 20 + 21);
}

TEST(BoxIlst, DataBoxOfSizeZeroStoresNothing) {
  const ItemRead item(SizedBox(0, "data", Bytes().Be32(1).Be32(0).Text("Album")));
  EXPECT_TRUE(item.Untouched());
  EXPECT_EQ(item.pos, 21);
}

TEST(BoxIlst, ItemOfFourBytesCountsNothing) {
  const ItemRead item(Bytes().Be32(21), Bytes().Text("data").Be32(1).Be32(0).Text("Album"));
  EXPECT_TRUE(item.ok);
  EXPECT_TRUE(item.Untouched());
  EXPECT_EQ(item.pos, 4);
}

TEST(BoxIlst, FewerThanTwelveCountedBytesStoreNothing) {
  const Bytes content = Bytes().Be32(1).Be32(0).Text("Album");
  EXPECT_TRUE(ItemRead(SizedBox(11, "data", content)).Untouched());
  EXPECT_EQ(ItemRead(SizedBox(11, "data", content)).pos, 21);
  // An item of 15 bytes counts 11, whatever the box says.
  EXPECT_TRUE(ItemRead(Bytes(DataBox("Album")).Cut(15), Bytes().Fill(9)).Untouched());
  EXPECT_EQ(ItemRead(Bytes(DataBox("Album")).Cut(15), Bytes().Fill(9)).pos, 15);
}

TEST(BoxIlst, TwelveCountedBytesAreAnEmptyText) {
  const ItemRead item(DataBox(""));
  EXPECT_TRUE(HoldsExactly(item.field, L""));
  EXPECT_EQ(item.pos, 16);
  const ItemRead declared(SizedBox(12, "data", Bytes().Be32(1).Be32(0).Text("Album")));
  EXPECT_TRUE(HoldsExactly(declared.field, L""));
  EXPECT_EQ(declared.pos, 21);
}

TEST(BoxIlst, DataSizeBeyondTheItemEndsWithTheItem) {
  const ItemRead item(SizedBox(5000, "data", Bytes().Be32(1).Be32(0).Text("Album")),
                      Bytes().Text("ZZZZ"));
  EXPECT_TRUE(HoldsExactly(item.field, L"Album"));
  EXPECT_EQ(item.pos, 21);
}

TEST(BoxIlst, ItemBelowFourBytesIsComparedUnsignedAndReadAsTheBoxSays) {
  // Length 3 less 4 is 2^32 - 1 unsigned: the size of the box behind decides.
  const Bytes all = DataBox("Album") + Bytes().Fill(20);
  mmBufReader reader(all.data(), all.size());
  wchar_t field[260];
  FillField(field);
  BoxIlst box;
  EXPECT_TRUE(box.Read_0xa9xxx(&reader, 3, field, 1040));
  EXPECT_TRUE(HoldsExactly(field, L"Album"));
  EXPECT_EQ(reader.GetPos(), 3);
}

TEST(BoxIlst, EmptyItemReadsTheBoxBehindItAndStepsBack) {
  const ItemRead item({}, DataBox("Album") + Bytes().Fill(20));
  EXPECT_TRUE(item.ok);
  EXPECT_TRUE(HoldsExactly(item.field, L"Album"));
  EXPECT_EQ(item.pos, 0);
}

TEST(BoxIlst, LongTextIsCutAt259BytesAndTheRestSkipped) {
  for (const std::size_t length : {259u, 260u, 5000u, 65519u}) {
    const Read ilst(DataItem("nam", std::string(length, 'a')) + DataItem("alb", "next"));
    EXPECT_TRUE(HoldsExactly(ilst.context.metadata.name, std::wstring(259, L'a'))) << length;
    EXPECT_TRUE(HoldsExactly(ilst.context.metadata.album, L"next")) << length;
  }
}

TEST(BoxIlst, TextBecomesWideCharacters) {
  const ItemRead item(DataBox("caf\xC3\xA9"));
  std::wstring expected = L"caf?";
  expected[3] = 0xE9;
  EXPECT_TRUE(HoldsExactly(item.field, expected));
}

TEST(BoxIlst, ItemThatStartsWithALengthIsAQuickTimeText) {
  const ItemRead item(TextBody("Hello", 0x15C7) + Bytes().Fill(6), Bytes().Text("ZZZZ"));
  EXPECT_TRUE(HoldsExactly(item.field, L"Hello"));
  EXPECT_EQ(item.pos, 15);
}

TEST(BoxIlst, QuickTimeTextTooShortForItsTextEmptiesTheField) {
  const ItemRead item(Bytes().Be16(5).Byte(0), Bytes().Text("ZZZZ"));
  EXPECT_TRUE(HoldsExactly(item.field, L""));
  EXPECT_EQ(item.pos, 3);
}

TEST(BoxIlst, DataBoxOf64KiBIsReadAsAQuickTimeText) {
  // The upper half of its size, 1, is taken for a text length.
  const ItemRead item(DataBox(std::string(0x10000, 'a')));
  EXPECT_TRUE(HoldsExactly(item.field, L"d"));
  EXPECT_EQ(item.pos, 0x10010);
}

TEST(BoxIlst, KeysOutsideTheTableAreSkippedWhole) {
  const Read ilst(Box("covr", DataBox("\xFF\xD8 image", 13)) + DataItem("too", "encoder") +
                  Box("trkn", DataBox("12345678", 0)) + DataItem("nam", "Hello"));
  EXPECT_TRUE(ilst.ok);
  EXPECT_TRUE(HoldsExactly(ilst.context.metadata.name, L"Hello"));
  EXPECT_EQ(ilst.context.metadata.genre[0], L'x');
}

TEST(BoxIlst, MetaInsideIsAnOtherChild) {
  const Read ilst(FullBox("meta", 0, 0, Box("ilst", DataItem("nam", "no"))) +
                  DataItem("alb", "Album"));
  EXPECT_TRUE(HoldsExactly(ilst.context.metadata.name, L""));
  EXPECT_TRUE(HoldsExactly(ilst.context.metadata.album, L"Album"));
}

TEST(BoxIlst, FailingItemDoesNotStopTheWalk) {
  const Read ilst(SizedBox(8 - 1, "\251nam") + DataItem("alb", "next") + Bytes().Fill(1));
  EXPECT_TRUE(ilst.ok);
  EXPECT_TRUE(HoldsExactly(ilst.context.metadata.album, L"next"));
}

TEST(BoxIlst, ChildOfSizeZeroIsTheRest) {
  const Read ilst(DataItem("alb", "one") + SizedBox(0, "\251nam", DataBox("Hello")));
  EXPECT_TRUE(HoldsExactly(ilst.context.metadata.name, L"Hello"));
}

TEST(BoxIlst, NullReaderOrNegativeSizeFails) {
  mmBufReader reader("\0\0\0\0", 4);
  Mp4Context context;
  wchar_t field[260] = {};
  BoxIlst box;
  EXPECT_FALSE(box.ReadData(nullptr, 8, &context));
  EXPECT_FALSE(box.ReadData(&reader, -1, &context));
  EXPECT_FALSE(box.Read_0xa9xxx(nullptr, 8, field, 1040));
  EXPECT_FALSE(box.Read_0xa9xxx(&reader, -1, field, 1040));
  EXPECT_EQ(reader.pos, 0);
  EXPECT_TRUE(box.ReadData(&reader, 0, &context));
  EXPECT_EQ(reader.pos, 0);
}

TEST(BoxIlst, WithoutContextTheItemsArePassedOver) {
  const Bytes payload = DataItem("nam", "Hello") + DataItem("alb", "Album");
  mmBufReader reader(payload.data(), payload.size());
  BoxIlst box;
  EXPECT_TRUE(box.ReadData(&reader, static_cast<long long>(payload.size()), nullptr));
  EXPECT_EQ(reader.pos, static_cast<int>(payload.size()));
}
