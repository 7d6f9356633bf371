#include "bench/HostileMovies.h"

#include <algorithm>

#include "tests/GoldenBoxes.h"

namespace bench {

namespace {

using fixture::Ftyp;
using fixture::Moov;
using golden::Film;
using golden::Song;

constexpr std::uint32_t kMany = 0x7FFFFFFF;
constexpr std::size_t kLargestInflated = 256u << 20;

/// `one` as often as it fits into `size` bytes.
Bytes Times(const Bytes& one, std::size_t size) {
  Bytes all;
  for (std::size_t done = 0; done + one.size() <= size; done += one.size()) all.Append(one);
  return all;
}

/// A movie of one protected song, with more children of the movie box behind the track.
Bytes MovieWith(const Bytes& more) { return Ftyp("isom") + Moov({Song("drms")}, more); }

Bytes CompressedWith(const Bytes& more) {
  return Box("moov", fixture::Cmov(Moov({Song("drms")}, more)));
}

/// A track box whose sample table holds `tables`.
Bytes TrackOf(const Bytes& tables, const Bytes& front = fixture::Tkhd(2), const Bytes& back = {}) {
  const Bytes media =
      fixture::Mdhd() + fixture::Hdlr("soun") + Box("minf", fixture::Smhd() + Box("stbl", tables));
  return Box("trak", front + Box("mdia", media) + back);
}

Bytes SmallTables() {
  const fixture::Track song = Song("mp4a");
  return fixture::Stsd(fixture::AudioEntry("mp4a")) + fixture::Stts({{3, 7}}) +
         fixture::Stsc({{1, 1}}) + fixture::Stsz(song.sizes) + fixture::Stco(song.offsets);
}

Bytes Rows(std::string_view type, std::size_t width, std::size_t bytes) {
  const std::size_t count = bytes / width;
  Bytes rows = Bytes().Be32(static_cast<std::uint32_t>(count));
  for (std::uint32_t i = 0; i < count * width / 4; ++i) rows.Be32(i + 1);
  return FullBox(type, 0, 0, rows);
}

Bytes ShortHeader(unsigned id) { return FullBox("tfhd", 0, 0, Bytes().Be32(id)); }
Bytes Run(std::uint32_t samples, unsigned flags = 0) {
  return FullBox("trun", 0, flags, Bytes().Be32(samples));
}

/// Text items of nothing but a header.
Bytes EmptyTexts(std::size_t size) { return Box("udta", Times(Box("\xA9nam"), size)); }

/// Each item list claims the text bytes of those behind it, and steps back over them.
Bytes OverlappingTexts(std::size_t size) {
  const Bytes item = SizedBox(12 + 255, "\xA9nam", Bytes().Be16(255).Be16(0));
  const Bytes lists = Times(Box("ilst", item), size);
  return Box("udta", Box("meta", Bytes().Be32(0) + lists + Bytes().Fill(300)));
}

/// Sound descriptions that each search the whole rest of the file for a child.
Bytes Searches(std::size_t size) {
  const Bytes fixed = Bytes().Fill(6).Be16(1).Fill(8).Be16(2).Be16(16).Fill(8).Be32(8).Text("abcd");
  const Bytes search = FullBox("stsd", 0, 0, Bytes().Be32(1) + SizedBox(kMany, "twos", fixed));
  return TrackOf(Times(search, std::min<std::size_t>(size / 4, 1u << 20))) +
         Box("free", Bytes().Fill(size / 2, 7));
}

/// A media header of one byte reads its fields from the boxes behind it and steps back.
Bytes OverlappingHeaders(std::size_t size) {
  return Times(SizedBox(9, "mvhd", Bytes().Byte(0)), size) + Bytes().Fill(120);
}

Bytes FragmentFile(const Bytes& fragments) {
  return Ftyp("isom") + Moov({Film(), Song("drms")}, golden::Mvex()) + fragments;
}

/// A run at the end of the file, whose first entry is there and whose other ones are not. Reading
/// stops at the end, so the box steps back to its own start and is read over and over.
Bytes RunAtTheEnd() {
  const Bytes run = SizedBox(256, "trun", Bytes().Be32(0x100).Be32(65).Be32(1));
  constexpr std::uint32_t kRounds = 256 * 400000;
  return FragmentFile(SizedBox(kRounds + 16, "moof", SizedBox(kRounds + 8, "traf", run)));
}

/// Two tracks publish into one record in turn.
Bytes SharedRecord(std::string_view type, std::size_t width, std::size_t size) {
  const Bytes tables = SmallTables() + Rows(type, width, size / 2);
  const Bytes tracks =
      TrackOf(tables, fixture::Tkhd(1)) + TrackOf(tables, fixture::Tkhd(1), fixture::Tkhd(2));
  const Bytes turn = Box("traf", ShortHeader(1) + Run(1)) + Box("traf", ShortHeader(2) + Run(1));
  return Ftyp("isom") + Box("moov", fixture::Mvhd() + tracks + golden::Mvex()) +
         Box("moof", Times(turn, size / 4));
}

Bytes TrackHeaders(std::size_t size) {
  Bytes headers;
  const auto count = static_cast<std::uint32_t>(std::min<std::size_t>(size / 92, 16 * 1024 - 2));
  for (std::uint32_t i = 0; i < count; ++i) headers.Append(fixture::Tkhd(i + 10));
  return MovieWith(TrackOf(SmallTables(), headers));
}

/// Track boxes of the least that succeeds.
Bytes Tracks(std::size_t size) {
  return Times(
      Box("trak", Box("mdia", fixture::Mdhd() + fixture::Hdlr("x", "") + Box("minf", Box("stbl")))),
      size);
}

/// Track boxes further apart than the reader's window reaches at first.
Bytes Jumps(std::size_t size) {
  const Bytes media = fixture::Mdhd() + fixture::Hdlr("x", "") + Box("minf", Box("stbl"));
  const Bytes far = Box("tref", SizedBox(8 + 2000, "hint") + Bytes().Fill(2000));
  const Bytes trak = Box("trak", Box("mdia", media) + far);
  return Times(trak, size);
}

/// The largest inflated movie made of `one`, as far as it compresses.
Bytes Bomb(const Bytes& one, bool inUserData = false, std::size_t size = kLargestInflated) {
  const Bytes all = Times(one, size - 8192);
  return CompressedWith(inUserData ? Box("udta", all) : all);
}

Bytes SmallCompressed() { return fixture::Cmov(SizedBox(8, "moov") + Bytes().Fill(60)); }

}  // namespace

std::vector<HostileMovie> HostileMovies() {
  using Size = std::size_t;
  return {
      {"track headers", 0, TrackHeaders},
      {"small track boxes", 0, [](Size n) { return MovieWith(Tracks(n)); }},
      {"jumping track boxes", 0, [](Size n) { return MovieWith(Jumps(n)); }},
      {"small boxes", 0, [](Size n) { return MovieWith(Times(Box("free"), n)); }},
      {"empty texts", 0, [](Size n) { return MovieWith(EmptyTexts(n)); }},
      {"overlapping texts", 0, [](Size n) { return MovieWith(OverlappingTexts(n)); }},
      {"overlapping headers", 0, [](Size n) { return MovieWith(OverlappingHeaders(n)); }},
      {"sound description searches", 0, [](Size n) { return Moov({Song("drms")}, Searches(n)); }},
      {"edits", 0,
       [](Size n) {
         const Bytes edits = Box("edts", Rows("elst", 12, n));
         return MovieWith(TrackOf(SmallTables(), fixture::Tkhd(5) + edits));
       }},
      {"chunk offsets", 0,
       [](Size n) { return MovieWith(TrackOf(SmallTables() + Rows("stco", 4, n))); }},
      {"chunk runs", 0,
       [](Size n) { return MovieWith(TrackOf(SmallTables() + Rows("stsc", 12, n))); }},
      {"durations", 0,
       [](Size n) { return MovieWith(TrackOf(SmallTables() + Rows("stts", 8, n))); }},
      {"empty fragments", 0, [](Size n) { return FragmentFile(Times(Box("moof"), n)); }},
      {"fragments of unknown tracks", 0,
       [](Size n) {
         Bytes all;
         for (unsigned i = 0; i < n / 32; ++i) all.Append(Box("moof", Box("traf", ShortHeader(i))));
         return FragmentFile(all);
       }},
      {"empty track fragments", 0,
       [](Size n) { return FragmentFile(Box("moof", Times(Box("traf"), n))); }},
      {"runs of one sample", 0,
       [](Size n) {
         return FragmentFile(Box("moof", Box("traf", ShortHeader(2) + Times(Run(1), n))));
       }},
      {"runs of a thousand samples", 0,
       [](Size n) {
         return FragmentFile(Box("moof", Box("traf", ShortHeader(2) + Times(Run(1000), n))));
       }},
      {"runs of 2^26 samples", 0,
       [](Size n) {
         return FragmentFile(Box("moof", Box("traf", ShortHeader(2) + Times(Run(1u << 26), n))));
       }},
      {"track extends", 0,
       [](Size n) { return MovieWith(Box("mvex", Times(golden::Trex(7), n))); }},
      {"run at the end", 0, [](Size) { return RunAtTheEnd(); }},
      {"shared record, chunk offsets", 0, [](Size n) { return SharedRecord("stco", 4, n); }},
      {"shared record, durations", 0, [](Size n) { return SharedRecord("stts", 8, n); }},
      {"compressed: zeros", 1, [](Size) { return Bomb(Box("free", Bytes().Fill(1u << 20))); }},
      {"compressed: small boxes", 1, [](Size) { return Bomb(Box("free")); }},
      {"compressed: empty texts", 1, [](Size) { return Bomb(Box("\xA9nam"), true); }},
      {"compressed: headers", 1, [](Size) { return Bomb(SizedBox(9, "mvhd", Bytes().Byte(0))); }},
      {"compressed: track boxes", 1, [](Size) { return Bomb(Tracks(200)); }},
      {"compressed: searches", 1,
       [](Size) { return Box("moov", fixture::Cmov(Moov({Song("drms")}, Searches(500u << 20)))); }},
      {"compressed: compressed", 2,
       [](Size) { return Bomb(SmallCompressed(), false, kLargestInflated / 2); }},
      {"compressed movies", 1, [](Size n) { return MovieWith(Times(SmallCompressed(), n)); }},
  };
}

}  // namespace bench
