#include "bench/Movies.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tests/MovieFixtures.h"

namespace bench {

namespace {

using namespace fixture;

constexpr std::uint32_t kSamplesPerChunk = 30;
constexpr std::uint32_t kChunkBytes = 1 << 14;

[[noreturn]] void Die(const char* what) {
  std::perror(what);
  std::exit(1);
}

Words Offsets(std::uint32_t samples, std::uint32_t first) {
  Words offsets;
  for (std::uint32_t at = 0; at < samples; at += kSamplesPerChunk) {
    offsets.push_back(first + static_cast<std::uint32_t>(offsets.size()) * 2 * kChunkBytes);
  }
  return offsets;
}

/// Composition offsets, which the library passes over: real movies carry them.
Bytes Ctts(std::uint32_t samples) {
  Words words{samples * 3 / 4};
  for (std::uint32_t i = 0; i < samples * 3 / 4; ++i) words.insert(words.end(), {1, i % 3});
  return BoxOf32("ctts", words);
}

Bytes BigTrack(const Shape& shape, std::uint32_t id, bool video) {
  const std::uint32_t samples = video ? shape.videoSamples : shape.audioSamples;
  const std::uint32_t delta = video ? 1000 : 1024;
  Track t;
  t.id = id;
  t.handler = video ? "vide" : "soun";
  t.format = video ? "avc1" : shape.audioFormat;
  t.timescale = video ? 60000 : 48000;
  t.times = {{samples, delta}};
  if (shape.variable) {
    t.times.clear();
    for (std::uint32_t i = 0; i < samples; ++i) t.times.push_back({1, 1000 + i % 2});
  }
  t.chunks = {{1, kSamplesPerChunk}};
  if (samples == 0) t.times.clear(), t.chunks.clear();
  t.sizes.clear();
  for (std::uint32_t i = 0; i < samples; ++i) t.sizes.push_back(100 + i % 400);
  t.offsets = Offsets(samples, video ? 4096 : 4096 + kChunkBytes);
  if (video) {
    for (std::uint32_t i = 1; i <= samples; i += 60) t.sync.push_back(i);
  }
  Bytes stbl = Stbl(t);
  if (video && samples > 0) {
    const Bytes ctts = Ctts(samples);
    stbl = Bytes().Append(stbl).PutBe32(0, static_cast<std::uint32_t>(stbl.size() + ctts.size()));
    stbl.Append(ctts);
  }
  const Bytes minf = Box("minf", (video ? Vmhd() : Smhd()) + Dinf() + stbl);
  const std::uint64_t duration = std::uint64_t{samples} * delta;
  const Bytes media = Mdhd(t.timescale, duration) + Hdlr(t.handler) + minf;
  return Box("trak", Tkhd(id, duration * 1000 / t.timescale) + Box("mdia", media));
}

Bytes Fragment(std::uint32_t sequence, std::uint32_t samples) {
  Bytes trafs;
  for (const std::uint32_t id : {1u, 2u}) {
    Bytes run = Bytes().Be32(samples).Be32(200);
    for (std::uint32_t i = 0; i < samples; ++i) run.Be32(100 + i % 50);
    trafs.Append(Box(
        "traf", FullBox("tfhd", 0, 0x20000, Bytes().Be32(id)) + FullBox("trun", 0, 0x201, run)));
  }
  return Box("moof", FullBox("mfhd", 0, 0, Bytes().Be32(sequence)) + trafs);
}

Bytes MovieBox(const Shape& shape) {
  const std::uint64_t videoMs = shape.videoSamples * 1000ull / 60;
  const std::uint64_t audioMs = shape.audioSamples * 1024000ull / 48000;
  Bytes children = Mvhd(1000, std::max(videoMs, audioMs));
  std::uint32_t id = 1;
  for (std::uint32_t i = 0; i < shape.tracks; ++i) {
    const bool fragmented = shape.fragments > 0;
    if (shape.videoSamples > 0 || fragmented) {
      children.Append(BigTrack(shape, id++, true));
    }
    if (shape.audioSamples > 0 || fragmented) {
      children.Append(BigTrack(shape, id++, false));
    }
  }
  if (shape.fragments > 0) {
    Bytes trex;
    for (const std::uint32_t track : {1u, 2u}) {
      trex.Append(FullBox("trex", 0, 0, Bytes().Be32(track).Be32(1).Be32(1000).Be32(0).Be32(0)));
    }
    children.Append(Box("mvex", trex));
  }
  return Box("moov", children);
}

void Write(int file, const Bytes& bytes) {
  for (std::size_t done = 0; done < bytes.size();) {
    const ssize_t n = write(file, bytes.data() + done, bytes.size() - done);
    if (n <= 0) Die("write");
    done += static_cast<std::size_t>(n);
  }
}

/// Media data as a hole in the file.
void WriteMediaData(int file, std::uint64_t payload) {
  Write(file, SizedBox(1, "mdat", Bytes().Be64(payload + 16)));
  const off_t end = lseek(file, static_cast<off_t>(payload), SEEK_CUR);
  if (end < 0 || ftruncate(file, end) != 0) Die("ftruncate");
}

void Generate(const Shape& shape, int file) {
  Write(file, Ftyp("isom"));
  if (shape.fragments == 0) {
    const std::uint64_t chunks = (shape.videoSamples + shape.audioSamples) / kSamplesPerChunk + 2;
    WriteMediaData(file, chunks * kChunkBytes);
    Write(file, MovieBox(shape));
    return;
  }
  Write(file, MovieBox(shape));
  for (std::uint32_t i = 1; i <= shape.fragments; ++i) {
    Write(file, Fragment(i, shape.runSamples));
    WriteMediaData(file, 8192);
  }
}

}  // namespace

std::string MovieFile(const Shape& shape) {
  const char* temporary = std::getenv("TMPDIR");
  const std::string dir =
      std::string(temporary != nullptr ? temporary : "/tmp") + "/mp4judge-bench";
  mkdir(dir.c_str(), 0777);
  const std::string path = dir + "/" + shape.name + ".mp4";
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) WriteMovie(shape, path);
  return path;
}

