#include <gtest/gtest.h>

#include <algorithm>

#include "tests/inspect/ProtectionFixtures.h"

// A false "clear" is a failure of its own kind: every protected fixture is cut everywhere, and
// every byte of it outside the media data is changed. What is then said to be clear has to stand in
// its list, because the change removed the protection itself.

namespace {

namespace p = protection;

/// Bytes of a file whose change removes what protects it.
struct Removed {
  std::size_t offset;
  std::size_t size;
  const char* why;
};

struct Case {
  const char* name;
  Bytes file;
  std::vector<Removed> removed;
  std::size_t cutAfter = 0;  ///< cut from here on, and up to `cutBefore`, no protection is left
  std::size_t cutBefore = 0;
};

/// Where the box of this type, the nth, begins.
std::size_t BoxAt(const Bytes& file, const std::string& type, int nth = 1) {
  const std::string all(reinterpret_cast<const char*>(file.data()), file.size());
  std::size_t at = 0;
  for (int i = 0; i < nth; ++i) at = all.find(type, at) + 1;
  return at - 1 - 4;
}

std::vector<Case> Cases() {
  std::vector<Case> cases;
  const auto add = [&](const char* name, const Bytes& file) {
    cases.push_back({name, file, {}, 0, 0});
  };
  add("second track", p::ProtectedMovie());
  add("second entry", p::Movie(p::Trak(1, "vide", {p::ClearVideo(), p::ProtectedVideo()})));
  add("scheme of a plain format",
      p::MovieOf(p::VideoEntry("avc1", p::Avcc() + p::Sinf("avc1", "cbcs"))));
  add("QuickTime sound",
      p::MovieOf(p::AudioEntry("mp4a", Box("wave", p::Frma("mp4a")) + p::Sinf("mp4a", "itun"), 1),
                 "soun"));
  add("two movies", p::ClearMovie() + p::Moov(p::Trak(1, "vide", {p::ProtectedVideo()})));
  const std::size_t first = p::ClearMovie().size();
  const std::size_t media = p::MediaData().size();
  cases.back().removed = {{first - media, 4, "media data covers the second movie"}};
  cases.back().cutAfter = first - media;
  cases.back().cutBefore = first + 8;
  add("compressed",
      p::FileType() + p::Compressed(p::Moov(p::Trak(1, "vide", {p::ProtectedVideo()}))));
  add("subtitles",
      p::MovieOf(p::PlainEntry("stpp", Bytes{0x61, 0, 0, 0} + p::Sinf("stpp", "cenc")), "subt"));
  add("fragments", p::FragmentedMovie(p::ProtectedVideo()) + p::Fragment(p::Senc()));
  add("segment", p::SegmentType() + p::Fragment(p::Senc() + p::Seig()));
  add("objects", p::ObjectMovie(p::ObjectSample(1, "ACBC")));
  // An IPMP descriptor of unknown kind in the movie box, and a stream that points to it.
  const Bytes pointing =
      FullBox("esds", 0, 0, p::Descriptor(3, Bytes{0, 1, 0} + p::Descriptor(0x0A, {7})));
  const Bytes control =
      FullBox("ipmc", 0, 0, p::Descriptor(0x60, {}) + Bytes{1} + p::Descriptor(0x0B, {7, 0, 1}));
  add("pointer", p::Movie(p::Trak(1, "soun", {p::AudioEntry("mp4a", pointing)}) + control));
  add("OMA", p::OmaFile(1));
  add("item", p::ImageFile(p::Iinf({p::Infe(1, 1), p::Infe(2, 0)}) +
                           p::Ipro({Box("sinf", p::Schm("cenc"))})));
  cases.back().removed = {{BoxAt(cases.back().file, "infe") + 15, 1, "no protection index"}};
  add("derived item",
      p::ImageFile(p::Iinf({p::Infe(1, 0, "grid"), p::Infe(2, 1)}) +
                   p::Ipro({Box("sinf", p::Schm("cenc"))}) + p::Iref(p::Dimg(1, {2}))));
  cases.back().removed = {{BoxAt(cases.back().file, "infe", 2) + 15, 1, "no protection index"}};
  add("further metadata", p::Movie(p::VideoTrak() + Box("meco", p::Meta(p::Iinf({p::Infe(1, 1)}) +
                                                                        p::Ipro({Box("sinf")})))));
  cases.back().removed = {{BoxAt(cases.back().file, "infe") + 15, 1, "no protection index"}};
  const Bytes image = p::ImageFile(p::Iinf({p::Infe(1, 0)}));
  add("motion photo", image + Box("mpvd", p::ProtectedMovie()));
  cases.back().removed = {{image.size() - media, 4, "media data covers the movie"}};
  cases.back().cutAfter = image.size() - media;
  cases.back().cutBefore = image.size() + 8;
  add("format alone", p::MovieOf(p::VideoEntry("drmi", p::Avcc())));
  cases.back().removed = {{BoxAt(cases.back().file, "drmi") + 4, 4, "another format"}};
  return cases;
}

bool IsJustified(const Case& one, std::size_t at) {
  return std::any_of(one.removed.begin(), one.removed.end(), [&](const Removed& removed) {
    return at >= removed.offset && at < removed.offset + removed.size;
  });
}

TEST(NoFalseClear, CutAnywhere) {
  for (const Case& one : Cases()) {
    ASSERT_EQ(p::kProtected, p::VerdictOf(one.file)) << one.name;
    for (std::size_t n = 0; n < one.file.size(); ++n) {
      const bool gone = n >= one.cutAfter && n < one.cutBefore;
      EXPECT_TRUE(gone || p::VerdictOf(Bytes(one.file).Cut(n)) != p::kClear) << one.name << n;
    }
  }
}

TEST(NoFalseClear, AnyByteChanged) {
  for (const Case& one : Cases()) {
    std::vector<unsigned char> changed(one.file.data(), one.file.data() + one.file.size());
    std::vector<bool> cleared(one.removed.size());
    for (std::size_t at = 0; at < changed.size(); ++at) {
      const unsigned char before = changed[at];
      for (const int value : {0, 1, 0xFF, before + 1, before - 1, before ^ 0x20, before ^ 0x80}) {
        changed[at] = static_cast<unsigned char>(value);
        mp4::MemorySource source(changed.data(), changed.size());
        const bool clear = mp4::Inspect(&source, {}).verdict == p::kClear;
        EXPECT_FALSE(clear && changed[at] != before && !IsJustified(one, at))
            << one.name << ": byte " << at << " from " << int{before} << " to " << value;
        for (std::size_t i = 0; clear && i < one.removed.size(); ++i)
          cleared[i] = cleared[i] || IsJustified(one, at);
      }
      changed[at] = before;
    }
    // A justification that nothing needs is a false one.
    for (std::size_t i = 0; i < cleared.size(); ++i)
      EXPECT_TRUE(cleared[i]) << one.name << ": " << one.removed[i].why;
  }
}

}  // namespace
