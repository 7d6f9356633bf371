// Writes the first inputs of every target from the project's own builders:
//   make_seeds FOLDER   makes FOLDER/judge, FOLDER/demux, FOLDER/boxes, FOLDER/utf
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/MovieFixtures.h"

namespace {

using namespace fixture;

std::filesystem::path root;

void Save(const std::string& target, const std::string& name, const Bytes& bytes) {
  const std::filesystem::path dir = root / target;
  std::filesystem::create_directories(dir);
  std::ofstream out(dir / ("seed-" + name), std::ios::binary);
  out.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
}

void SaveFile(const std::string& name, const Bytes& bytes) {
  Save("judge", name, bytes);
  Save("demux", name, bytes);
}

Bytes Text(std::string_view key, std::string_view text) {
  return Box(key, Bytes().Be16(static_cast<unsigned>(text.size())).Be16(0).Text(text));
}

Bytes Item(std::string_view key, std::string_view text) {
  return Box(key, Box("data", Bytes().Be32(1).Be32(0).Text(text)));
}

Bytes UserData() {
  const Bytes ilst = Box("ilst", Item("\xA9"
                                      "nam",
                                      "Name") +
                                     Item("\xA9"
                                          "alb",
                                          "Album"));
  return Box("udta", Text("\xA9"
                          "ART",
                          "Artist") +
                         Box("meta", Bytes().Be32(0) + Hdlr("mdir") + ilst));
}

Bytes Esds(unsigned objectType) {
  return FullBox("esds", 0, 0,
                 Bytes{3, 25, 0, 1, 0, 4, 17} + Bytes().Byte(objectType).Byte(0x15).Fill(11) +
                     Bytes{5, 2, 0x12, 0x10, 6, 1, 2});
}

Track Song(const std::string& format) {
  Track song;
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

Track Film() {
  Track film;
  film.sync = {1, 3};
  film.edits = {{400, 0}};
  film.atoms = Box("avcC", Bytes{1, 66, 0, 30, 0xFF});
  return film;
}

Bytes Mvex() {
  Bytes trex;
  for (const unsigned id : {1u, 2u}) {
    trex.Append(FullBox("trex", 0, 0, Bytes().Be32(id).Be32(1).Be32(100).Be32(20).Be32(0)));
  }
  return Box("mvex", FullBox("mehd", 0, 0, Bytes().Be32(9)) + trex);
}

Bytes Fragment() {
  const Bytes uniform = FullBox("trun", 0, 1, Bytes().Be32(3).Be32(8));
  const Bytes mixed = FullBox(
      "trun", 0, 0xF04,
      Bytes().Be32(2).Be32(0).Be32(1).Be32(2).Be32(3).Be32(4).Be32(5).Be32(6).Be32(0x10000).Be32(
          8));
  return Box("moof", FullBox("mfhd", 0, 0, Bytes().Be32(1)) +
                         Box("traf", FullBox("tfhd", 0, 0x39,
                                             Bytes().Be32(1).Be64(5000).Be32(7).Be32(8).Be32(0)) +
                                         uniform + mixed) +
                         Box("traf", FullBox("tfhd", 0, 0, Bytes().Be32(2)) + mixed));
}

void SaveBox(const std::string& name, unsigned maker, unsigned surround, const Bytes& box) {
  Bytes input{static_cast<int>(maker), static_cast<int>(surround), 0, 0};
  for (std::size_t i = 8; i < box.size(); ++i) input.Byte(box[i]);
  Save("boxes", name, input);
}

void SaveFiles() {
  const Bytes mdat = Box("mdat", Bytes().Fill(200, 7));
  SaveFile("clear", Ftyp("isom") + Moov({Film(), Song("mp4a")}, UserData()) + mdat);
  SaveFile("protected", Ftyp("M4A ", {"mp42"}) + Moov({Song("drms")}) + mdat);
  SaveFile("fragments",
           Ftyp("iso5") + Moov({Film(), Song("mp4a")}, Mvex()) + Fragment() + mdat + Fragment());
  SaveFile("compressed", Box("moov", Cmov(Moov({Film(), Song("drms")}))));
  SaveFile("large",
           Ftyp("qt  ") + SizedBox(1, "mdat", Bytes().Be64(40).Fill(24)) + Moov({Song("ima4")}));
}

void SaveBoxes() {
  SaveBox("moov", 0, 0, Moov({Film(), Song("mp4a")}, UserData() + Mvex()));
  SaveBox("moof", 1, 0, Fragment());
  SaveBox("trak", 2, 0, Trak(Film()));
  SaveBox("stbl", 5, 0x30, Stbl(Song("mp4a")));
  SaveBox("stsd-sound", 6, 0x70, Stsd(AudioEntry("mp4a", Esds(0x69))));
  SaveBox("stsd-video", 6, 1, Stsd(VisualEntry("avc1", Box("avcC", Bytes().Fill(8)))));
  SaveBox("stts", 7, 0xF0, Stts({{3, 100}, {2, 50}}));
  SaveBox("stsc", 8, 0xF0, Stsc({{1, 2}, {3, 1}}));
  SaveBox("stsz", 9, 0x10, Stsz({1, 2, 3}));
  SaveBox("stss", 10, 1, Stss({1, 3}));
  SaveBox("cmov", 13, 0, Cmov(Moov({Film()})));
  SaveBox("udta", 20, 0, UserData());
  SaveBox("wave", 19, 0x48,
          Box("wave", Box("frma", Bytes().Text("in24")) + Box("enda", Bytes().Be16(1))));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: make_seeds FOLDER\n", stderr);
    return 2;
  }
  root = argv[1];
  SaveFiles();
  SaveBoxes();
  Save("utf", "mixed", Bytes{1, 64}.Text("Zo\xC3\xAB \xE2\x82\xAC \xF0\x9F\x8E\xB5"));
  return 0;
}
