#include <gtest/gtest.h>

#include <string>

#include "boxes/userdata/BoxUDTA.h"
#include "io/Mp4StreamReader.h"
#include "io/mmBufReader.h"
#include "tests/Fixtures.h"
#include "tests/MetadataFixtures.h"

namespace {

struct Read {
  explicit Read(const Bytes& payload) : reader(payload.data(), payload.size()) {
    ok = box.ReadData(&reader, static_cast<long long>(payload.size()), &context);
  }
  mmBufReader reader;
  BoxUDTA box;
  Mp4Context context;
  bool ok = false;
};

std::string Repeated(std::size_t n, char c) { return std::string(n, c); }

}  // namespace

TEST(BoxUDTA, NameReadsHelloFollowedByZeros) {
  const Read udta(TextItem("nam", "Hello"));
  EXPECT_TRUE(udta.ok);
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, L"Hello"));
}

TEST(BoxUDTA, EachKeyFillsItsField) {
  const Read udta(TextItem("ART", "a") + TextItem("nam", "b") + TextItem("trk", "c") +
                  TextItem("alb", "d") + TextItem("day", "e") + TextItem("gen", "f"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.artist, L"a"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, L"b"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.track, L"c"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.album, L"d"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.day, L"e"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.genre, L"f"));
  for (const unsigned char byte : udta.context.metadata.reserved) ASSERT_EQ(byte, 0);
}

TEST(BoxUDTA, AuthorSharesTheArtistFieldAndTheLaterTextWins) {
  const Read both(TextItem("ART", "First artist") + TextItem("aut", "Second"));
  EXPECT_TRUE(HoldsExactly(both.context.metadata.artist, L"Second"));
  const Read swapped(TextItem("aut", "Second") + TextItem("ART", "First artist"));
  EXPECT_TRUE(HoldsExactly(swapped.context.metadata.artist, L"First artist"));
}

TEST(BoxUDTA, KeysAreCaseSensitive) {
  const Read udta(TextItem("art", "no") + TextItem("NAM", "no"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.artist, L""));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, L""));
}

TEST(BoxUDTA, LanguageCodeIsDiscarded) {
  const Read udta(TextItem("nam", "Hello", 0x15C7));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, L"Hello"));
}

TEST(BoxUDTA, EmptyTextStoresNothing) {
  const Bytes empty = Box("\251nam", Bytes().Be16(0).Be16(0));
  const Read udta(TextItem("nam", "kept") + empty + TextItem("alb", "next"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, L"kept"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.album, L"next"));
}

TEST(BoxUDTA, BytesBehindTheTextAreSkipped) {
  const Bytes longer = Box("\251nam", TextBody("one") + TextBody("two in another language"));
  const Read udta(longer + TextItem("alb", "next"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, L"one"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.album, L"next"));
}

TEST(BoxUDTA, TextLengthBeyondTheItemEndsWithTheItem) {
  const Bytes item = Box("\251nam", Bytes().Be16(500).Be16(0).Text("Hello"));
  const Read udta(item + TextItem("alb", "next"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, L"Hello"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.album, L"next"));
}

TEST(BoxUDTA, ItemTooShortForATextEmptiesTheFieldAndEndsAtItsEnd) {
  for (std::size_t length = 2; length <= 4; ++length) {
    const Bytes item = Box("\251nam", Bytes().Be16(5).Be16(0).Cut(length));
    const Read udta(TextItem("nam", "earlier") + item + TextItem("alb", "next"));
    EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, L"")) << length;
    EXPECT_TRUE(HoldsExactly(udta.context.metadata.album, L"next")) << length;
  }
}

TEST(BoxUDTA, TextOf259BytesIsStoredWhole) {
  const Read udta(TextItem("nam", Repeated(259, 'a')) + TextItem("alb", "next"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, std::wstring(259, L'a')));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.album, L"next"));
}

TEST(BoxUDTA, TextBeyondTheBufferIsCutAt259BytesAndTheRestSkipped) {
  for (const std::size_t length : {260u, 261u, 4000u, 65535u}) {
    const Read udta(TextItem("nam", Repeated(length, 'a')) + TextItem("alb", "next"));
    EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, std::wstring(259, L'a'))) << length;
    EXPECT_TRUE(HoldsExactly(udta.context.metadata.album, L"next")) << length;
  }
}

TEST(BoxUDTA, SequenceCutByTheBufferIsDropped) {
  const Read udta(TextItem("nam", Repeated(258, 'a') + "\xC3\xA9"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, std::wstring(258, L'a')));
}

