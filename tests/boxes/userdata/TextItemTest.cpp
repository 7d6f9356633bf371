#include <gtest/gtest.h>

#include "boxes/userdata/TextItem.h"
#include "io/FourCC.h"
#include "io/mmBufReader.h"
#include "tests/MetadataFixtures.h"

namespace {

/// `n` bytes read as a text into a field of `bytes` bytes that starts out full of 'x'.
struct TextRead {
  TextRead(const Bytes& text, long long n, int bytes = sizeof(wchar_t[260])) {
    FillField(field);
    mmBufReader reader(text.data(), text.size());
    mp4::ReadText(&reader, n, field, bytes);
    position = reader.GetPos();
  }
  wchar_t field[260];
  long long position;
};

}  // namespace

TEST(TextItem, KnowsSevenKeysAndNoOther) {
  using Metadata = Mp4Context::METADATA;
  EXPECT_EQ(mp4::TextFieldOf(mp4::FourCC("\251ART")), &Metadata::artist);
  EXPECT_EQ(mp4::TextFieldOf(mp4::FourCC("\251aut")), &Metadata::artist);
  EXPECT_EQ(mp4::TextFieldOf(mp4::FourCC("\251nam")), &Metadata::name);
  EXPECT_EQ(mp4::TextFieldOf(mp4::FourCC("\251trk")), &Metadata::track);
  EXPECT_EQ(mp4::TextFieldOf(mp4::FourCC("\251alb")), &Metadata::album);
  EXPECT_EQ(mp4::TextFieldOf(mp4::FourCC("\251day")), &Metadata::day);
  EXPECT_EQ(mp4::TextFieldOf(mp4::FourCC("\251gen")), &Metadata::genre);
  for (const std::uint32_t other :
       {mp4::FourCC("\251too"), mp4::FourCC("aART"), mp4::FourCC("\251art"), 0u}) {
    EXPECT_EQ(mp4::TextFieldOf(other), nullptr) << other;
  }
}

TEST(TextItem, TextsAreThoseOfTheContext) {
  Mp4Context context;
  EXPECT_EQ(mp4::TextIn(&context, &Mp4Context::METADATA::album), context.metadata.album);
  EXPECT_EQ(mp4::TextIn(nullptr, &Mp4Context::METADATA::album), nullptr);
  EXPECT_EQ(mp4::kTextFieldBytes, 1040);
}

TEST(TextItem, TextEndsAtItsFirstZero) {
  const TextRead read(Bytes().Text("ab").Byte(0).Text("cd"), 5);
  EXPECT_TRUE(HoldsExactly(read.field, L"ab"));
  EXPECT_EQ(read.position, 5);
}

TEST(TextItem, TextEndsWhereItIsIllFormed) {
  EXPECT_TRUE(HoldsExactly(TextRead(Bytes().Text("ab\xFF"
                                                 "cd"),
                                    5)
                               .field,
                           L"ab"));
}

TEST(TextItem, At259BytesTheTextEnds) {
  for (const std::size_t n : {258u, 259u, 260u, 300u}) {
    const TextRead read(Bytes().Fill(n, 'a'), static_cast<long long>(n));
    EXPECT_TRUE(HoldsExactly(read.field, std::wstring(std::min<std::size_t>(n, 259), L'a'))) << n;
    EXPECT_EQ(read.position, static_cast<long long>(n));
  }
}

TEST(TextItem, NoMoreIsStoredThanTheFieldHolds) {
  const TextRead read(Bytes().Text("abcdef"), 6, 3 * sizeof(wchar_t));
  EXPECT_EQ(std::wstring(read.field, 4), L"abcx");
  EXPECT_EQ(TextRead(Bytes().Text("abc"), 3, 0).field[0], L'x');
  EXPECT_EQ(TextRead(Bytes().Text("abc"), 3, -4).field[0], L'x');
}

TEST(TextItem, WithoutFieldTheTextIsPassedOver) {
  const Bytes text = Bytes().Fill(300, 'a');
  mmBufReader reader(text.data(), text.size());
  mp4::ReadText(&reader, 280, nullptr, 1040);
  EXPECT_EQ(reader.GetPos(), 280);
}

// The two bytes of the text's length are read by the caller and count.
TEST(TextItem, ItemIsALanguageAndAText) {
  const Bytes item = Bytes().Be16(0x15C7).Text("abcde").Fill(9, 'z');
  struct Case {
    long long length;
    unsigned textLength;
    const wchar_t* text;
  };
  for (const Case& c : {Case{9, 5, L"abcde"}, Case{9, 3, L"abc"}, Case{7, 5, L"abc"},
                        Case{5, 5, L"a"}, Case{4, 5, L""}, Case{0, 5, L""}}) {
    wchar_t field[260];
    FillField(field);
    mmBufReader reader(item.data(), item.size());
    mp4::ReadTextItem(&reader, c.length, c.textLength, field, sizeof field);
    EXPECT_TRUE(HoldsExactly(field, c.text)) << c.length << " " << c.textLength;
    EXPECT_EQ(reader.GetPos(), c.length - 2) << c.length << " " << c.textLength;
  }
}

TEST(TextItem, ItemWithoutTextStoresNothing) {
  const Bytes item = Bytes().Be16(0x15C7).Text("abcde");
  wchar_t field[260];
  FillField(field);
  mmBufReader reader(item.data(), item.size());
  mp4::ReadTextItem(&reader, 7, 0, field, sizeof field);
  EXPECT_EQ(field[0], L'x');
  EXPECT_EQ(reader.GetPos(), 5);
}
