#include <gtest/gtest.h>
#include <zlib.h>

#include "io/FourCC.h"
#include "io/MemorySource.h"
#include "iso/BoxTree.h"
#include "tests/Bytes.h"

namespace {

using mp4::BoxFault;
using mp4::BoxId;
using mp4::BoxTree;
using mp4::FourCC;
using mp4::kNoBox;
using mp4::kRootBox;

/// A tree over bytes that live as long as it.
class TreeOf {
 public:
  explicit TreeOf(Bytes bytes) : TreeOf(bytes, mp4::TreeLimits::For(bytes.size())) {}
  TreeOf(Bytes bytes, const mp4::TreeLimits& limits)
      : bytes_(std::move(bytes)),
        memory_(bytes_.data(), bytes_.size()),
        cached_(&memory_),
        tree(&cached_, limits) {}

  /// All boxes, depth first, as paths.
  std::vector<std::string> Paths() {
    std::vector<std::string> paths;
    std::vector<BoxId> open{tree.FirstChild(kRootBox)};
    while (!open.empty()) {
      const BoxId id = open.back();
      open.pop_back();
      if (id == kNoBox) continue;
      paths.push_back(tree.Path(id));
      open.push_back(tree.Next(id));
      open.push_back(tree.FirstChild(id));
    }
    return paths;
  }
  std::vector<BoxFault> Faults() {
    Paths();
    std::vector<BoxFault> faults;
    for (const auto& problem : tree.Problems()) faults.push_back(problem.fault);
    return faults;
  }

 private:
  Bytes bytes_;
  mp4::MemorySource memory_;
  mp4::CachedSource cached_;

 public:
  BoxTree tree;
};

using Paths = std::vector<std::string>;
using Faults = std::vector<BoxFault>;

Bytes Compressed(const Bytes& plain) {
  std::vector<unsigned char> packed(compressBound(plain.size()));
  uLongf n = packed.size();
  EXPECT_EQ(compress(packed.data(), &n, plain.data(), plain.size()), Z_OK);
  Bytes bytes;
  for (uLongf i = 0; i < n; ++i) bytes.Byte(packed[i]);
  return bytes;
}

Bytes Handler(std::string_view type) {
  return FullBox("hdlr", 0, 0, Bytes().Be32(0).Text(type).Fill(13));
}

/// A movie of one track with this handler and these sample entries.
Bytes Movie(std::string_view handler, const Bytes& entries, unsigned count = 1,
            unsigned version = 0) {
  const Bytes stsd = FullBox("stsd", version, 0, Bytes().Be32(count) + entries);
  return Box("moov", Box("trak", Box("mdia", Handler(handler) + Box("minf", Box("stbl", stsd)))));
}

constexpr char kEntries[] = "moov/trak[1]/mdia/minf/stbl/stsd/";

}  // namespace

TEST(BoxTree, WalksSiblingsAndChildren) {
  TreeOf file(Box("ftyp", Bytes().Text("isom").Be32(0)) +
              Box("moov", Box("mvhd") + Box("trak", Box("tkhd")) + Box("trak")) + Box("free"));
  EXPECT_EQ(file.Paths(), (Paths{"ftyp", "moov", "moov/mvhd", "moov/trak[1]", "moov/trak[1]/tkhd",
                                 "moov/trak[2]", "free"}));
  EXPECT_TRUE(file.tree.Problems().empty());
}

TEST(BoxTree, HeadersSayWhereABoxLies) {
  TreeOf file(Box("free") + Box("mdat", Bytes().Fill(5)));
  const BoxId id = file.tree.Child(kRootBox, FourCC("mdat"));
  const mp4::Box box = file.tree.At(id);
  EXPECT_EQ(box.offset, 8u);
  EXPECT_EQ(box.headerSize, 8u);
  EXPECT_EQ(box.size, 13u);
  EXPECT_EQ(box.end, 21u);
  EXPECT_EQ(box.PayloadSize(), 5u);
  EXPECT_EQ(box.parent, kRootBox);
  EXPECT_FALSE(box.IsCut());
}

