#pragma once

#include <zlib.h>

#include <string>
#include <vector>

#include "inspect/Inspect.h"
#include "io/MemorySource.h"
#include "tests/Bytes.h"

/// Small movies, fragments, items and descriptors for the inspection. Sizes are right and parents
/// whole; a test breaks what it is about.
namespace protection {

/// The answer for a file in memory.
inline mp4::Report InspectBytes(const Bytes& file, bool everything = false) {
  mp4::MemorySource source(file.data(), file.size());
  return mp4::Inspect(&source, {everything});
}
inline mp4::ProtectionVerdict VerdictOf(const Bytes& file, bool everything = false) {
  return InspectBytes(file, everything).verdict;
}

constexpr auto kClear = mp4::ProtectionVerdict::kClear;
constexpr auto kProtected = mp4::ProtectionVerdict::kProtected;
constexpr auto kUndetermined = mp4::ProtectionVerdict::kUndetermined;

inline Bytes Joined(const std::vector<Bytes>& parts) {
  Bytes all;
  for (const Bytes& part : parts) all.Append(part);
  return all;
}

/// The bytes with the size in their first box's header changed by `change`.
inline Bytes Lying(Bytes box, int change) {
  const std::uint32_t size = static_cast<std::uint32_t>(box[0]) << 24 | box[1] << 16 | box[2] << 8 |
                             static_cast<std::uint32_t>(box[3]);
  return box.PutBe32(0, size + static_cast<std::uint32_t>(change));
}

inline Bytes FileType() { return Box("ftyp", Bytes().Text("isom").Be32(512).Text("isommp41")); }
inline Bytes MediaData() { return Box("mdat", Bytes().Fill(24, 0x55)); }

/// 00 01 02 ... 0F.
inline Bytes KeyId() {
  Bytes id;
  for (unsigned i = 0; i < 16; ++i) id.Byte(i);
  return id;
}
/// Widevine's.
inline Bytes SystemId() {
  return {0xED, 0xEF, 0x8B, 0xA9, 0x79, 0xD6, 0x4A, 0xCE,
          0xA3, 0xC8, 0x27, 0xDC, 0xD5, 0x1D, 0x21, 0xED};
}
inline Bytes PiffSystemType() {
  return {0xD0, 0x8A, 0x4F, 0x18, 0x10, 0xF3, 0x4A, 0x82,
          0xB6, 0xC8, 0x32, 0xD8, 0xAB, 0xA1, 0x83, 0xD3};
}
inline Bytes PiffTrackType() {
  return {0x89, 0x74, 0xDB, 0xCE, 0x7B, 0xE7, 0x4C, 0x51,
          0x84, 0xF9, 0x71, 0x48, 0xF9, 0x88, 0x25, 0x54};
}
inline Bytes PiffSampleType() {
  return {0xA2, 0x39, 0x4F, 0x52, 0x5A, 0x9B, 0x4F, 0x14,
          0xA2, 0x44, 0x6C, 0x42, 0x7C, 0x64, 0x8D, 0xF4};
}

// Schemes.

inline Bytes Frma(const char* format) { return Box("frma", Bytes().Text(format)); }
inline Bytes Schm(const char* scheme, std::uint32_t version = 0x10000) {
  return FullBox("schm", 0, 0, Bytes().Text(scheme).Be32(version));
}
inline Bytes Tenc(unsigned isProtected = 1, unsigned ivSize = 8) {
  return FullBox("tenc", 0, 0, Bytes{0, 0}.Byte(isProtected).Byte(ivSize).Append(KeyId()));
}
inline Bytes Schi(const Bytes& children) { return Box("schi", children); }
inline Bytes Sinf(const char* format, const char* scheme, const Bytes& schi = Schi(Tenc())) {
  return Box("sinf", Frma(format) + Schm(scheme) + schi);
}

// Sample entries.

inline Bytes EntryHead() { return Bytes().Fill(6).Be16(1); }
inline Bytes PlainEntry(const char* format, const Bytes& rest = {}) {
  return Box(format, EntryHead() + rest);
}
inline Bytes VideoEntry(const char* format, const Bytes& children = {}) {
  return PlainEntry(format, Bytes()
                                .Fill(16)
                                .Be16(16)
                                .Be16(16)
                                .Be32(0x480000)
                                .Be32(0x480000)
                                .Be32(0)
                                .Be16(1)
                                .Fill(32)
                                .Be16(24)
                                .Be16(0xFFFF)
                                .Append(children));
}
/// `version` 1 and 2 are QuickTime's.
inline Bytes AudioEntry(const char* format, const Bytes& children = {}, unsigned version = 0) {
  Bytes fields = Bytes().Be16(version).Fill(6).Be16(2).Be16(16).Fill(4).Be32(44100U << 16);
  if (version == 1) fields.Fill(16, 1);
  if (version == 2) fields.Fill(36, 1);
  return PlainEntry(format, fields + children);
}
inline Bytes Avcc() { return Box("avcC", {1, 0x42, 0, 0x1E, 0xFF, 0xE0, 0}); }
inline Bytes ClearVideo() { return VideoEntry("avc1", Avcc()); }
inline Bytes ClearAudio() { return AudioEntry("mp4a"); }
inline Bytes ProtectedVideo(const char* scheme = "cenc") {
  return VideoEntry("encv", Avcc() + Sinf("avc1", scheme));
}
inline Bytes ProtectedAudio(const char* scheme = "cenc") {
  return AudioEntry("enca", Sinf("mp4a", scheme));
}

// Tracks and movies.

inline Bytes Stsd(const std::vector<Bytes>& entries) {
  return FullBox("stsd", 0, 0,
                 Bytes().Be32(static_cast<std::uint32_t>(entries.size())).Append(Joined(entries)));
}
inline Bytes Hdlr(const char* handler) {
  return FullBox("hdlr", 0, 0, Bytes().Fill(4).Text(handler).Fill(13));
}
inline Bytes Tkhd(std::uint32_t id) {
  return FullBox("tkhd", 0, 7, Bytes().Fill(8).Be32(id).Fill(68));
}
inline Bytes Mvhd() { return FullBox("mvhd", 0, 0, Bytes().Fill(8).Be32(1000).Fill(84)); }
/// Sample tables without samples.
inline Bytes NoSamples() {
  return FullBox("stts", 0, 0, Bytes().Be32(0)) + FullBox("stsc", 0, 0, Bytes().Be32(0)) +
         FullBox("stsz", 0, 0, Bytes().Be32(0).Be32(0)) + FullBox("stco", 0, 0, Bytes().Be32(0));
}
inline Bytes Mdia(const char* handler, const Bytes& stblChildren) {
  const Bytes dinf =
      Box("dinf", FullBox("dref", 0, 0, Bytes().Be32(1).Append(FullBox("url ", 0, 1))));
  return Box("mdia", FullBox("mdhd", 0, 0, Bytes().Fill(20)) + Hdlr(handler) +
                         Box("minf", FullBox("nmhd", 0, 0) + dinf + Box("stbl", stblChildren)));
}
inline Bytes Trak(std::uint32_t id, const char* handler, const std::vector<Bytes>& entries,
                  const Bytes& more = {}) {
  return Box("trak", Tkhd(id) + Mdia(handler, Stsd(entries) + NoSamples()) + more);
}
inline Bytes VideoTrak(std::uint32_t id = 1) { return Trak(id, "vide", {ClearVideo()}); }
inline Bytes AudioTrak(std::uint32_t id = 2) { return Trak(id, "soun", {ClearAudio()}); }
inline Bytes Moov(const Bytes& children) { return Box("moov", Mvhd() + children); }
inline Bytes Movie(const Bytes& moovChildren) {
  return FileType() + Moov(moovChildren) + MediaData();
}
/// A movie of one track with one entry.
inline Bytes MovieOf(const Bytes& entry, const char* handler = "vide") {
  return Movie(Trak(1, handler, {entry}));
}
inline Bytes ClearMovie() { return Movie(VideoTrak() + AudioTrak()); }
/// A movie whose second track is protected.
inline Bytes ProtectedMovie(const char* scheme = "cenc") {
  return Movie(VideoTrak() + Trak(2, "soun", {ProtectedAudio(scheme)}));
}
/// QuickTime's compressed movie around a movie box.
inline Bytes Compressed(const Bytes& moov, const char* method = "zlib") {
  uLongf n = compressBound(moov.size());
  std::vector<unsigned char> packed(n);
  compress(packed.data(), &n, moov.data(), moov.size());
  Bytes data = Bytes().Be32(static_cast<std::uint32_t>(moov.size()));
  for (uLongf i = 0; i < n; ++i) data.Byte(packed[i]);
  return Box("moov", Box("cmov", Box("dcom", Bytes().Text(method)) + Box("cmvd", data)));
}

// Fragments.

inline Bytes Mvex() { return Box("mvex", FullBox("trex", 0, 0, Bytes().Be32(1).Be32(1).Fill(12))); }
inline Bytes Tfhd(std::uint32_t track) { return FullBox("tfhd", 0, 0x20000, Bytes().Be32(track)); }
inline Bytes Moof(const Bytes& trafChildren, const Bytes& moofChildren = {}) {
  const Bytes trun = FullBox("trun", 0, 0x201, Bytes().Be32(1).Be32(100).Be32(24));
  return Box("moof", FullBox("mfhd", 0, 0, Bytes().Be32(1)) + moofChildren +
                         Box("traf", Tfhd(1) + trun + trafChildren));
}
inline Bytes Fragment(const Bytes& trafChildren = {}, const Bytes& moofChildren = {}) {
  return Moof(trafChildren, moofChildren) + MediaData();
}
inline Bytes FragmentedMovie(const Bytes& entry) {
  return FileType() + Moov(Trak(1, "vide", {entry}) + Mvex());
}
inline Bytes SegmentType() { return Box("styp", Bytes().Text("msdh").Be32(0).Text("msdh")); }
inline Bytes Senc() { return FullBox("senc", 0, 0, Bytes().Be32(1).Fill(8, 1)); }
inline Bytes PiffSenc() {
  return Box("uuid", PiffSampleType() + Bytes().Be32(0).Be32(1).Fill(8, 1));
}
inline Bytes Seig(unsigned isProtected = 1) {
  return FullBox("sgpd", 1, 0,
                 Bytes()
                     .Text("seig")
                     .Be32(20)
                     .Be32(1)
                     .Append({0, 0})
                     .Byte(isProtected)
                     .Byte(8)
                     .Append(KeyId()));
}
inline Bytes SeigMap() {
  return FullBox("sbgp", 0, 0, Bytes().Text("seig").Be32(1).Be32(1).Be32(0x10001));
}
inline Bytes Pssh() { return FullBox("pssh", 0, 0, SystemId().Be32(4).Text("data")); }
inline Bytes PiffPssh() {
  return Box("uuid", PiffSystemType() + Bytes().Be32(0).Append(SystemId()).Be32(4).Text("data"));
}

// Items.

inline Bytes Infe(unsigned id, unsigned protectionIndex, const char* type = "hvc1") {
  return FullBox("infe", 2, 0, Bytes().Be16(id).Be16(protectionIndex).Text(type).Byte(0));
}
inline Bytes Iinf(const std::vector<Bytes>& items) {
  return FullBox("iinf", 0, 0,
                 Bytes().Be16(static_cast<unsigned>(items.size())).Append(Joined(items)));
}
inline Bytes Ipro(const std::vector<Bytes>& sinfs) {
  return FullBox("ipro", 0, 0,
                 Bytes().Be16(static_cast<unsigned>(sinfs.size())).Append(Joined(sinfs)));
}
/// A derived item and its inputs.
inline Bytes Dimg(unsigned from, const std::vector<unsigned>& to) {
  Bytes reference = Bytes().Be16(from).Be16(static_cast<unsigned>(to.size()));
  for (const unsigned id : to) reference.Be16(id);
  return Box("dimg", reference);
}
inline Bytes Iref(const Bytes& references) { return FullBox("iref", 0, 0, references); }
inline Bytes Meta(const Bytes& children) {
  return FullBox("meta", 0, 0, Hdlr("pict") + FullBox("pitm", 0, 0, Bytes().Be16(1)) + children);
}
inline Bytes ImageFile(const Bytes& metaChildren) {
  return Box("ftyp", Bytes().Text("heic").Be32(0).Text("mif1heic")) + Meta(metaChildren) +
         MediaData();
}

// Object descriptors.

inline Bytes Descriptor(unsigned tag, const Bytes& payload) {
  const auto n = static_cast<unsigned>(payload.size());
  return Bytes{}
             .Byte(tag)
             .Byte(0x80 | n >> 21)
             .Byte(0x80 | (n >> 14 & 0x7F))
             .Byte(0x80 | (n >> 7 & 0x7F))
             .Byte(n & 0x7F) +
         payload;
}
inline Bytes MarlinScheme(const char* scheme) {
  const Bytes schm = Box("schm", Bytes().Be32(0).Text(scheme).Be16(0x100));
  return Box("sinf", schm + Schi(Box("8id ", Bytes().Text("urn:x").Byte(0))));
}
/// One sample: both tracks' objects, of which number `pointing` points to IPMP descriptor 7 (0:
/// none does), and that descriptor with a scheme (null: without the command).
inline Bytes ObjectSample(unsigned pointing, const char* scheme) {
  Bytes objects;
  for (unsigned i = 1; i <= 2; ++i) {
    Bytes object = Bytes().Be16((256 + i) << 6 | 0x1F).Append(Descriptor(0x0F, Bytes().Be16(i)));
    if (i == pointing) object.Append(Descriptor(0x0A, {7}));
    objects.Append(Descriptor(0x11, object));
  }
  Bytes sample = Descriptor(0x01, objects);
  if (scheme != nullptr) {
    sample.Append(
        Descriptor(0x05, Descriptor(0x0B, Bytes{7}.Be16(0xA551).Append(MarlinScheme(scheme)))));
  }
  return sample;
}
/// A movie of two clear tracks (1: video, 2: audio) and a track of object descriptors (3).
inline Bytes ObjectMovie(const Bytes& sample, const char* handler = "odsm",
                         const Bytes& tref = Box("tref", Box("mpod", Bytes().Be32(1).Be32(2))),
                         const Bytes& entry = PlainEntry("mp4s")) {
  const Bytes head = FileType();
  const auto at = static_cast<std::uint32_t>(head.size() + 8);
  const auto size = static_cast<std::uint32_t>(sample.size());
  const Bytes tables = FullBox("stsc", 0, 0, Bytes().Be32(1).Be32(1).Be32(1).Be32(1)) +
                       FullBox("stsz", 0, 0, Bytes().Be32(0).Be32(1).Be32(size)) +
                       FullBox("stco", 0, 0, Bytes().Be32(1).Be32(at));
  const Bytes trak = Box("trak", Tkhd(3) + tref + Mdia(handler, Stsd({entry}) + tables));
  return head + Box("mdat", sample) + Moov(VideoTrak() + AudioTrak() + trak);
}

/// An OMA container with headers of an encryption method.
inline Bytes OmaFile(unsigned method) {
  const Bytes common = FullBox(
      "ohdr", 0, 0, Bytes{}.Byte(method).Byte(1).Be64(10).Be16(3).Be16(3).Be16(0).Text("cidurl"));
  const Bytes headers = FullBox("odhe", 0, 0, Bytes().Byte(10).Text("image/jpeg").Append(common));
  return Box("ftyp", Bytes().Text("odcf").Be32(2).Text("odcf")) +
         FullBox("odrm", 0, 0, headers + FullBox("odda", 0, 0, Bytes().Be64(16).Fill(16, 0x11)));
}

}  // namespace protection