void WriteMovie(const Shape& shape, const std::string& path) {
  const std::string part = path + ".part";
  const int file = open(part.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0666);
  if (file < 0) Die(part.c_str());
  Generate(shape, file);
  close(file);
  if (std::rename(part.c_str(), path.c_str()) != 0) Die(path.c_str());
}

Shape Clip() { return {.name = "clip", .videoSamples = 600, .audioSamples = 470}; }

Shape LongMovie() { return {.name = "3h", .videoSamples = 650000, .audioSamples = 500000}; }

Shape VariableMovie() {
  return {.name = "3h-variable", .videoSamples = 650000, .audioSamples = 500000, .variable = true};
}

Shape FourMillion() { return {.name = "4m", .videoSamples = 2000000, .audioSamples = 2000000}; }

Shape TwoHundredTracks() {
  return {.name = "200-tracks", .videoSamples = 100, .audioSamples = 100, .tracks = 100};
}

Shape Fragmented(std::uint32_t count) {
  return {.name = "fragments-" + std::to_string(count), .fragments = count};
}

std::vector<Shape> StandardMovies() {
  return {Clip(),        LongMovie(),        VariableMovie(),
          FourMillion(), TwoHundredTracks(), Fragmented(20000)};
}

Shape WithSamples(std::uint32_t count, bool variable) {
  return {.name = std::to_string(count) + (variable ? "-variable" : "-constant"),
          .videoSamples = count,
          .audioSamples = count,
          .variable = variable};
}

std::wstring Wide(const std::string& path) { return std::wstring(path.begin(), path.end()); }

}  // namespace bench