TEST(BoxTree, SizesOf64Bits) {
  TreeOf file(Bytes().Be32(1).Text("mdat").Be64(20).Fill(4) + Box("free"));
  EXPECT_EQ(file.Paths(), (Paths{"mdat", "free"}));
  EXPECT_EQ(file.tree.At(1).headerSize, 16);
  EXPECT_EQ(file.tree.At(1).size, 20u);
}

TEST(BoxTree, A64BitSizeBelowItsHeaderHidesTheRest) {
  TreeOf file(Bytes().Be32(1).Text("mdat").Be64(15).Fill(4) + Box("free"));
  EXPECT_EQ(file.Faults(), Faults{BoxFault::kSmallerThanHeader});
  EXPECT_EQ(file.tree.Problems()[0].offset, 0u);
  EXPECT_EQ(file.tree.Problems()[0].end, 28u);
  TreeOf still(Bytes().Be32(1).Text("mdat").Be64(0).Fill(4));
  EXPECT_EQ(still.Faults(), Faults{BoxFault::kStandsStill});
  TreeOf least(Bytes().Be32(1).Text("mdat").Be64(16) + Box("free"));
  EXPECT_EQ(least.Paths(), (Paths{"mdat", "free"}));
}

TEST(BoxTree, ALargeHeaderThatIsCutHidesTheRest) {
  TreeOf file(Bytes().Be32(1).Text("mdat").Be32(0).Be16(0).Byte(0));
  EXPECT_EQ(file.Faults(), Faults{BoxFault::kSmallerThanHeader});
}

TEST(BoxTree, ASizeOfZeroGoesToTheEndOfTheParent) {
  TreeOf file(Box("moov", SizedBox(0, "trak", Box("tkhd"))) + SizedBox(0, "mdat", Bytes().Fill(9)));
  EXPECT_EQ(file.Paths(), (Paths{"moov", "moov/trak[1]", "moov/trak[1]/tkhd", "mdat"}));
  EXPECT_EQ(file.tree.At(file.tree.Child(kRootBox, FourCC("mdat"))).size, 17u);
  // Only the last box of a file may have it: further in, it may cover siblings.
  ASSERT_EQ(file.Faults(), Faults{BoxFault::kSizeZeroInside});
  EXPECT_EQ(file.tree.Problems()[0].offset, 8u);
}

TEST(BoxTree, SizesBelowTheHeaderHideWhatFollowsInTheirParentAlone) {
  for (std::uint32_t size = 2; size < 8; ++size) {
    TreeOf file(Box("moov", SizedBox(size, "mvhd") + Box("trak")) + Box("free"));
    EXPECT_EQ(file.Paths(), (Paths{"moov", "free"})) << size;
    EXPECT_EQ(file.Faults(), Faults{BoxFault::kSmallerThanHeader});
    EXPECT_EQ(file.tree.Problems()[0].offset, 8u);
    EXPECT_EQ(file.tree.Problems()[0].end, 24u);
  }
}

TEST(BoxTree, AnOverrunningChildEndsWithItsParent) {
  TreeOf file(Box("moov", Box("mvhd") + SizedBox(9, "trak")) + Box("free"));
  EXPECT_EQ(file.Paths(), (Paths{"moov", "moov/mvhd", "moov/trak[1]", "free"}));
  ASSERT_EQ(file.Faults(), Faults{BoxFault::kOverrunsParent});
  EXPECT_EQ(file.tree.Path(file.tree.Problems()[0].box), "moov/trak[1]");
  TreeOf fits(Box("moov", Box("mvhd") + SizedBox(8, "trak")) + Box("free"));
  EXPECT_TRUE(fits.Faults().empty());
}

TEST(BoxTree, ABoxCutByTheEndKeepsItsDeclaredSize) {
  TreeOf file(SizedBox(100, "moov", Box("mvhd")));
  EXPECT_EQ(file.Paths(), (Paths{"moov", "moov/mvhd"}));
  ASSERT_EQ(file.Faults(), Faults{BoxFault::kCutByEnd});
  EXPECT_EQ(file.tree.At(1).size, 100u);
  EXPECT_EQ(file.tree.At(1).end, 16u);
  EXPECT_TRUE(file.tree.At(1).IsCut());
}

