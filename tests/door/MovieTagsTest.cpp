#include <gtest/gtest.h>

#include "door/MovieTags.h"
#include "tests/MovieFixtures.h"
#include "tests/TreeFixtures.h"

namespace {

Bytes Data(std::uint32_t type, const Bytes& value) {
  return Box("data", Bytes().Be32(type).Be32(0) + value);
}
Bytes TextItem(const char* type, const char* text) {
  return Box(type, Data(1, Bytes().Text(text)));
}
Bytes Meta(const Bytes& children) { return FullBox("meta", 0, 0, children); }
Bytes UserData(const Bytes& ilst) { return Box("udta", Meta(Box("ilst", ilst))); }

mp4::MovieInfo TagsOf(const Bytes& moovChildren) {
  fixture::TreeOver over(Box("moov", moovChildren));
  mp4::MovieInfo info;
  mp4::TakeTags(&over.tree, over.At("moov"), &info);
  return info;
}

void ExpectTag(const mp4::TagInfo& tag, const char* type, const char* name, const char* value) {
  EXPECT_EQ(type, tag.type);
  EXPECT_EQ(name, tag.name);
  EXPECT_EQ(value, tag.value);
}

/// A video track that names track 2 as its chapters, and that text track: two samples of 500 units
/// of 1/1000 s at `offset`, `sizes` bytes each.
Bytes MovieWithChapters(const Bytes& samples, const fixture::Words& sizes,
                        std::uint32_t reference = 2) {
  const Bytes tref = Box("tref", Box("chap", Bytes().Be32(reference)));
  const Bytes first =
      Box("trak", fixture::Tkhd(1) + tref + fixture::Mdia(fixture::Track{.offsets = {40}}));
  const fixture::Track text{.id = 2,
                            .format = "text",
                            .handler = "text",
                            .times = {{static_cast<std::uint32_t>(sizes.size()), 500}},
                            .chunks = {{1, static_cast<std::uint32_t>(sizes.size())}},
                            .sizes = sizes,
                            .offsets = {8}};
  return Box("mdat", samples) + Box("moov", fixture::Mvhd() + first + fixture::Trak(text));
}

mp4::MovieInfo ChaptersOf(const Bytes& file, mp4::MovieInfo info = {}) {
  fixture::TreeOver over(file);
  mp4::MemorySource source(file.data(), file.size());
  mp4::Movie movie(&source);
  mp4::TakeChapterTrack(&over.tree, over.At("moov"), &source, &movie, &info);
  return info;
}

}  // namespace

TEST(MovieTags, ItemsHaveTypeNameAndValue) {
  const mp4::MovieInfo info = TagsOf(UserData(TextItem("\251nam", "Song") + TextItem("xxxx", "?")));
  ASSERT_EQ(2U, info.tags.size());
  ExpectTag(info.tags[0], "\\xA9nam", "Title", "Song");
  ExpectTag(info.tags[1], "xxxx", "", "?");
}

TEST(MovieTags, TheMoviesOwnMetadataComesFirst) {
  const mp4::MovieInfo info = TagsOf(UserData(TextItem("\251nam", "second")) +
                                     Meta(Box("ilst", TextItem("\251nam", "first"))));
  ASSERT_EQ(2U, info.tags.size());
  EXPECT_EQ("first", info.tags[0].value);
  EXPECT_EQ("second", info.tags[1].value);
}

TEST(MovieTags, TrackAndDiscNumbersArePairs) {
  const auto value = [](const char* type, const Bytes& bytes) {
    return TagsOf(UserData(Box(type, Data(0, bytes)))).tags.at(0).value;
  };
  EXPECT_EQ("3 of 9", value("trkn", Bytes().Be16(0).Be16(3).Be16(9).Be16(0)));
  EXPECT_EQ("1 of 2", value("disk", Bytes().Be16(0).Be16(1).Be16(2)));
  EXPECT_EQ("3", value("trkn", Bytes().Be16(0).Be16(3).Be16(0)));
  EXPECT_EQ("00000003", value("trkn", Bytes().Be16(0).Be16(3))) << "too short for a pair";
}

TEST(MovieTags, ACoverIsToldByTypeAndSize) {
  const mp4::MovieInfo info = TagsOf(UserData(Box("covr", Data(13, Bytes().Fill(7)))));
  EXPECT_TRUE(info.tags.empty());
  EXPECT_EQ("JPEG", info.coverType);
  EXPECT_EQ(7U, info.coverSize);
  EXPECT_EQ(0U, TagsOf(UserData(Box("covr", Box("data", Bytes().Be32(13))))).coverSize);
}

TEST(MovieTags, KeyedItemsAreNamedByTheirKey) {
  const Bytes keys =
      FullBox("keys", 0, 0, Bytes().Be32(2).Be32(12).Text("mdtaone!").Be32(14).Text("mdtasecond"));
  const Bytes items = Box({"\0\0\0\2", 4}, Data(1, Bytes().Text("b"))) +
                      Box({"\0\0\0\1", 4}, Data(1, Bytes().Text("a"))) +
                      Box({"\0\0\0\3", 4}, Data(1, Bytes().Text("c")));
  const mp4::MovieInfo info = TagsOf(Meta(keys + Box("ilst", items)));
  ASSERT_EQ(3U, info.tags.size());
  EXPECT_EQ("second", info.tags[0].name);
  EXPECT_EQ("one!", info.tags[1].name);
  EXPECT_EQ("", info.tags[2].name) << "there is no third key";
}

