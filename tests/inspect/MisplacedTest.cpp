#include <gtest/gtest.h>

#include "inspect/Misplaced.h"
#include "tests/inspect/ProtectionFixtures.h"

// Where a protected file could keep its protection so that a plain walk does not come by.

namespace {

namespace p = protection;

Bytes PiffTenc() {
  return Box("uuid", p::PiffTrackType() + Bytes().Be32(0).Be24(1).Byte(8).Append(p::KeyId()));
}
Bytes UserBox(const Bytes& payload) { return Box("uuid", Bytes().Fill(16, 0xAB) + payload); }
/// A track of these tables.
Bytes TrakOf(const Bytes& tables) { return Box("trak", p::Tkhd(1) + p::Mdia("vide", tables)); }
Bytes Strings(int n) {
  Bytes strings;
  for (int i = 0; i < n; ++i) strings.Text("ab").Byte(0);
  return strings;
}

TEST(Misplaced, ASchemeOutsideItsEntryIsNotClear) {
  const Bytes sinf = p::Sinf("avc1", "cenc");
  const Bytes clear = p::Stsd({p::ClearVideo()});
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(p::VideoTrak() + sinf)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(p::Trak(1, "vide", {p::ClearVideo()}, sinf))));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(TrakOf(clear + sinf))));
  const Bytes meta = p::Meta(p::Iinf({p::Infe(1, 0)}) + sinf);
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(p::Trak(1, "vide", {p::ClearVideo()}, meta))));
}

TEST(Misplaced, AProtectedEntryOutsideItsDescriptionIsNotClear) {
  const Bytes clear = p::Stsd({p::ClearVideo()});
  for (const Bytes& entry : {p::ProtectedVideo(), p::VideoEntry("drmi"), p::PlainEntry("encu"),
                             p::AudioEntry("mp4a", p::Sinf("mp4a", "cenc")),
                             p::PlainEntry("stpp", Bytes().Fill(3) + p::Sinf("stpp", "cenc"))}) {
    EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(TrakOf(clear + entry))));
    EXPECT_EQ(p::kUndetermined,
              p::VerdictOf(p::Movie(p::Trak(1, "vide", {p::ClearVideo()}, entry))));
    EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ClearMovie() + entry));
  }
  EXPECT_EQ(p::kClear, p::VerdictOf(p::Movie(TrakOf(clear + p::ClearAudio()))));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ClearMovie() + Box("rinf", p::Sinf("avc1", "cenc"))));
}

TEST(Misplaced, ABoxWhoseTypeIsNoTextIsNotClearWhenItBeginsLikeATrack) {
  const Bytes trak = p::Trak(2, "vide", {p::ProtectedVideo()});
  for (const unsigned character : {0xFFU, 0x1FU, 0x7FU}) {
    Bytes renamed = trak;
    renamed.PutBe32(4, 0x74726100 | character);
    Bytes broken = renamed;
    broken.PutBe32(8, 0xFF00005C);
    EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(p::VideoTrak() + renamed)));
    EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(p::VideoTrak() + broken)));
  }
  EXPECT_EQ(p::kClear, p::VerdictOf(p::Movie(p::VideoTrak() + Box("m\x01hd", Bytes().Fill(99)))));
}

TEST(Misplaced, ABoxOfTheMovieInAnEntryIsNotClear) {
  const Bytes trak = p::Trak(2, "vide", {p::ClearVideo()});
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::MovieOf(p::VideoEntry("avc1", p::Avcc() + trak))));
}

TEST(Misplaced, ABoxOfTheMovieIsNoEntry) {
  for (const char* type : {"tkhd", "stco", "stts", "ftyp", "udta", "mdat", "dref"}) {
    const Bytes stray = Box(type, Bytes().Fill(8));
    EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::MovieOf(stray))) << type;
  }
  EXPECT_EQ(p::kClear, p::VerdictOf(p::MovieOf(Box("zzzz", Bytes().Fill(8)))));
}