TEST(BoxTree, ZerosBehindTheLastChildAreNoProblem) {
  for (std::size_t zeros : {1u, 4u, 7u, 8u, 12u, 100u}) {
    TreeOf file(Box("moov", Box("udta", Box("name") + Bytes().Fill(zeros))));
    EXPECT_EQ(file.Paths(), (Paths{"moov", "moov/udta", "moov/udta/name"})) << zeros;
    EXPECT_TRUE(file.tree.Problems().empty());
  }
}

TEST(BoxTree, OtherBytesBehindTheLastChildAre) {
  TreeOf few(Box("moov", Box("mvhd") + Bytes({0, 0, 1})));
  EXPECT_EQ(few.Faults(), Faults{BoxFault::kRestUnreadable});
  EXPECT_EQ(few.tree.Problems()[0].offset, 16u);
  EXPECT_EQ(few.tree.Problems()[0].end, 19u);
}

TEST(BoxTree, UserTypesBelongToTheHeader) {
  const Bytes uuid = Box("uuid", Bytes().Fill(16, 0xAB).Byte(7));
  TreeOf file(uuid);
  const BoxId id = file.tree.FirstChild(kRootBox);
  EXPECT_EQ(file.tree.At(id).headerSize, 24);
  EXPECT_EQ(file.tree.At(id).PayloadSize(), 1u);
  ASSERT_NE(file.tree.UserType(id), nullptr);
  EXPECT_EQ(file.tree.UserType(id)[15], 0xAB);
  TreeOf shorter(Box("uuid", Bytes().Fill(15, 0xAB)));
  EXPECT_TRUE(shorter.Faults().empty());
  EXPECT_EQ(shorter.tree.At(shorter.tree.FirstChild(kRootBox)).headerSize, 8);
  EXPECT_EQ(shorter.tree.UserType(shorter.tree.FirstChild(kRootBox)), nullptr);
}

TEST(BoxTree, LimitsGrowWithTheSource) {
  const auto few = mp4::TreeLimits::For(0).boxes;
  EXPECT_EQ(mp4::TreeLimits::For(1600).boxes, few + 100);
  EXPECT_GT(mp4::TreeLimits::For(UINT64_MAX).boxes, few);
}

TEST(BoxTree, MetaWithAndWithoutVersion) {
  const Bytes children = Handler("mdir") + Box("ilst", Box("\xA9nam", Box("data")));
  for (const Bytes& meta : {FullBox("meta", 0, 0, children), Box("meta", children)}) {
    TreeOf file(meta);
    EXPECT_EQ(file.Paths(), (Paths{"meta", "meta/hdlr", "meta/ilst", "meta/ilst/\\xA9nam",
                                   "meta/ilst/\\xA9nam/data"}));
    EXPECT_TRUE(file.tree.Problems().empty());
  }
}

TEST(BoxTree, CountsAreHeldAgainstWhatIsThere) {
  const Bytes sinf = Box("sinf", Box("frma", Bytes().Text("mp4a")));
  const Bytes two = sinf + sinf;
  EXPECT_TRUE(TreeOf(FullBox("ipro", 0, 0, Bytes().Be16(2) + two)).Faults().empty());
  EXPECT_EQ(TreeOf(FullBox("ipro", 0, 0, Bytes().Be16(3) + two)).Faults(),
            Faults{BoxFault::kFewerThanCounted});
  EXPECT_EQ(TreeOf(FullBox("ipro", 0, 0, Bytes().Be16(1) + two)).Faults(),
            Faults{BoxFault::kMoreThanCounted});
  // What lies behind the count is walked all the same.
  EXPECT_EQ(
      TreeOf(FullBox("ipro", 0, 0, Bytes().Be16(1) + two)).Paths(),
      (Paths{"ipro", "ipro/sinf[1]", "ipro/sinf[1]/frma", "ipro/sinf[2]", "ipro/sinf[2]/frma"}));
}

