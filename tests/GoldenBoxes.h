#pragma once

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "boxes/base/BoxUUID.h"
#include "boxes/fragments/BoxMOOF.h"
#include "boxes/movie/BoxCMOV.h"
#include "boxes/movie/BoxFTYP.h"
#include "boxes/movie/BoxMDAT.h"
#include "boxes/movie/BoxMOOV.h"
#include "boxes/track/BoxEDTS.h"
#include "io/FourCC.h"
#include "tests/MovieFixtures.h"

/// One sound payload for every box class: what the suites on broken input break.
namespace golden {

using Maker = std::unique_ptr<BoxBase> (*)();

struct Sample {
  std::string name;
  Maker make;
  Bytes payload;
  std::string handler = "soun";  ///< of the current track while the box is read
  std::string format;            ///< of the current track while the box is read
};

/// What a test report shows of a sample.
inline void PrintTo(const Sample& sample, std::ostream* out) { *out << sample.name; }

template <class Box>
std::unique_ptr<BoxBase> Make() {
  return std::make_unique<Box>();
}

template <unsigned kType>
std::unique_ptr<BoxBase> MakeOffsets() {
  return std::make_unique<BoxSTCO>(kType);
}

/// A whole box without its 8-byte header.
inline Bytes PayloadOf(const Bytes& box) {
  Bytes payload;
  for (std::size_t i = 8; i < box.size(); ++i) payload.Byte(box[i]);
  return payload;
}

inline Bytes Esds(unsigned objectType) {
  return FullBox("esds", 0, 0,
                 Bytes{3, 25, 0, 1, 0, 4, 17} + Bytes().Byte(objectType).Byte(0x15).Fill(11) +
                     Bytes{5, 2, 0x12, 0x10, 6, 1, 2});
}

inline Bytes TextItem(std::string_view key, std::string_view text) {
  return Box(key, Bytes().Be16(static_cast<unsigned>(text.size())).Be16(0).Text(text));
}

inline Bytes ListItem(std::string_view key, std::string_view text) {
  return Box(key, Box("data", Bytes().Be32(1).Be32(0).Text(text)));
}

inline Bytes ItemList() {
  return Box("ilst", ListItem("\xA9nam", "Name") + ListItem("\xA9gen", "Genre"));
}

inline Bytes Meta() { return Box("meta", Bytes().Be32(0) + fixture::Hdlr("mdir") + ItemList()); }

inline Bytes UserData() {
  return Box("udta", TextItem("\xA9"
                              "ART",
                              "Artist") +
                         TextItem("\xA9"
                                  "day",
                                  "2026") +
                         Meta());
}

inline fixture::Track Song(const std::string& format) {
  fixture::Track song;
  song.id = 2;
  song.format = format;
  song.handler = "soun";
  song.timescale = 44100;
  song.times = {{3, 1024}, {1, 500}};
  song.chunks = {{1, 2}, {2, 1}};
  song.offsets = {1500, 2500, 3500};
  song.edits = {{100, -1}, {300, 10}};
  song.atoms = Esds(0x40);
  return song;
}

inline fixture::Track Film() {
  fixture::Track film;
  film.sync = {1, 3};
  film.edits = {{400, 0}};
  film.atoms = Box("avcC", Bytes{1, 66, 0, 30, 0xFF});
  return film;
}

inline Bytes Trex(std::uint32_t id) {
  return FullBox("trex", 0, 0, Bytes().Be32(id).Be32(1).Be32(100).Be32(20).Be32(0));
}

inline Bytes Mvex() {
  return Box("mvex", FullBox("mehd", 0, 0, Bytes().Be32(9)) + Trex(1) + Trex(2));
}

/// Two samples with every per-sample field, and the first sample's flags.
inline Bytes Trun() {
  Bytes run = Bytes().Be32(2).Be32(0).Be32(0x10000);
  for (const unsigned v : {2u, 3u, 4u, 5u, 6u, 7u, 0x10000u, 8u}) run.Be32(v);
  return FullBox("trun", 0, 0xF05, run);
}

inline Bytes Tfhd(std::uint32_t id) {
  return FullBox("tfhd", 0, 0x3B, Bytes().Be32(id).Be64(5000).Be32(1).Be32(7).Be32(8).Be32(0));
}

inline Bytes Traf(std::uint32_t id) {
  const Bytes uniform = FullBox("trun", 0, 1, Bytes().Be32(3).Be32(8));
  return Box("traf", Tfhd(id) + uniform + Trun());
}

inline Bytes Moof() {
  return Box("moof", FullBox("mfhd", 0, 0, Bytes().Be32(1)) + Traf(1) + Traf(2));
}

inline Bytes Wave() {
  return Box("wave", Box("frma", Bytes().Text("in24")) + Box("enda", Bytes().Be16(1)));
}

inline Bytes Movie() { return fixture::Moov({Film(), Song("mp4a")}, UserData() + Mvex()); }

inline std::vector<Sample> Containers() {
  return {{"moov", Make<BoxMOOV>, PayloadOf(Movie())},
          {"moov-cmov", Make<BoxMOOV>, fixture::Cmov(fixture::Moov({Film()}))},
          {"cmov", Make<BoxCMOV>, PayloadOf(fixture::Cmov(fixture::Moov({Film()})))},
          {"trak", Make<BoxTRAK>, PayloadOf(fixture::Trak(Song("mp4a")))},
          {"mdia", Make<BoxMDIA>, PayloadOf(fixture::Mdia(Film()))},
          {"minf", Make<BoxMINF>, PayloadOf(fixture::Minf(Song("drms")))},
          {"stbl", Make<BoxSTBL>, PayloadOf(fixture::Stbl(Song("mp4a")))},
          {"mvex", Make<BoxMVEX>, PayloadOf(Mvex())},
          {"moof", Make<BoxMOOF>, PayloadOf(Moof())},
          {"traf", Make<BoxTRAF>, PayloadOf(Traf(1))},
          {"udta", Make<BoxUDTA>, PayloadOf(UserData())},
          {"meta", Make<BoxMeta>, PayloadOf(Meta())},
          {"ilst", Make<BoxIlst>, PayloadOf(ItemList())}};
}

inline std::vector<Sample> Leaves() {
  return {{"ftyp", Make<BoxFTYP>, PayloadOf(fixture::Ftyp("abcd", {"efgh", "isom"}))},
          {"mvhd", Make<BoxMVHD>, PayloadOf(fixture::Mvhd(600, 5, 1))},
          {"tkhd", Make<BoxTKHD>, PayloadOf(fixture::Tkhd(1))},
          {"mdhd", Make<BoxMDHD>, PayloadOf(fixture::Mdhd(600, 5, 1))},
          {"hdlr", Make<BoxHDLR>, PayloadOf(fixture::Hdlr("soun"))},
          {"vmhd", Make<BoxVMHD>, PayloadOf(fixture::Vmhd())},
          {"smhd", Make<BoxSMHD>, PayloadOf(fixture::Smhd())},
          {"dinf", Make<BoxDINF>, PayloadOf(fixture::Dinf())},
          {"edts", Make<BoxEDTS>, PayloadOf(fixture::Edts({{1, 2}}))},
          {"mdat", Make<BoxMDAT>, Bytes().Fill(16)},
          {"uuid", Make<BoxUUID>, Bytes().Fill(16)},
          {"esds", Make<BoxESDS>, PayloadOf(Esds(0x69))},
          {"avcC", Make<BoxAVCC>, Bytes{1, 66, 0, 30, 0xFF}},
          {"wave", Make<BoxWAVE>, PayloadOf(Wave()), "soun", "in24"},
          {"wave-QDM2", Make<BoxWAVE>, PayloadOf(Wave()), "soun", "QDM2"},
          {"mehd", Make<BoxMEHD>, Bytes().Be32(0x01000000).Be64(9)},
          {"trex", Make<BoxTREX>, PayloadOf(Trex(1))},
          {"mfhd", Make<BoxMFHD>, Bytes().Be32(0).Be32(1)},
          {"tfhd", Make<BoxTFHD>, PayloadOf(Tfhd(1))},
          {"trun", Make<BoxTRUN>, PayloadOf(Trun())}};
}

inline std::vector<Sample> Tables() {
  const Bytes sequence = Box("SMI ", Bytes().Text("SEQH").Be32(4).Fill(4));
  return {
      {"stsd-sound", Make<BoxSTSD>,
       PayloadOf(fixture::Stsd(fixture::AudioEntry("mp4a", Esds(0x40))))},
      {"stsd-alac", Make<BoxSTSD>,
       PayloadOf(fixture::Stsd(fixture::AudioEntry("alac", Box("alac", Bytes().Fill(20)))))},
      {"stsd-wave", Make<BoxSTSD>, PayloadOf(fixture::Stsd(fixture::AudioEntry("in24", Wave())))},
      {"stsd-video", Make<BoxSTSD>,
       PayloadOf(fixture::Stsd(fixture::VisualEntry("SVQ3", sequence))), "vide"},
      {"stsd-hint", Make<BoxSTSD>, PayloadOf(fixture::Stsd(fixture::VisualEntry("rtp "))), "hint"},
      {"stts", Make<BoxSTTS>, PayloadOf(fixture::Stts({{3, 100}, {2, 50}}))},
      {"stts-video", Make<BoxSTTS>, PayloadOf(fixture::Stts({{3, 100}, {2, 50}})), "vide"},
      {"stsc", Make<BoxSTSC>, PayloadOf(fixture::Stsc({{1, 2}, {3, 1}}))},
      {"stsz", Make<BoxSTSZ>, PayloadOf(fixture::Stsz({1, 2, 3}))},
      {"stsz-constant", Make<BoxSTSZ>, PayloadOf(fixture::StszConstant(9, 3))},
      {"stss", Make<BoxSTSS>, PayloadOf(fixture::Stss({1, 3}))},
      {"stco", MakeOffsets<mp4::FourCC("stco")>, PayloadOf(fixture::Stco({1, 3}))},
      {"co64", MakeOffsets<mp4::FourCC("co64")>, PayloadOf(fixture::Co64({1, 3}))}};
}

/// Every box class at least once.
inline std::vector<Sample> All() {
  std::vector<Sample> all = Containers();
  for (const auto& group : {Leaves(), Tables()}) {
    all.insert(all.end(), group.begin(), group.end());
  }
  return all;
}

/// A context whose current track has the handler and format that a sample wants.
inline std::unique_ptr<Mp4Context> Surroundings(const Sample& sample) {
  auto context = std::make_unique<Mp4Context>();
  Mp4Context::TRACK* track = context->AddTrack(1);
  context->SetCurrentTrack(1);
  const auto word = [](const std::string& text) {
    return text.size() == 4 ? mp4::LoadLe32(reinterpret_cast<const unsigned char*>(text.data()))
                            : 0u;
  };
  track->handlerType = word(sample.handler);
  track->format = word(sample.format);
  return context;
}

}  // namespace golden