TEST(BoxUDTA, TextBecomesWideCharacters) {
  const Read udta(TextItem("nam", "\xC3\x89tude \xE2\x82\xAC \xF0\x9F\x8E\xB5"));
  std::wstring expected = L"?tude ? ?";
  expected[0] = 0xC9;
  expected[6] = 0x20AC;
  expected[8] = 0x1F3B5;
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, expected));
}

TEST(BoxUDTA, IllFormedTextKeepsWhatCameBefore) {
  const Read udta(TextItem("nam", Repeated(20, 'x')) + TextItem("nam",
                                                                "ab\xFF"
                                                                "cd"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, L"ab"));
}

TEST(BoxUDTA, TruncatedSequenceAtTheEndKeepsWhatCameBefore) {
  const Read udta(TextItem("nam", "ab\xE2\x82"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, L"ab"));
}

TEST(BoxUDTA, EncodedSurrogateEndsTheText) {
  const Read udta(TextItem("nam",
                           "ab\xED\xA0\x80"
                           "cd"));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, L"ab"));
}

TEST(BoxUDTA, ZeroByteEndsTheText) {
  const Read udta(TextItem("nam", std::string_view("ab\0cd", 5)));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, L"ab"));
}

TEST(BoxUDTA, OtherTypesAreSkipped) {
  const Read udta(Box("\251xyz", TextBody("+48.8577/")) + Box("free", Bytes().Fill(9)) +
                  TextItem("nam", "Hello"));
  EXPECT_TRUE(udta.ok);
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, L"Hello"));
}

TEST(BoxUDTA, ChildOfSizeZeroIsTheRest) {
  const Bytes payload =
      TextItem("alb", "first") + SizedBox(0, "\251nam", TextBody("Hello") + Bytes().Fill(30, 'z'));
  const Read udta(payload);
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, L"Hello"));
  EXPECT_EQ(udta.reader.pos, static_cast<int>(payload.size()));
}

TEST(BoxUDTA, MetaBoxIsCreatedOnFirstSightAndReused) {
  const Bytes first = FullBox("meta", 0, 0, Box("ilst", DataItem("nam", "one")));
  const Bytes second = FullBox("meta", 0, 0, Box("ilst", DataItem("alb", "two")));
  EXPECT_EQ(Read(TextItem("nam", "a")).box.metaBox, nullptr);
  const Bytes payload = first + second;
  mmBufReader reader(payload.data(), payload.size());
  Mp4Context context;
  BoxUDTA box;
  ASSERT_TRUE(box.ReadData(&reader, static_cast<long long>(first.size()), &context));
  const BoxMeta* created = box.metaBox.get();
  ASSERT_NE(created, nullptr);
  ASSERT_TRUE(box.ReadData(&reader, static_cast<long long>(second.size()), &context));
  EXPECT_EQ(box.metaBox.get(), created);
  EXPECT_TRUE(HoldsExactly(context.metadata.name, L"one"));
  EXPECT_TRUE(HoldsExactly(context.metadata.album, L"two"));
}

TEST(BoxUDTA, LaterSourceOverwritesTheSameField) {
  const Bytes meta = FullBox("meta", 0, 0, Box("ilst", DataItem("nam", "from the list")));
  EXPECT_TRUE(
      HoldsExactly(Read(TextItem("nam", "text") + meta).context.metadata.name, L"from the list"));
  EXPECT_TRUE(HoldsExactly(Read(meta + TextItem("nam", "text")).context.metadata.name, L"text"));
}

TEST(BoxUDTA, FailingItemsDoNotStopTheWalk) {
  // Both have negative payloads and fail without moving; the header counts with its wrong size.
  const Bytes payload =
      SizedBox(7, "meta") + SizedBox(7, "\251nam") + TextItem("alb", "next") + Bytes().Fill(2);
  const Read udta(payload);
  EXPECT_TRUE(udta.ok);
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.name, L""));
  EXPECT_TRUE(HoldsExactly(udta.context.metadata.album, L"next"));
}

TEST(BoxUDTA, NullReaderOrNegativeSizeFails) {
  mmBufReader reader("\0\0\0\0", 4);
  Mp4Context context;
  BoxUDTA box;
  EXPECT_FALSE(box.ReadData(nullptr, 8, &context));
  EXPECT_FALSE(box.ReadData(&reader, -1, &context));
  EXPECT_EQ(reader.pos, 0);
}

TEST(BoxUDTA, SizeZeroSucceedsWithoutMoving) {
  mmBufReader reader("\0\0\0\0", 4);
  Mp4Context context;
  BoxUDTA box;
  EXPECT_TRUE(box.ReadData(&reader, 0, &context));
  EXPECT_EQ(reader.pos, 0);
}