TEST(BoxTree, TheItemCountHas16BitsInVersion0And32Later) {
  const Bytes infe = FullBox("infe", 2, 0, Bytes().Be16(1).Be16(0).Text("hvc1").Byte(0));
  EXPECT_TRUE(TreeOf(FullBox("iinf", 0, 0, Bytes().Be16(1) + infe)).Faults().empty());
  EXPECT_TRUE(TreeOf(FullBox("iinf", 1, 0, Bytes().Be32(1) + infe)).Faults().empty());
  EXPECT_FALSE(TreeOf(FullBox("iinf", 0, 0, Bytes().Be32(1) + infe)).Faults().empty());
}

TEST(BoxTree, AContainerShorterThanItsFieldsHasNoChildren) {
  EXPECT_EQ(TreeOf(Box("stsd", Bytes().Fill(7))).Faults(), Faults{BoxFault::kFieldsCut});
  EXPECT_EQ(TreeOf(FullBox("iref", 0, 0)).Faults(), Faults{});
  EXPECT_EQ(TreeOf(Box("iref", Bytes().Fill(3))).Faults(), Faults{BoxFault::kFieldsCut});
}

TEST(BoxTree, EntriesBeginTheirBoxesByHandler) {
  const Bytes esds = Box("esds", Bytes().Fill(4));
  struct Case {
    const char* handler;
    const char* format;
    std::size_t fixed;
  };
  for (const Case& c :
       {Case{"vide", "zzzz", 78}, Case{"auxv", "zzzz", 78}, Case{"pict", "zzzz", 78},
        Case{"soun", "zzzz", 28}, Case{"volv", "zzzz", 40}, Case{"meta", "zzzz", 8},
        Case{"meta", "encv", 78}, Case{"meta", "enca", 28}, Case{"text", "tx3g", 38},
        Case{"hint", "rtp ", 16}, Case{"tmcd", "tmcd", 26}}) {
    TreeOf file(Movie(c.handler, Box(c.format, Bytes().Fill(c.fixed) + esds)));
    EXPECT_EQ(file.Paths().back(), std::string(kEntries) + c.format + "[1]/esds") << c.handler;
    EXPECT_TRUE(file.tree.Problems().empty()) << c.handler << c.format;
  }
}

TEST(BoxTree, SoundVersionsHaveLongerFields) {
  const Bytes wave = Box("wave", Box("frma", Bytes().Text("mp4a")) + Box("esds"));
  const auto sound = [&](unsigned version, std::size_t fixed) {
    return Box("mp4a", Bytes().Fill(8).Be16(version).Fill(fixed - 10) + wave);
  };
  const Paths::value_type last = std::string(kEntries) + "mp4a[1]/wave/esds";
  EXPECT_EQ(TreeOf(Movie("soun", sound(0, 28))).Paths().back(), last);
  EXPECT_EQ(TreeOf(Movie("soun", sound(1, 44))).Paths().back(), last);
  EXPECT_EQ(TreeOf(Movie("soun", sound(2, 64))).Paths().back(), last);
  // MPEG's own version 1, in a sample description of version 1, is no longer than 0.
  EXPECT_EQ(TreeOf(Movie("soun", sound(1, 28), 1, 1)).Paths().back(), last);
  // What claims version 1 without its fields is found all the same.
  EXPECT_EQ(TreeOf(Movie("soun", sound(1, 28))).Paths().back(), last);
}

TEST(BoxTree, TextEntriesHaveStrings) {
  const Bytes btrt = Box("btrt", Bytes().Fill(12));
  const Bytes stpp = Bytes().Fill(8).Text("ns").Byte(0).Byte(0).Byte(0);
  EXPECT_EQ(TreeOf(Movie("subt", Box("stpp", stpp + btrt))).Paths().back(),
            std::string(kEntries) + "stpp[1]/btrt");
  const Bytes mett = Bytes().Fill(8).Byte(0).Text("application/x").Byte(0);
  EXPECT_EQ(TreeOf(Movie("meta", Box("mett", mett + btrt))).Paths().back(),
            std::string(kEntries) + "mett[1]/btrt");
}

