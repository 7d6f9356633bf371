// Writes the first inputs of every target from the project's own builders:
//   make_seeds FOLDER   makes FOLDER/judge and a folder for each other target
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/GoldenBoxes.h"
#include "tests/inspect/ProtectionFixtures.h"

namespace {

using namespace fixture;
using namespace golden;

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
  Save("interface", name, bytes);
  Save("samples", name, bytes);
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
           Ftyp("iso5") + Moov({Film(), Song("mp4a")}, Mvex()) + Moof() + mdat + Moof());
  SaveFile("compressed", Box("moov", Cmov(Moov({Film(), Song("drms")}))));
  SaveFile("large",
           Ftyp("qt  ") + SizedBox(1, "mdat", Bytes().Be64(40).Fill(24)) + Moov({Song("ima4")}));
}

void SaveInspected(const std::string& name, const Bytes& bytes) {
  Save("tree", name, bytes);
  Save("report", name, bytes);
}

/// One file for each way in which media or items are protected, and for what only looks so.
void SaveProtection() {
  namespace p = protection;
  SaveInspected("clear", p::ClearMovie());
  SaveInspected("second-track", p::ProtectedMovie());
  SaveInspected("second-entry",
                p::Movie(p::Trak(1, "vide", {p::ClearVideo(), p::ProtectedVideo()})));
  SaveInspected(
      "quicktime-sound",
      p::MovieOf(p::AudioEntry("mp4a", Box("wave", p::Frma("mp4a")) + p::Sinf("mp4a", "itun"), 1),
                 "soun"));
  SaveInspected("compressed",
                p::FileType() + p::Compressed(p::Moov(p::Trak(1, "vide", {p::ProtectedVideo()}))));
  SaveInspected("fragments", p::FragmentedMovie(p::ProtectedVideo()) +
                                 p::Fragment(p::Senc(), p::Pssh()) +
                                 p::Fragment(p::Seig() + p::SeigMap()));
  SaveInspected("fragments-clear",
                p::FragmentedMovie(p::ClearVideo()) + p::Fragment() + p::Fragment());
  SaveInspected("segment", p::SegmentType() + p::Fragment(p::PiffSenc(), p::PiffPssh()));
  SaveInspected("objects", p::ObjectMovie(p::ObjectSample(1, "ACBC")));
  SaveInspected("oma", p::OmaFile(1));
  SaveInspected("items",
                p::ImageFile(p::Iinf({p::Infe(1, 0, "grid"), p::Infe(2, 1)}) +
                             p::Ipro({Box("sinf", p::Schm("cenc"))}) + p::Iref(p::Dimg(1, {2}))));
  SaveInspected(
      "subtitles",
      p::MovieOf(p::PlainEntry("stpp", Bytes{0x61, 0, 0, 0} + p::Sinf("stpp", "cenc")), "subt"));
}

void SaveBoxes() {
  SaveBox("moov", 0, 0, Moov({Film(), Song("mp4a")}, UserData() + Mvex()));
  SaveBox("moof", 1, 0, Moof());
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

/// A sound track's tables, each with a program of moves behind it: see fuzz/TableTwins.cpp.
void SaveTables() {
  const Bytes track{1};  // sound
  const Bytes moves = Bytes().Fill(20, 4).Fill(20, 1);
  Save("tables", "times", Bytes{0} + track + Bytes{2, 0, 3, 100, 2, 50, 0} + moves);
  Save("tables", "sizes", Bytes{1} + track + Bytes{3, 0, 0, 10, 20, 30, 0} + moves);
  Save("tables", "syncs", Bytes{2, 3, 0, 1, 1, 30, 30} + moves);
  Save("tables", "chunks", Bytes{3} + track + Bytes{2, 0, 1, 1, 5, 3, 2, 1} + moves);
  Save("tables", "offsets", Bytes{4} + track + Bytes{1, 2, 0, 40, 80} + moves);
  Save("tables", "cursor",
       Bytes{5} + Bytes{1, 9, 10, 1, 2, 1, 3, 0} + Bytes{0, 2, 7, 8, 2, 50, 60, 0} + moves);
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
  SaveTables();
  SaveProtection();
  Save("utf", "mixed", Bytes{1, 64}.Text("Zo\xC3\xAB \xE2\x82\xAC \xF0\x9F\x8E\xB5"));
  return 0;
}
