// Writes the files that docs/protection.md shows: protection_files FOLDER

#include <cstdio>
#include <string>

#include "tests/inspect/ProtectionFixtures.h"

namespace {

namespace p = protection;

Bytes VideoOf(const Bytes& sinf) { return p::VideoEntry("encv", p::Avcc() + sinf); }
Bytes SoundOf(const Bytes& sinf) { return p::AudioEntry("enca", sinf); }
Bytes SoundMovie(const Bytes& entry) { return p::MovieOf(entry, "soun"); }

/// Picture and sound, both of one scheme, as a packager writes them.
Bytes CencMovie() {
  return p::Movie(p::Trak(1, "vide", {p::ProtectedVideo()}) +
                  p::Trak(2, "soun", {p::ProtectedAudio()}) + p::Pssh());
}

/// One block of 16 bytes encrypted, nine clear, and one initialization vector for all samples.
Bytes PatternTenc() {
  return FullBox("tenc", 1, 0,
                 Bytes{0, 0x19, 1, 0}.Append(p::KeyId()).Byte(16).Append(Bytes().Fill(16, 0xAB)));
}

Bytes PiffTenc() {
  return Box("uuid", p::PiffTrackType() + Bytes().Be32(0).Be24(1).Byte(8).Append(p::KeyId()));
}

Bytes PiffMovie() {
  const Bytes sinf = Box("sinf", p::Frma("avc1") + p::Schm("piff", 0x10001) + p::Schi(PiffTenc()));
  return p::FileType() + p::Moov(p::Trak(1, "vide", {VideoOf(sinf)}) + p::Mvex() + p::PiffPssh()) +
         p::Fragment(p::PiffSenc());
}

/// A clear beginning by a second sample entry, which the first fragment uses.
Bytes ClearLeadByEntry() {
  const Bytes tfhd = FullBox("tfhd", 0, 0x20002, Bytes().Be32(1).Be32(2));
  const Bytes trun = FullBox("trun", 0, 0x201, Bytes().Be32(1).Be32(100).Be32(24));
  const Bytes lead = Box("moof", FullBox("mfhd", 0, 0, Bytes().Be32(1)) + Box("traf", tfhd + trun));
  return p::FileType() +
         p::Moov(p::Trak(1, "vide", {p::ProtectedVideo(), p::ClearVideo()}) + p::Mvex()) + lead +
         p::MediaData() + p::Fragment(p::Senc());
}

/// The other way round: clear by default, and a group of samples that is encrypted.
Bytes ClearLeadByGroup() {
  const Bytes sinf = p::Sinf("avc1", "cenc", p::Schi(p::Tenc(0, 0)));
  return p::FragmentedMovie(VideoOf(sinf)) + p::Fragment() +
         p::Fragment(p::Seig() + p::SeigMap() + p::Senc());
}

Bytes ItunesSchi() {
  return p::Schi(Box("user", Bytes().Fill(4, 1)) + Box("key ", Bytes().Fill(4, 1)) +
                 Box("iviv", Bytes().Fill(16, 2)) + Box("righ", Bytes().Fill(80)) +
                 Box("name", Bytes().Fill(256)) + Box("priv", Bytes().Fill(440, 3)));
}

/// Headers of OMA DRM 2 in a movie: what encrypts, and how samples begin.
Bytes OmaSinf() {
  const Bytes headers =
      FullBox("ohdr", 0, 0, Bytes{2, 0}.Be64(0).Be16(7).Be16(0).Be16(0).Text("cid:one"));
  const Bytes units = FullBox("odaf", 0, 0, {0, 0, 16});
  return Box("sinf", p::Frma("mp4a") + p::Schm("odkm", 0x200) +
                         p::Schi(FullBox("odkm", 0, 0, headers + units)));
}

Bytes IsmaSinf() {
  const Bytes keys = FullBox("iKMS", 0, 0, Bytes().Text("https://example.org/kms").Byte(0));
  const Bytes format = FullBox("iSFM", 0, 0, {0, 0, 4});
  return Box("sinf", p::Frma("mp4a") + p::Schm("iAEC", 1) + p::Schi(keys + format));
}

Bytes AdobeSinf() {
  const Bytes cipher = FullBox("aeib", 0, 0, Bytes().Text("AES-CBC").Byte(0).Byte(16));
  const Bytes key = FullBox("akey", 0, 0, FullBox("flxs", 0, 0, Bytes().Text("bm9uZQ==").Byte(0)));
  const Bytes header = FullBox("ahdr", 1, 0, FullBox("aprm", 1, 0, cipher + key));
  const Bytes units = FullBox("adaf", 0, 0, {0, 0, 16});
  return Box("sinf",
             p::Frma("avc1") + p::Schm("adkm", 1) + p::Schi(FullBox("adkm", 1, 0, header + units)));
}

Bytes Audible(const Bytes& children) { return SoundMovie(p::AudioEntry("aavd", children)); }

Bytes Image(const Bytes& items, const Bytes& references = {}) {
  return p::ImageFile(items + p::Ipro({Box("sinf", p::Schm("cenc"))}) + references);
}

bool Write(const std::string& path, const Bytes& file) {
  std::FILE* out = std::fopen(path.c_str(), "wb");
  if (out == nullptr) return false;
  const bool whole = std::fwrite(file.data(), 1, file.size(), out) == file.size();
  return std::fclose(out) == 0 && whole;
}

struct Example {
  const char* name;
  Bytes file;
};

std::vector<Example> Examples() {
  const Bytes restricted = Box("rinf", p::Frma("avc1") + p::Schm("stvi"));
  const Bytes purchase = Box("pinf", p::Frma("mp4a") + p::Schm("itun") + ItunesSchi());
  const Bytes text = p::PlainEntry("stpp", Bytes{0x61, 0, 0, 0} + p::Sinf("stpp", "cenc"));
  const Bytes cbcs = p::Sinf("avc1", "cbcs", p::Schi(PatternTenc()));
  return {
      {"cenc.mp4", CencMovie()},
      {"cbcs.mp4", p::MovieOf(VideoOf(cbcs))},
      {"cens.mp4", p::MovieOf(p::ProtectedVideo("cens"))},
      {"cbc1.mp4", p::MovieOf(p::ProtectedVideo("cbc1"))},
      {"sve1.mp4", p::MovieOf(p::ProtectedVideo("sve1"))},
      {"text.mp4", p::Movie(p::VideoTrak() + p::Trak(2, "subt", {text}))},
      {"lead_by_entry.mp4", ClearLeadByEntry()},
      {"lead_by_group.mp4", ClearLeadByGroup()},
      {"segment.m4s", p::SegmentType() + p::Fragment(p::Senc() + p::Seig())},
      {"plain_segment.m4s", p::SegmentType() + p::Fragment()},
      {"contradiction.mp4", p::FragmentedMovie(p::ClearVideo()) + p::Fragment(p::Senc())},
      {"system_alone.mp4", p::Movie(p::VideoTrak() + p::Pssh())},
      {"piff.ismv", PiffMovie()},
      {"itunes.m4p",
       SoundMovie(p::AudioEntry("drms",
                                Box("sinf", p::Frma("mp4a") + p::Schm("itun", 0) + ItunesSchi())))},
      {"itunes.m4v", p::Movie(p::Trak(1, "vide", {p::VideoEntry("drmi", p::Avcc())}) +
                              p::Trak(2, "clcp", {p::PlainEntry("p608")}))},
      {"purchase.m4a", SoundMovie(p::AudioEntry("mp4a", purchase))},
      {"audible.aax", Audible(Box("adrm", Bytes().Fill(88)))},
      {"audible_alone.aax", Audible({})},
      {"oma.odf", p::OmaFile(1)},
      {"oma_open.odf", p::OmaFile(0)},
      {"oma.mp4", SoundMovie(SoundOf(OmaSinf()))},
      {"isma.mp4", SoundMovie(SoundOf(IsmaSinf()))},
      {"marlin.mp4", p::ObjectMovie(p::ObjectSample(1, "ACBC"))},
      {"marlin_group.mp4", p::ObjectMovie(p::ObjectSample(1, "ACGK"))},
      {"adobe.f4v", p::MovieOf(VideoOf(AdobeSinf()))},
      {"unknown.mp4", p::MovieOf(p::ProtectedVideo("XyZ9"))},
      {"plain_format.mp4", p::MovieOf(p::VideoEntry("avc1", p::Avcc() + p::Sinf("avc1", "cbcs")))},
      {"nameless.mp4", p::MovieOf(VideoOf(Box("sinf", p::Frma("avc1"))))},
      {"image.heic", Image(p::Iinf({p::Infe(1, 1), p::Infe(2, 0)}))},
      {"grid.heic", Image(p::Iinf({p::Infe(1, 0, "grid"), p::Infe(2, 1), p::Infe(3, 0)}),
                          p::Iref(p::Dimg(1, {2, 3})))},
      {"compressed.mov",
       p::FileType() + p::Compressed(p::Moov(p::Trak(1, "vide", {p::ProtectedVideo()})))},
      {"restricted.mp4", p::MovieOf(p::VideoEntry("resv", p::Avcc() + restricted))},
      {"incomplete.mp4",
       p::MovieOf(p::VideoEntry("icpv", p::Avcc() + Box("cinf", p::Frma("avc1"))))},
  };
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  for (const Example& example : Examples()) {
    const std::string path = std::string(argv[1]) + "/" + example.name;
    if (Write(path, example.file)) continue;
    std::fprintf(stderr, "%s cannot be written\n", path.c_str());
    return 1;
  }
}
