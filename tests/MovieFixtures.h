#pragma once

#include <zlib.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/Bytes.h"

/// Complete movie boxes with sensible values, for tests that need a whole track or a whole movie.
/// A test changes the one thing it is about:
///
///   fixture::Track track{.id = 7, .format = "drms", .handler = "soun"};
///   Bytes file = fixture::Ftyp("isom") + fixture::Moov({track});
///
/// Sizes are right; PutBe32 on the result makes a wrong one.
namespace fixture {

using Words = std::vector<std::uint32_t>;

inline Bytes BoxOf32(std::string_view type, const Words& words) {
  Bytes payload;
  for (const std::uint32_t word : words) payload.Be32(word);
  return FullBox(type, 0, 0, payload);
}

/// The 36 bytes of the identity matrix.
inline Bytes Matrix() {
  Bytes matrix;
  for (const std::uint32_t v : {0x10000u, 0u, 0u, 0u, 0x10000u, 0u, 0u, 0u, 0x40000000u}) {
    matrix.Be32(v);
  }
  return matrix;
}

/// Creation time, modification time, an optional fixed middle and a duration: the run of fields
/// that is 32 bits wide in version 0 and 64 bits wide in version 1.
inline Bytes Times(unsigned version, const Bytes& middle, std::uint64_t duration) {
  Bytes times;
  if (version == 1) return times.Be64(11).Be64(22).Append(middle).Be64(duration);
  return times.Be32(11).Be32(22).Append(middle).Be32(static_cast<std::uint32_t>(duration));
}

/// "ftyp" with minor version 512.
inline Bytes Ftyp(std::string_view major, const std::vector<std::string>& compatible = {"isom"}) {
  Bytes payload = Bytes().Text(major).Be32(512);
  for (const std::string& brand : compatible) payload.Text(brand);
  return Box("ftyp", payload);
}

/// "mvhd": payload 100 bytes in version 0, 112 in version 1.
inline Bytes Mvhd(std::uint32_t timescale = 1000, std::uint64_t duration = 0,
                  unsigned version = 0) {
  Bytes rest = Bytes().Be32(0x10000).Be16(0x100).Fill(10).Append(Matrix()).Fill(24).Be32(2);
  return FullBox("mvhd", version, 0, Times(version, Bytes().Be32(timescale), duration) + rest);
}

/// "tkhd": payload 84 bytes in version 0, 96 in version 1.
inline Bytes Tkhd(std::uint32_t id, std::uint64_t duration = 0, unsigned version = 0,
                  std::uint32_t width = 320u << 16, std::uint32_t height = 240u << 16,
                  unsigned volume = 0x100) {
  Bytes rest = Bytes().Fill(8).Fill(4).Be16(volume).Fill(2).Append(Matrix());
  rest.Be32(width).Be32(height);
  return FullBox("tkhd", version, 7, Times(version, Bytes().Be32(id).Be32(0), duration) + rest);
}

/// "mdhd": payload 24 bytes in version 0, 36 in version 1; language "und".
inline Bytes Mdhd(std::uint32_t timescale = 1000, std::uint64_t duration = 0, unsigned version = 0,
                  unsigned language = 0x55C4) {
  const Bytes times = Times(version, Bytes().Be32(timescale), duration);
  return FullBox("mdhd", version, 0, times + Bytes().Be16(language).Be16(0));
}

/// "hdlr" with a zero-terminated name.
inline Bytes Hdlr(std::string_view handler, std::string_view name = "Handler") {
  return FullBox("hdlr", 0, 0, Bytes().Be32(0).Text(handler).Fill(12).Text(name).Byte(0));
}

inline Bytes Vmhd() { return FullBox("vmhd", 0, 1, Bytes().Fill(8)); }
inline Bytes Smhd() { return FullBox("smhd", 0, 0, Bytes().Fill(4)); }
inline Bytes Dinf() {
  return Box("dinf", FullBox("dref", 0, 0, Bytes().Be32(1) + FullBox("url ", 0, 1)));
}

/// A visual sample entry, 86 bytes without child atoms.
inline Bytes VisualEntry(std::string_view format, const Bytes& atoms = {}, unsigned width = 320,
                         unsigned height = 240) {
  Bytes entry = Bytes().Fill(6).Be16(1).Fill(16).Be16(width).Be16(height);
  entry.Be32(0x480000).Be32(0x480000).Be32(0).Be16(1);
  return Box(format, entry.Fill(32).Be16(24).Be16(0xFFFF) + atoms);
}

/// A version 0 audio sample entry, 36 bytes without child atoms.
inline Bytes AudioEntry(std::string_view format, const Bytes& atoms = {}, unsigned channels = 2,
                        unsigned sampleSize = 16, std::uint32_t rate = 44100) {
  Bytes entry = Bytes().Fill(6).Be16(1).Be16(0).Be16(0).Be32(0).Be16(channels).Be16(sampleSize);
  return Box(format, entry.Be16(0).Be16(0).Be32(rate << 16) + atoms);
}

/// "stsd" holding one complete entry.
inline Bytes Stsd(const Bytes& entry) { return FullBox("stsd", 0, 0, Bytes().Be32(1) + entry); }

struct Run {
  std::uint32_t count, delta;
};
/// "stts"
inline Bytes Stts(const std::vector<Run>& runs) {
  Words words{static_cast<std::uint32_t>(runs.size())};
  for (const Run& run : runs) words.insert(words.end(), {run.count, run.delta});
  return BoxOf32("stts", words);
}

struct ChunkRun {
  std::uint32_t firstChunk, samplesPerChunk, description = 1;
};
/// "stsc"
inline Bytes Stsc(const std::vector<ChunkRun>& runs) {
  Words words{static_cast<std::uint32_t>(runs.size())};
  for (const ChunkRun& run : runs) {
    words.insert(words.end(), {run.firstChunk, run.samplesPerChunk, run.description});
  }
  return BoxOf32("stsc", words);
}

/// "stsz" in table form.
inline Bytes Stsz(const Words& sizes) {
  Words words{0, static_cast<std::uint32_t>(sizes.size())};
  words.insert(words.end(), sizes.begin(), sizes.end());
  return BoxOf32("stsz", words);
}
/// "stsz" with one constant size.
inline Bytes StszConstant(std::uint32_t size, std::uint32_t count) {
  return BoxOf32("stsz", {size, count});
}

/// A count and that many 32-bit entries: "stco" and "stss".
inline Bytes Counted(std::string_view type, const Words& entries) {
  Words words{static_cast<std::uint32_t>(entries.size())};
  words.insert(words.end(), entries.begin(), entries.end());
  return BoxOf32(type, words);
}
inline Bytes Stco(const Words& offsets) { return Counted("stco", offsets); }
/// Sample numbers are 1-based.
inline Bytes Stss(const Words& samples) { return Counted("stss", samples); }
inline Bytes Co64(const std::vector<std::uint64_t>& offsets) {
  Bytes payload = Bytes().Be32(static_cast<std::uint32_t>(offsets.size()));
  for (const std::uint64_t offset : offsets) payload.Be64(offset);
  return FullBox("co64", 0, 0, payload);
}

struct Edit {
  std::uint32_t segmentDuration;
  std::int32_t mediaTime;
  std::uint32_t mediaRate = 0x10000;
};
/// "edts" holding one version 0 "elst".
inline Bytes Edts(const std::vector<Edit>& edits) {
  Words words{static_cast<std::uint32_t>(edits.size())};
  for (const Edit& edit : edits) {
    words.insert(words.end(), {edit.segmentDuration, static_cast<std::uint32_t>(edit.mediaTime),
                               edit.mediaRate});
  }
  return Box("edts", BoxOf32("elst", words));
}

/// Everything a track box is made from. As it stands: a video track of four samples of 100 units,
/// one a chunk.
struct Track {
  std::uint32_t id = 1;
  std::string format = "avc1";
  std::string handler = "vide";
  std::uint32_t timescale = 1000;  ///< media timescale
  std::uint64_t duration = 400;    ///< of the media header
  std::vector<Run> times = {{4, 100}};
  std::vector<ChunkRun> chunks = {{1, 1}};
  Words sizes = {10, 20, 30, 40};
  Words offsets = {1000, 2000, 3000, 4000};
  Words sync = {};               ///< no "stss" when empty
  std::vector<Edit> edits = {};  ///< no "edts" when empty
  Bytes atoms = {};              ///< inside the sample entry
};

inline Bytes Stbl(const Track& t) {
  const bool audio = t.handler == "soun";
  const Bytes entry = audio ? AudioEntry(t.format, t.atoms) : VisualEntry(t.format, t.atoms);
  Bytes tables = Stsd(entry) + Stts(t.times) + Stsc(t.chunks) + Stsz(t.sizes) + Stco(t.offsets);
  if (!t.sync.empty()) tables.Append(Stss(t.sync));
  return Box("stbl", tables);
}
inline Bytes Minf(const Track& t) {
  return Box("minf", (t.handler == "soun" ? Smhd() : Vmhd()) + Dinf() + Stbl(t));
}
inline Bytes Mdia(const Track& t) {
  return Box("mdia", Mdhd(t.timescale, t.duration) + Hdlr(t.handler) + Minf(t));
}
inline Bytes Trak(const Track& t) {
  Bytes children = Tkhd(t.id, t.duration);
  if (!t.edits.empty()) children.Append(Edts(t.edits));
  return Box("trak", children + Mdia(t));
}
inline Bytes Moov(const std::vector<Track>& tracks, const Bytes& more = {}) {
  Bytes children = Mvhd(1000, 400);
  for (const Track& track : tracks) children.Append(Trak(track));
  return Box("moov", children + more);
}

/// Bytes as one zlib stream.
inline Bytes Deflated(const Bytes& plain) {
  uLongf length = compressBound(plain.size());
  std::vector<unsigned char> packed(length);
  compress(packed.data(), &length, plain.data(), plain.size());
  Bytes out;
  for (std::size_t i = 0; i < length; ++i) out.Byte(packed[i]);
  return out;
}
/// "cmvd" of a zlib stream, announcing `announced` bytes.
inline Bytes Cmvd(std::uint32_t announced, const Bytes& stream) {
  return Box("cmvd", Bytes().Be32(announced) + stream);
}
/// "cmov" of a plain box, usually a whole "moov".
inline Bytes Cmov(const Bytes& plain) {
  return Box("cmov", Box("dcom", Bytes().Text("zlib")) +
                         Cmvd(static_cast<std::uint32_t>(plain.size()), Deflated(plain)));
}

}  // namespace fixture
