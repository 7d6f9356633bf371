// Prints one line per file with all that opening it finds, so that two builds of the library can be
// compared: digest FILE...   digest --make FOLDER writes movies as muxers write them, digest
// --beyond FOLDER one with more tracks than the limits let in. Exit code 1 when judging and a full
// opening of a file disagree.
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "demux/FileInfoInterface.h"
#include "demux/Mp4Demux.h"
#include "demux/Verdict.h"
#include "tests/complexity/Shapes.h"

namespace {

constexpr int kMostSamples = 400000;

class Digest {
 public:
  template <class Number>
  void Add(Number number) {
    sum = (sum ^ static_cast<std::uint64_t>(number)) * 0x100000001B3u;
  }
  std::uint64_t sum = 0xCBF29CE484222325u;
};

void AddTables(const Mp4Context::TRACK& track, Digest* digest) {
  for (const tagSTTS& row : track.timeToSampleTable)
    digest->Add(row.sampleDelta + 3ull * row.sampleCount);
  for (const tagSTSZ& row : track.sampleSizeTable) digest->Add(row.sampleSize);
  for (const tagSTCO& row : track.chunkOffsetTable) digest->Add(row.chunkOffset);
  for (const tagSTSC& row : track.sampleToChunkTable)
    digest->Add(row.firstChunk + 3ull * row.samplesPerChunk);
  for (const tagElstItem& row : track.editList)
    digest->Add(row.segmentDuration + 3ll * row.mediaTime);
}

void AddTrack(const Mp4Context::TRACK& track, Digest* digest) {
  for (const std::int64_t value :
       {std::int64_t{track.trackId}, std::int64_t{track.handlerType}, std::int64_t{track.format},
        std::int64_t{track.syncTableState}, track.totalSampleBytes, std::int64_t{track.timescale},
        track.duration, std::int64_t{track.numSamples}, std::int64_t{track.maxSampleSize},
        std::int64_t{track.frameRateNum}, std::int64_t{track.sampleRate},
        std::int64_t{track.extraDataSize[0]}, std::int64_t{track.constSampleCount}}) {
    digest->Add(value);
  }
  AddTables(track, digest);
}

/// The samples in the order of the scheduler, over its pauses.
int AddSamples(BoxMOOV* movie, Digest* digest) {
  int samples = 0;
  int refused = 0;
  while (samples < kMostSamples && refused < 3) {
    BoxBase::SAMPLE sample{};
    refused = movie->GetNextSampleInfo(&sample) ? 0 : refused + 1;
    digest->Add(sample.offset + sample.size);
    ++samples;
  }
  return samples;
}

bool SameRecords(Mp4Context* a, Mp4Context* b) {
  if (a->GetTrackCount() != b->GetTrackCount()) return false;
  for (int i = 0; i < a->GetTrackCount(); ++i) {
    const Mp4Context::TRACK* one = a->GetTrackByIndex(i);
    const Mp4Context::TRACK* other = b->GetTrackByIndex(i);
    if (one->handlerType != other->handlerType || one->format != other->format) return false;
  }
  return true;
}

/// False when judging and opening disagree.
bool Print(const char* path) {
  std::wstring name(std::strlen(path), 0);
  std::mbstowcs(name.data(), path, name.size());
  const wchar_t* wide = name.c_str();
  Mp4Demux demux;
  Mp4Demux judged;
  const bool opened = demux.Init(wide);
  const int protectedTrack = JudgeMP4HaveDRM(wide);
  const bool agree = judged.InitForJudgement(wide) == opened &&
                     SameRecords(demux.GetContext(), judged.GetContext()) &&
                     protectedTrack == (opened && mp4::HasProtectedTrack(demux.GetContext()));
  Digest digest;
  for (const auto& track : demux.GetContext()->tracks) AddTrack(*track, &digest);
  const bool ready = opened && demux.ReadyToDemux();
  const int samples = ready ? AddSamples(demux.movieBox.get(), &digest) : 0;
  std::printf("%s: %d %d, %d tracks, %d samples, %016llx\n", path, opened, protectedTrack,
              demux.GetContext()->GetTrackCount(), samples,
              static_cast<unsigned long long>(digest.sum));
  if (!agree) std::printf("%s: judging and opening disagree\n", path);
  return agree;
}

struct Shape {
  const char* name;
  complexity::Movie (*make)(std::uint32_t n);
  std::uint32_t n;
};
constexpr Shape kSane[] = {
    {"sane", complexity::Sane, 500000},
    {"variable", complexity::Alternating, 500000},
    {"chunks", complexity::ChunkASample, 500000},
    {"one-chunk", complexity::OneChunk, 500000},
    {"sync", complexity::EverySampleSync, 500000},
    {"edits", complexity::ManyEdits, 20000},
    {"tracks", complexity::ManyTracks, 2000},
    {"fragments", complexity::ManyFragments, 20000},
    {"runs", complexity::ManyTinyRuns, 20000},
    {"long-runs", complexity::LongRuns, 500000},
};
constexpr Shape kBeyond[] = {{"beyond", complexity::ManyTracks, 17000}};

template <std::size_t n>
int Make(const Shape (&movies)[n], const std::string& folder) {
  for (const Shape& movie : movies) {
    const complexity::Movie made = movie.make(movie.n);
    const Bytes bytes = made.head + made.fragments;
    std::FILE* file = std::fopen((folder + "/" + movie.name + ".mp4").c_str(), "wb");
    if (file == nullptr) return 1;
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    if (std::fclose(file) != 0 || !written) return 1;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], "--make") == 0) return Make(kSane, argv[2]);
  if (argc == 3 && std::strcmp(argv[1], "--beyond") == 0) return Make(kBeyond, argv[2]);
  std::setlocale(LC_CTYPE, "C.UTF-8");
  bool agree = true;
  for (int i = 1; i < argc; ++i) agree &= Print(argv[i]);
  return agree ? 0 : 1;
}