TEST(Misplaced, EveryPartOfASchemeInAClearEntryIsNotClear) {
  for (const Bytes& part : {p::Schm("cenc"),
                            p::Schi(p::Tenc()),
                            p::Schi({}),
                            p::Tenc(),
                            PiffTenc(),
                            p::PiffSenc(),
                            p::Pssh(),
                            FullBox("iKMS", 0, 0, Bytes().Text("url").Byte(0)),
                            FullBox("iSFM", 0, 0, {0, 0, 8}),
                            Box("iSLT", Bytes().Fill(8)),
                            FullBox("odkm", 0, 0),
                            FullBox("ohdr", 0, 0, Bytes().Fill(18)),
                            FullBox("adkm", 0, 0),
                            Box("marl"),
                            FullBox("mkid", 0, 0, Bytes().Be32(0)),
                            Box("8id ", {'u', 0}),
                            Box("key ", Bytes().Fill(4)),
                            Box("iviv", Bytes().Fill(16)),
                            FullBox("imif", 0, 0),
                            Box("adrm", Bytes().Fill(88))}) {
    EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::MovieOf(p::VideoEntry("avc1", p::Avcc() + part))));
    EXPECT_EQ(p::kUndetermined,
              p::VerdictOf(p::MovieOf(p::AudioEntry("mp4a", Box("wave", part), 1), "soun")));
  }
  for (const char* other : {"btrt", "pasp", "colr", "uuid"}) {
    const Bytes box = Box(other, Bytes().Fill(20));
    EXPECT_EQ(p::kClear, p::VerdictOf(p::MovieOf(p::VideoEntry("avc1", p::Avcc() + box))));
  }
}

TEST(Misplaced, AnIsmaSchemeWithoutATypeProtects) {
  const Bytes schi = p::Schi(FullBox("iSFM", 0, 0, {0, 0, 8}));
  const mp4::Report report =
      p::InspectBytes(p::MovieOf(p::VideoEntry("mp4v", Box("sinf", p::Frma("mp4v") + schi))));
  EXPECT_EQ(p::kProtected, report.verdict);
  EXPECT_TRUE(report.schemes.empty());
}

TEST(Misplaced, SecondBoxesOnTheWayAreFollowed) {
  const Bytes clear = p::Mdia("vide", p::Stsd({p::ClearVideo()}));
  const Bytes hidden = p::Mdia("soun", p::Stsd({p::ProtectedAudio()}));
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::Movie(Box("trak", p::Tkhd(1) + clear + hidden))));
  const Bytes stbl = Box("stbl", p::Stsd({p::ProtectedVideo()}));
  const Bytes two = Box("minf", Box("stbl", p::Stsd({p::ClearVideo()})) + stbl);
  EXPECT_EQ(p::kProtected,
            p::VerdictOf(p::Movie(Box("trak", p::Tkhd(1) + Box("mdia", p::Hdlr("vide") + two)))));
  const Bytes minfs = Box("minf", Box("stbl", p::Stsd({p::ClearVideo()}))) + Box("minf", stbl);
  EXPECT_EQ(p::kProtected,
            p::VerdictOf(p::Movie(Box("trak", p::Tkhd(1) + Box("mdia", p::Hdlr("vide") + minfs)))));
}

TEST(Misplaced, TheHandlerDoesNotMatter) {
  for (const char* handler : {"vide", "soun", "text", "hint", "meta", "zzzz"}) {
    EXPECT_EQ(p::kProtected, p::VerdictOf(p::MovieOf(p::VideoEntry("encv"), handler)));
    EXPECT_EQ(p::kProtected, p::VerdictOf(p::MovieOf(p::AudioEntry("drms"), handler)));
    EXPECT_EQ(p::kProtected, p::VerdictOf(p::MovieOf(p::ProtectedVideo(), handler)));
    EXPECT_EQ(p::kProtected, p::VerdictOf(p::MovieOf(p::ProtectedAudio(), handler)));
  }
}