TEST(BoxTree, AnEntryEndsInAZeroWord) {
  const Bytes entry =
      Box("jpeg", Bytes().Fill(78) + Box("gama", Bytes().Be32(1)) + Bytes().Fill(4));
  TreeOf file(Movie("vide", entry));
  EXPECT_EQ(file.Paths().back(), std::string(kEntries) + "jpeg[1]/gama");
  EXPECT_TRUE(file.tree.Problems().empty());
}

TEST(BoxTree, AnEntryWithoutBoxesThatFitIsNoted) {
  TreeOf odd(Movie("vide", Box("CRAW", Bytes().Fill(78).Text("no boxes here"))));
  EXPECT_EQ(odd.Faults()[0], BoxFault::kNoLayoutFits);
  TreeOf cut(Movie("vide", Box("avc1", Bytes().Fill(77))));
  EXPECT_EQ(cut.Faults()[0], BoxFault::kFieldsCut);
  TreeOf fits(Movie("vide", Box("avc1", Bytes().Fill(78))));
  EXPECT_TRUE(fits.Faults().empty());
}

TEST(BoxTree, ABrokenChildDoesNotMoveTheLayoutOntoTheEnd) {
  // At 44 payload bytes the entry just ends: believing that would hide the broken child.
  const Bytes entry = Box("mp4a", Bytes().Fill(28) + SizedBox(17, "sinf", Bytes().Fill(8)));
  TreeOf file(Movie("soun", entry));
  EXPECT_EQ(file.Paths().back(), std::string(kEntries) + "mp4a[1]/sinf");
}

TEST(BoxTree, CompressedMoviesAreInflated) {
  const Bytes plain = Box("moov", Box("mvhd", Bytes().Fill(100)) + Box("trak"));
  const Bytes cmov = Box(
      "cmov",
      Box("dcom", Bytes().Text("zlib")) +
          Box("cmvd", Bytes().Be32(static_cast<std::uint32_t>(plain.size())) + Compressed(plain)));
  TreeOf file(Box("moov", cmov));
  EXPECT_EQ(file.Paths(),
            (Paths{"moov", "moov/cmov", "moov/cmov/dcom", "moov/cmov/cmvd", "moov/cmov/cmvd/moov",
                   "moov/cmov/cmvd/moov/mvhd", "moov/cmov/cmvd/moov/trak[1]"}));
  EXPECT_TRUE(file.tree.Problems().empty());
  const BoxId cmvd = file.tree.Child(
      file.tree.Child(file.tree.FirstChild(kRootBox), FourCC("cmov")), FourCC("cmvd"));
  const mp4::Box inner = file.tree.At(file.tree.FirstChild(cmvd));
  EXPECT_EQ(inner.space, 1);
  EXPECT_EQ(inner.offset, 0u);
  EXPECT_EQ(file.tree.SpaceSize(1), plain.size());
}

TEST(BoxTree, ACutCompressedMovieGivesWhatItHolds) {
  Bytes plain = Box("moov", Box("mvhd", Bytes().Fill(100)));
  Bytes packed = Compressed(plain);
  packed.Cut(packed.size() - 1);
  TreeOf file(Box("moov", Box("cmov", Box("cmvd", Bytes().Be32(116) + packed))));
  EXPECT_EQ(file.Faults(), Faults{BoxFault::kNotInflated});
  TreeOf junk(Box("moov", Box("cmov", Box("cmvd", Bytes().Be32(116).Fill(20, 0xFF)))));
  EXPECT_EQ(junk.Faults(), Faults{BoxFault::kNotInflated});
  EXPECT_EQ(junk.Paths().size(), 3u);
}

TEST(BoxTree, ACompressedMovieBoxHoldsItsChildren) {
  const Bytes plain = Box("mvhd", Bytes().Fill(100)) + Box("trak");
  TreeOf file(Box("!mov", Compressed(plain)));
  EXPECT_EQ(file.Paths(), (Paths{"!mov", "!mov/mvhd", "!mov/trak[1]"}));
}

