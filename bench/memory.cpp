// What one opening adds to the resident memory of a fresh process:
//   memory judge|init FILE
// One tab-separated line of bytes: the peak, what stays while the file is open, and of that what no
// file backs; then the file's movie boxes, its sample tables, its track runs, and the sequences
// published for audio tracks.
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>

#include "bench/MovieBytes.h"
#include "bench/Movies.h"
#include "demux/Mp4Demux.h"

namespace {

/// A line "KEY:   N kB" of a file of /proc, in bytes.
std::int64_t FromProc(const char* file, const std::string& key) {
  std::ifstream in(file);
  for (std::string word; in >> word;) {
    long long kibibytes = 0;
    if (word == key && in >> kibibytes) return kibibytes * 1024;
  }
  return 0;
}

struct Resident {
  std::int64_t peak = FromProc("/proc/self/status", "VmHWM:");
  std::int64_t all = FromProc("/proc/self/smaps_rollup", "Rss:");
  std::int64_t anonymous = FromProc("/proc/self/smaps_rollup", "Anonymous:");
};

/// Bytes of the sequences that hosts read from the records of audio tracks.
std::uint64_t PublishedBytes(Mp4Context* context) {
  std::uint64_t bytes = 0;
  for (int i = 0; context != nullptr && i < context->GetTrackCount(); ++i) {
    const Mp4Context::TRACK* track = context->GetTrackByIndex(i);
    bytes += track->timeToSampleTable.size() * sizeof(tagSTTS);
    bytes += track->sampleSizeTable.size() * sizeof(tagSTSZ);
    bytes += track->chunkOffsetTable.size() * sizeof(tagSTCO);
    bytes += track->sampleToChunkTable.size() * sizeof(tagSTSC);
  }
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string way = argc == 3 ? argv[1] : "";
  if (way != "judge" && way != "init") return 2;
  const std::wstring path = bench::Wide(argv[2]);
  const bench::MovieBytes file = bench::CountMovieBytes(argv[2]);
  Resident{};  // so that measuring itself needs nothing new
  Mp4Demux demux;
  const Resident before;
  // Judging is a judgement's opening held open: what stays cannot be seen otherwise.
  const bool opened =
      way == "judge" ? demux.InitForJudgement(path.c_str()) : demux.Init(path.c_str());
  const Resident after;
  if (!opened) return 1;
  std::printf("%lld\t%lld\t%lld\t%llu\t%llu\t%llu\t%llu\n",
              static_cast<long long>(after.peak - before.peak),
              static_cast<long long>(after.all - before.all),
              static_cast<long long>(after.anonymous - before.anonymous),
              static_cast<unsigned long long>(file.movie),
              static_cast<unsigned long long>(file.tables),
              static_cast<unsigned long long>(file.runs),
              static_cast<unsigned long long>(PublishedBytes(demux.GetContext())));
  return 0;
}