TEST(Misplaced, AnUnknownFixedPartHidesNoScheme) {
  for (std::size_t n = 0; n < 120; ++n) {
    const Bytes entry = p::PlainEntry("zzzz", Bytes().Fill(n, 0xC3) + p::Sinf("zzzz", "cenc"));
    EXPECT_NE(p::kClear, p::VerdictOf(p::MovieOf(entry, "qqqq"))) << n;
  }
  for (int n = 0; n <= 3; ++n) {
    const Bytes entry = p::PlainEntry("urim", Strings(n) + p::Sinf("urim", "cenc"));
    EXPECT_NE(p::kClear, p::VerdictOf(p::MovieOf(entry, "meta"))) << n;
  }
}

TEST(Misplaced, ADescriptionOfVersionOneIsReadAndALaterOneIsNotClear) {
  for (const unsigned version : {0U, 1U, 2U}) {
    const Bytes clear = FullBox("stsd", version, 0, Bytes().Be32(1).Append(p::ClearAudio()));
    EXPECT_EQ(version <= 1 ? p::kClear : p::kUndetermined, p::VerdictOf(p::Movie(TrakOf(clear))));
    const Bytes encrypted =
        FullBox("stsd", version, 0, Bytes().Be32(1).Append(p::ProtectedAudio()));
    EXPECT_EQ(p::kProtected, p::VerdictOf(p::Movie(TrakOf(encrypted))));
  }
}

TEST(Misplaced, AnEntryOfSizeZeroIsNotClear) {
  Bytes open = p::ClearVideo();
  open.PutBe32(0, 0);
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::MovieOf(open)));
  EXPECT_NE(p::kClear, p::VerdictOf(p::Movie(p::Trak(1, "vide", {open, p::VideoEntry("drmi")}))));
}

TEST(Misplaced, AnEntryThatCoversAProtectedOneIsNotClear) {
  for (const char* format : {"drmi", "encv", "encu"}) {
    const Bytes second = p::VideoEntry(format);
    const Bytes first = p::Lying(p::ClearVideo(), static_cast<int>(second.size()));
    EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::MovieOf(first + second))) << format;
  }
}

TEST(Misplaced, AFormatForProtectedMediaUnderAnotherIsNotClear) {
  const auto restricted = [](const char* format) {
    return p::MovieOf(p::VideoEntry("resv", Box("rinf", p::Frma(format) + p::Schm("stvi"))));
  };
  EXPECT_EQ(p::kClear, p::VerdictOf(restricted("avc1")));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(restricted("encv")));
  const auto incomplete = [](const char* format) {
    return p::MovieOf(p::VideoEntry("icpv", Box("cinf", p::Frma(format))));
  };
  EXPECT_EQ(p::kClear, p::VerdictOf(incomplete("avc1")));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(incomplete("drmi")));
  const Bytes wave = Box("wave", p::Frma("encu"));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::MovieOf(p::AudioEntry("mp4a", wave, 1), "soun")));
}

TEST(Misplaced, PacketsEncryptedForTheWayAreNotedWhenSentAndDoubtedWhenReceived) {
  const Bytes srpp =
      FullBox("srpp", 0, 0, Bytes().Fill(16).Append(p::Schm("srtp")).Append(p::Schi({})));
  const Bytes fields = Bytes().Be16(1).Be16(1).Be32(1450);
  const mp4::Report sent =
      p::InspectBytes(p::MovieOf(p::PlainEntry("srtp", fields + srpp), "hint"));
  EXPECT_EQ(p::kClear, sent.verdict) << sent.reason;
  EXPECT_EQ(1U, sent.notes.size());
  for (const char* format : {"rsrp", "rtp ", "pm2t", "prtp"}) {
    EXPECT_EQ(p::kUndetermined,
              p::VerdictOf(p::MovieOf(p::PlainEntry(format, fields + srpp), "hint")))
        << format;
  }
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::MovieOf(p::PlainEntry("rsrp", fields), "hint")));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::MovieOf(p::PlainEntry("rrtp", fields), "hint")));
  for (const char* format : {"rm2t", "pm2t"}) {
    const Bytes entry = p::PlainEntry(format, Bytes(fields).Cut(7) + p::Sinf("rm2t", "cenc"));
    EXPECT_EQ(p::kProtected, p::VerdictOf(p::MovieOf(entry, "hint"))) << format;
  }
}