TEST(BoxUDTA, ReaderEndsAtTheBoxEvenWhenAChildOverruns) {
  const Bytes payload = SizedBox(100, "free", Bytes().Fill(10)) + Bytes().Fill(200);
  mmBufReader reader(payload.data(), payload.size());
  Mp4Context context;
  BoxUDTA box;
  EXPECT_TRUE(box.ReadData(&reader, 18, &context));
  EXPECT_EQ(reader.pos, 18);
}

TEST(BoxUDTA, WithoutContextTheItemsArePassedOver) {
  const Bytes payload = TextItem("nam", "Hello") +
                        FullBox("meta", 0, 0, Box("ilst", DataItem("alb", "Album"))) +
                        TextItem("gen", "x");
  mmBufReader reader(payload.data(), payload.size());
  BoxUDTA box;
  EXPECT_TRUE(box.ReadData(&reader, static_cast<long long>(payload.size()), nullptr));
  EXPECT_EQ(reader.pos, static_cast<int>(payload.size()));
}

TEST(BoxUDTA, TextItemReaderStoresOnlyTheBytesAskedFor) {
  const Bytes body = TextBody("Hello");
  mmBufReader reader(body.data(), body.size());
  wchar_t field[260];
  FillField(field);
  BoxUDTA box;
  EXPECT_TRUE(box.Read_0xa9xxx(&reader, static_cast<long long>(body.size()), field, 12));
  EXPECT_EQ(std::wstring(field, 5), L"Helxx");
}

TEST(BoxUDTA, TextItemReaderFailsForNullReaderAndNegativeLength) {
  mmBufReader reader("\0\0\0\0", 4);
  wchar_t field[260];
  FillField(field);
  BoxUDTA box;
  EXPECT_FALSE(box.Read_0xa9xxx(nullptr, 4, field, 1040));
  EXPECT_FALSE(box.Read_0xa9xxx(&reader, -1, field, 1040));
  EXPECT_EQ(reader.pos, 0);
  EXPECT_EQ(field[0], L'x');
}

TEST(BoxUDTA, TextItemReaderWithoutAFieldEndsAtTheItem) {
  const Bytes body = TextBody("Hello") + Bytes().Fill(3);
  mmBufReader reader(body.data(), body.size());
  BoxUDTA box;
  EXPECT_TRUE(box.Read_0xa9xxx(&reader, static_cast<long long>(body.size()), nullptr, 1040));
  EXPECT_EQ(reader.pos, static_cast<int>(body.size()));
}

TEST(BoxUDTA, TextItemReaderStoresAtMostTheConvertedCharacters) {
  const Bytes body = TextBody("Hi");
  mmBufReader reader(body.data(), body.size());
  std::wstring field(2060, L'x');
  BoxUDTA box;
  EXPECT_TRUE(box.Read_0xa9xxx(&reader, static_cast<long long>(body.size()), field.data(), 8240));
  EXPECT_EQ(field, L"Hi" + std::wstring(2046, L'\0') + std::wstring(12, L'x'));
}

TEST(BoxUDTA, LengthTooShortForItsOwnLengthFieldStepsBack) {
  mmBufReader reader("\0\0\0\0", 4);
  wchar_t field[260] = {};
  BoxUDTA box;
  EXPECT_TRUE(box.Read_0xa9xxx(&reader, 0, field, 1040));
  EXPECT_EQ(reader.pos, 0);
}

TEST(BoxUDTA, RestOfALongTextIsSkippedPastTheEndOfAFile) {
  // 300 bytes of text announced, 280 there: the buffer takes 259, the rest is a seek.
  const TempFile file(Bytes().Be16(300).Be16(0).Fill(280, 'a'));
  Mp4StreamReader reader;
  ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
  wchar_t field[260] = {};
  BoxUDTA box;
  EXPECT_TRUE(box.Read_0xa9xxx(&reader, 304, field, 1040));
  EXPECT_TRUE(HoldsExactly(field, std::wstring(259, L'a')));
  EXPECT_EQ(reader.GetPos(), 304);
}

TEST(BoxUDTA, TextCutByTheEndOfAFileIsStoredAsFarAsItGoes) {
  const TempFile file(Bytes().Be16(10).Be16(0).Text("Hell"));
  Mp4StreamReader reader;
  ASSERT_TRUE(reader.SetFilePath(file.wide().c_str()));
  wchar_t field[260] = {};
  BoxUDTA box;
  EXPECT_TRUE(box.Read_0xa9xxx(&reader, 14, field, 1040));
  EXPECT_TRUE(HoldsExactly(field, L"Hell"));
  // Reading stops at the end, and the counted bytes leave nothing to skip.
  EXPECT_EQ(reader.GetPos(), 8);
}