TEST(BoxTree, InflatingStopsAtTheLimit) {
  mp4::TreeLimits limits{1000, 115, 48};
  const Bytes plain = Box("moov", Box("mvhd", Bytes().Fill(100)));  // 116 bytes
  const Bytes movie = Box("moov", Box("cmov", Box("cmvd", Bytes().Be32(116) + Compressed(plain))));
  EXPECT_EQ(TreeOf(movie, limits).Faults()[0], BoxFault::kNotInflated);
  limits.inflated = 116;
  EXPECT_TRUE(TreeOf(movie, limits).Faults().empty());
}

TEST(BoxTree, LimitsAreReportedWhenMet) {
  const Bytes three = Box("free") + Box("free") + Box("free");
  mp4::TreeLimits limits{3, 0, 48};  // the root counts
  TreeOf file(three, limits);
  EXPECT_EQ(file.Paths().size(), 2u);
  EXPECT_EQ(file.Faults(), Faults{BoxFault::kTooManyBoxes});
  EXPECT_TRUE(file.tree.LimitMet());
  limits.boxes = 4;
  TreeOf enough(three, limits);
  EXPECT_TRUE(enough.Faults().empty());
  EXPECT_FALSE(enough.tree.LimitMet());
}

TEST(BoxTree, NestingEndsAtTheLimit) {
  Bytes nested = Box("udta");
  for (int i = 0; i < 3; ++i) nested = Box("udta", nested);
  EXPECT_EQ(TreeOf(nested, {1000, 0, 3}).Paths().size(), 3u);
  EXPECT_EQ(TreeOf(nested, {1000, 0, 3}).Faults(), Faults{BoxFault::kTooDeep});
  EXPECT_TRUE(TreeOf(nested, {1000, 0, 5}).Faults().empty());
}

TEST(BoxTree, OrdinalsCountEachTypeHoweverManyThereAre) {
  Bytes children;
  const auto type = [](int i) { return std::string("t") + std::to_string(100 + i); };
  for (int round = 0; round < 2; ++round) {
    for (int i = 0; i < 40; ++i) children.Append(Box(type(i)));
  }
  TreeOf file(children);
  const Paths paths = file.Paths();
  ASSERT_EQ(paths.size(), 80u);
  EXPECT_EQ(paths[39], type(39));
  EXPECT_EQ(paths[79], type(39) + "[2]");
}

TEST(BoxTree, TheSameTypeIsFoundFromSiblingToSibling) {
  TreeOf file(Box("moov", Box("trak") + Box("udta") + Box("trak")));
  const BoxId first = file.tree.Child(file.tree.FirstChild(kRootBox), FourCC("trak"));
  const BoxId second = file.tree.NextOfType(first);
  EXPECT_EQ(file.tree.At(second).ordinal, 2u);
  EXPECT_EQ(file.tree.NextOfType(second), kNoBox);
  EXPECT_EQ(file.tree.Child(second, FourCC("trak")), kNoBox);
}

TEST(BoxTree, PayloadsAreBoundedByTheBoxAndTheParent) {
  TreeOf file(Box("free", Bytes({1, 2, 3})) + Box("free", Bytes({9})));
  mp4::FieldView fields = file.tree.Payload(file.tree.FirstChild(kRootBox), 1);
  EXPECT_EQ(fields.Left(), 2u);
  EXPECT_EQ(fields.U16(), 0x0203);
  EXPECT_TRUE(fields.Ok());
  EXPECT_EQ(fields.U8(), 0);
  EXPECT_FALSE(fields.Ok());
  EXPECT_EQ(file.tree.Payload(1, 3).Left(), 0u);
  EXPECT_EQ(file.tree.Payload(1, UINT64_MAX).Left(), 0u);
}

TEST(BoxTree, EveryTruncationOfAFileIsWalked) {
  const Bytes movie = Movie("soun", Box("mp4a", Bytes().Fill(28) + Box("esds", Bytes().Fill(20))));
  const std::size_t whole = TreeOf(movie).Paths().size();
  for (std::size_t n = 0; n < movie.size(); ++n) {
    Bytes cut = movie;
    cut.Cut(n);
    TreeOf file(cut);
    EXPECT_LE(file.Paths().size(), whole) << n;
    // The first three bytes are zeros, which mean nothing.
    EXPECT_EQ(file.tree.Problems().empty(), n < 4) << n;
  }
}
