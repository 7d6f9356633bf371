// Writes two playable-looking M4A files of one second, clear.m4a and protected.m4a, into a folder.
// They differ in the sample entry and in the audio bytes alone.
#include <cstdint>
#include <cstdio>
#include <string>

#include "tests/Bytes.h"

namespace {

constexpr std::uint32_t kRate = 44100;
constexpr std::uint32_t kFrames = 43;
constexpr std::uint32_t kSamplesPerFrame = 1024;
constexpr std::uint32_t kDuration = kFrames * kSamplesPerFrame;

/// One AAC frame of silence: a mono channel with no spectral bands (29 zero bits), then the end
/// mark (three one bits). The protected file holds the same number of meaningless bytes.
Bytes Frame(bool isProtected) {
  return isProtected ? Bytes{0xA7, 0x3C, 0x91, 0x5E} : Bytes{0, 0, 0, 7};
}

Bytes Matrix() { return Bytes().Be32(0x10000).Fill(12).Be32(0x10000).Fill(12).Be32(0x40000000); }

Bytes FileType() {
  return Box("ftyp", Bytes().Text("M4A ").Be32(0).Text("M4A ").Text("mp42").Text("isom"));
}

Bytes MovieHeader() {
  Bytes body = Bytes().Be32(0).Be32(0).Be32(kRate).Be32(kDuration);
  body.Be32(0x10000).Be16(0x100).Fill(10).Append(Matrix()).Fill(24).Be32(2);
  return FullBox("mvhd", 0, 0, body);
}

Bytes TrackHeader() {
  Bytes body = Bytes().Be32(0).Be32(0).Be32(1).Fill(4).Be32(kDuration);
  body.Fill(8).Fill(4).Be16(0x100).Fill(2).Append(Matrix()).Fill(8);
  return FullBox("tkhd", 0, 7, body);
}

Bytes MediaHeader() {
  return FullBox("mdhd", 0, 0,
                 Bytes().Be32(0).Be32(0).Be32(kRate).Be32(kDuration).Be16(0x55C4).Fill(2));
}

Bytes Handler() {
  return FullBox("hdlr", 0, 0, Bytes().Fill(4).Text("soun").Fill(12).Text("Sound").Byte(0));
}

/// A descriptor of fewer than 128 bytes.
Bytes Descriptor(unsigned tag, const Bytes& body) {
  return Bytes().Byte(tag).Byte(static_cast<unsigned>(body.size())).Append(body);
}

/// AAC-LC, 44100 Hz, mono: object type 2, frequency index 4, channel configuration 1.
Bytes ElementaryStream() {
  Bytes config = Bytes().Byte(0x40).Byte(0x15).Be24(0).Be32(0).Be32(0);
  config.Append(Descriptor(5, {0x12, 0x08}));
  const Bytes stream = Bytes().Be16(0).Byte(0) + Descriptor(4, config) + Descriptor(6, {2});
  return FullBox("esds", 0, 0, Descriptor(3, stream));
}

Bytes SampleEntry(bool isProtected) {
  Bytes body = Bytes().Fill(6).Be16(1).Fill(8).Be16(1).Be16(16).Fill(4).Be32(kRate << 16);
  body.Append(ElementaryStream());
  if (!isProtected) return Box("mp4a", body);
  return Box("drms", body + Box("sinf", Box("frma", Bytes().Text("mp4a"))));
}

/// One chunk holds all frames; it starts at `chunkOffset`.
Bytes SampleTable(bool isProtected, std::uint32_t chunkOffset) {
  const auto table = [](const char* type, const Bytes& body) { return FullBox(type, 0, 0, body); };
  return Box("stbl", table("stsd", Bytes().Be32(1) + SampleEntry(isProtected)) +
                         table("stts", Bytes().Be32(1).Be32(kFrames).Be32(kSamplesPerFrame)) +
                         table("stsc", Bytes().Be32(1).Be32(1).Be32(kFrames).Be32(1)) +
                         table("stsz", Bytes().Be32(4).Be32(kFrames)) +
                         table("stco", Bytes().Be32(1).Be32(chunkOffset)));
}

Bytes Movie(bool isProtected, std::uint32_t chunkOffset) {
  const Bytes data = FullBox("dref", 0, 0, Bytes().Be32(1) + FullBox("url ", 0, 1));
  const Bytes info = Box("minf", FullBox("smhd", 0, 0, Bytes().Fill(4)) + Box("dinf", data) +
                                     SampleTable(isProtected, chunkOffset));
  const Bytes media = Box("mdia", MediaHeader() + Handler() + info);
  return Box("moov", MovieHeader() + Box("trak", TrackHeader() + media));
}

Bytes SampleFile(bool isProtected) {
  Bytes frames;
  for (std::uint32_t i = 0; i < kFrames; ++i) frames.Append(Frame(isProtected));
  // The movie box has the same size wherever its chunk lies.
  const std::size_t mediaAt = FileType().size() + Movie(isProtected, 0).size() + 8;
  const Bytes movie = Movie(isProtected, static_cast<std::uint32_t>(mediaAt));
  return FileType() + movie + Box("mdat", frames);
}

bool Write(const std::string& path, const Bytes& bytes) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) return false;
  const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  return std::fclose(file) == 0 && written;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: make_samples FOLDER\n", stderr);
    return 2;
  }
  const std::string folder = argv[1];
  const bool done = Write(folder + "/clear.m4a", SampleFile(false)) &&
                    Write(folder + "/protected.m4a", SampleFile(true));
  if (!done) std::perror("make_samples");
  return done ? 0 : 1;
}