TEST(Misplaced, SampleEncryptionOutsideTracksIsNotClear) {
  for (const Bytes& box : {p::PiffSenc(), p::Senc(), PiffTenc()}) {
    EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(p::VideoTrak() + box)));
    EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ClearMovie() + box));
    EXPECT_EQ(p::kUndetermined,
              p::VerdictOf(p::FragmentedMovie(p::ClearVideo()) + p::Fragment({}, box)));
  }
}

TEST(Misplaced, ASystemInATrackIsListed) {
  for (const Bytes& system : {p::Pssh(), p::PiffPssh()}) {
    const mp4::Report movie =
        p::InspectBytes(p::Movie(p::Trak(1, "vide", {p::ClearVideo()}, system)));
    EXPECT_EQ(p::kClear, movie.verdict) << movie.reason;
    EXPECT_EQ(1U, movie.systems.size());
    EXPECT_EQ(p::kProtected, p::VerdictOf(p::SegmentType() + p::Fragment(system)));
  }
}

TEST(Misplaced, ASystemThatCoversATrackIsNotClear) {
  const Bytes hidden = p::Trak(1, "vide", {p::ProtectedVideo()});
  const Bytes covering = p::Lying(p::Pssh(), static_cast<int>(hidden.size()));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(covering + hidden + p::VideoTrak(2))));
  const Bytes padded = p::Lying(p::Pssh(), 20) + Bytes().Fill(20);
  EXPECT_EQ(p::kClear, p::VerdictOf(p::Movie(padded + p::VideoTrak(2))));
}

TEST(Misplaced, AMovieInAUserBoxIsNotClear) {
  const Bytes moov = p::Moov(p::Trak(1, "vide", {p::ProtectedVideo()}));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ClearMovie() + UserBox(moov)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(p::VideoTrak() + UserBox(p::VideoTrak(2)))));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::ClearMovie() + UserBox(Bytes().Text("<?xpacket begin"))));
}

TEST(Misplaced, UserDataAndFreeSpaceAreNoPartOfTheMovie) {
  const Bytes trak = p::Trak(2, "vide", {p::ProtectedVideo()});
  for (const char* type : {"udta", "free", "skip"})
    EXPECT_EQ(p::kClear, p::VerdictOf(p::Movie(p::VideoTrak() + Box(type, trak)))) << type;
}

TEST(Misplaced, BoxesBesideAnInflatedMovieAreNotClear) {
  const Bytes moov = p::Moov(p::VideoTrak());
  EXPECT_EQ(p::kClear, p::VerdictOf(p::FileType() + p::Compressed(moov + Box("free"))));
  EXPECT_EQ(p::kUndetermined,
            p::VerdictOf(p::FileType() +
                         p::Compressed(moov + p::Trak(2, "vide", {p::ProtectedVideo()}))));
  EXPECT_EQ(p::kProtected,
            p::VerdictOf(p::FileType() +
                         p::Compressed(moov + p::Moov(p::Trak(2, "vide", {p::ProtectedVideo()})))));
}