TEST(MovieTags, FreeFormItemsHaveANameOfTheirOwn) {
  const Bytes item =
      Box("----", FullBox("mean", 0, 0, Bytes().Text("com.example")) +
                      FullBox("name", 0, 0, Bytes().Text("mood")) + Data(1, Bytes().Text("blue")));
  ExpectTag(TagsOf(UserData(item)).tags.at(0), "----", "mood", "blue");
}

TEST(MovieTags, AnItemWithoutDataIsNone) {
  EXPECT_TRUE(TagsOf(UserData(Box("\251nam") + Box("free"))).tags.empty());
}

TEST(MovieTags, QuickTimesTextsAreTags) {
  const Bytes text = Box("\251cmt", Bytes().Be16(4).Be16(0).Text("nice"));
  const mp4::MovieInfo info = TagsOf(Box("udta", text + Box("name", Bytes().Text("no"))));
  ASSERT_EQ(1U, info.tags.size());
  ExpectTag(info.tags[0],
            "\\xA9"
            "cmt",
            "Comment", "nice");
}

// Version 1 has four bytes more in front of the count.
TEST(MovieTags, AChapterListCountsIn100Nanoseconds) {
  const Bytes chapters =
      Bytes().Byte(2).Be64(0).Byte(1).Text("A").Be64(15000000).Byte(2).Text("BC");
  for (const Bytes& list :
       {FullBox("chpl", 0, 0, chapters), FullBox("chpl", 1, 0, Bytes().Be32(0) + chapters)}) {
    const mp4::MovieInfo info = TagsOf(Box("udta", list));
    ASSERT_EQ(2U, info.chapters.size());
    EXPECT_EQ("A", info.chapters[0].title);
    EXPECT_EQ(1.5, info.chapters[1].seconds);
    EXPECT_EQ("BC", info.chapters[1].title);
  }
}

TEST(MovieTags, OfAChapterListThatIsCutTheWholeChaptersStay) {
  const Bytes cut = Bytes().Byte(3).Be64(0).Byte(1).Text("A").Be64(1).Byte(9).Text("BC");
  EXPECT_EQ(1U, TagsOf(Box("udta", FullBox("chpl", 0, 0, cut))).chapters.size());
}

TEST(MovieTags, OfTwoChapterListsTheFirstCounts) {
  const auto list = [](const char* title) {
    return FullBox("chpl", 0, 0, Bytes().Byte(1).Be64(0).Byte(1).Text(title));
  };
  const mp4::MovieInfo info = TagsOf(Box("udta", list("A") + list("B")));
  ASSERT_EQ(1U, info.chapters.size());
  EXPECT_EQ("A", info.chapters[0].title);
}

TEST(MovieTags, ThereAreFiveHundredAtMost) {
  Bytes items;
  for (int i = 0; i < 501; ++i) items.Append(TextItem("\251nam", "x"));
  EXPECT_EQ(500U, TagsOf(UserData(items)).tags.size());
}

// Sample two has a box behind its text, and claims less than it holds.
TEST(MovieTags, AChapterTrackHasItsTitlesInItsSamples) {
  const Bytes samples = Bytes().Be16(3).Text("One").Be16(3).Text("Two").Append(Box("encd"));
  const mp4::MovieInfo info = ChaptersOf(MovieWithChapters(samples, {5, 13}));
  ASSERT_EQ(2U, info.chapters.size());
  EXPECT_EQ("One", info.chapters[0].title);
  EXPECT_EQ(0.0, info.chapters[0].seconds);
  EXPECT_EQ("Two", info.chapters[1].title);
  EXPECT_EQ(0.5, info.chapters[1].seconds);
}

TEST(MovieTags, ATitleEndsWithItsSample) {
  const mp4::MovieInfo info =
      ChaptersOf(MovieWithChapters(Bytes().Be16(99).Text("Cut").Text("more"), {5}));
  ASSERT_EQ(1U, info.chapters.size());
  EXPECT_EQ("Cut", info.chapters[0].title);
}

TEST(MovieTags, AChapterTrackCountsWhenThereIsNoOther) {
  const Bytes file = MovieWithChapters(Bytes().Be16(3).Text("One"), {5});
  mp4::MovieInfo listed;
  listed.chapters.push_back({7, "listed"});
  EXPECT_EQ(1U, ChaptersOf(file, listed).chapters.size());
  EXPECT_EQ("listed", ChaptersOf(file, listed).chapters[0].title);
  EXPECT_TRUE(ChaptersOf(MovieWithChapters(Bytes().Fill(5), {5}, 9)).chapters.empty())
      << "there is no track 9";
}