TEST(Misplaced, CompressedBoxesOfTheNewerKindAreOpened) {
  const auto packed = [](const char* type, const Bytes& children) {
    const Bytes cmov = p::Compressed(children);
    // What "cmvd" holds behind its size.
    Bytes data;
    for (std::size_t i = 8 + 8 + 12 + 12; i < cmov.size(); ++i) data.Byte(cmov[i]);
    return Box(type, data);
  };
  const Bytes clear = p::Mvhd() + p::VideoTrak();
  const Bytes encrypted = p::Mvhd() + p::Trak(1, "vide", {p::ProtectedVideo()});
  EXPECT_EQ(p::kClear, p::VerdictOf(p::FileType() + packed("!mov", clear)));
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::FileType() + packed("!mov", encrypted)));
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::FileType() + packed("!mov", Box("moov", encrypted))));
  const Bytes moof = p::Moof(p::Senc());
  Bytes inside;
  for (std::size_t i = 8; i < moof.size(); ++i) inside.Byte(moof[i]);
  EXPECT_EQ(p::kUndetermined,
            p::VerdictOf(p::FragmentedMovie(p::ClearVideo()) + packed("!mof", inside)));
  EXPECT_EQ(p::kClear,
            p::VerdictOf(p::ClearMovie() + packed("!six", Bytes().Fill(40)) + Box("!ssx", {1, 2})));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::FileType() + Box("!mov", Bytes().Fill(40, 0x5A))));
}

TEST(Misplaced, ItemsOfFurtherMetadataAreSeen) {
  const Bytes meta = p::Meta(p::Iinf({p::Infe(1, 1)}) + p::Ipro({Box("sinf", p::Schm("cenc"))}));
  const Bytes meco = Box("meco", p::Meta(p::Iinf({p::Infe(1, 0)})) + meta);
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::ClearMovie() + meco));
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::Movie(p::VideoTrak() + meco)));
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::Movie(p::Trak(1, "vide", {p::ClearVideo()}, meco))));
  EXPECT_EQ(p::kProtected,
            p::VerdictOf(p::FragmentedMovie(p::ClearVideo()) + p::Fragment({}, meco)));
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::FragmentedMovie(p::ClearVideo()) + p::Fragment(meco)));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ClearMovie() + Box("meco", Box("iinf"))));
}

TEST(Misplaced, AMotionPhotoIsJudgedWithItsMovie) {
  const Bytes image = p::ImageFile(p::Iinf({p::Infe(1, 0)}));
  EXPECT_EQ(p::kClear, p::VerdictOf(image + Box("mpvd", p::ClearMovie())));
  const mp4::Report report = p::InspectBytes(image + Box("mpvd", p::ProtectedMovie()));
  EXPECT_EQ(p::kProtected, report.verdict);
  EXPECT_EQ("mpvd/moov/trak[2]/mdia/minf/stbl/stsd/enca[1]", report.evidence.at(0).boxPath);
}

TEST(Misplaced, PaddingIsBelievedOnlyWhenItsEndIsZeroToo) {
  const std::size_t large = 100000;
  EXPECT_EQ(p::kClear, p::VerdictOf(p::ClearMovie() + Bytes().Fill(large)));
  EXPECT_EQ(p::kUndetermined,
            p::VerdictOf(p::ClearMovie() + Bytes().Fill(large) + p::ProtectedMovie()));
  EXPECT_EQ(p::kClear, p::VerdictOf(p::Movie(p::VideoTrak() + Bytes().Fill(large))));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::Movie(p::VideoTrak() + Bytes().Fill(large) +
                                                    p::Trak(2, "vide", {p::ProtectedVideo()}))));
}

TEST(Misplaced, AnUnknownBoxWithoutASizeIsNotClear) {
  const Bytes hidden = p::Moov(p::Trak(1, "vide", {p::ProtectedVideo()}));
  EXPECT_EQ(p::kUndetermined, p::VerdictOf(p::ClearMovie() + SizedBox(0, "zzzz") + hidden));
  // Media data may run to the end, and is no part of the movie.
  EXPECT_EQ(p::kClear, p::VerdictOf(p::ClearMovie() + SizedBox(0, "mdat") + hidden));
}

TEST(Misplaced, AMovieBehindLargeMediaDataIsRead) {
  const Bytes moov = p::Moov(p::Trak(1, "vide", {p::ProtectedVideo()}));
  const Bytes media = SizedBox(1, "mdat", Bytes().Be64(16 + 5)) + Bytes().Fill(5);
  EXPECT_EQ(p::kProtected, p::VerdictOf(p::FileType() + media + moov));
}

}  // namespace
