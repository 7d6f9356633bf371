// Runs one operation on movies of size N and 2N of every shape that matters to it. The operation
// alone happens inside MeasuredOperation, whose instructions tests/check_complexity.sh counts.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "boxes/fragments/BoxMOOF.h"
#include "demux/FileInfoInterface.h"
#include "demux/Mp4Demux.h"
#include "io/MemorySource.h"
#include "io/mmBufReader.h"
#include "samples/Movie.h"
#include "samples/SampleCursor.h"
#include "tests/complexity/Measure.h"
#include "tests/complexity/Shapes.h"

namespace {

using complexity::Movie;
using Work = std::function<void()>;

struct Case {
  const char* operation;
  const char* name;
  Movie (*make)(std::uint32_t n);
  std::uint32_t n;
};

[[noreturn]] void Die(const char* what) {
  std::fprintf(stderr, "complexity: %s\n", what);
  std::exit(1);
}

/// A file of these bytes while the object lives.
class MovieFile {
 public:
  explicit MovieFile(const Bytes& bytes) {
    const int file = mkstemp(path.data());
    if (file < 0) Die("no temporary file");
    if (write(file, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) Die("write");
    close(file);
  }
  ~MovieFile() { unlink(path.c_str()); }
  std::wstring Wide() const { return {path.begin(), path.end()}; }

 private:
  std::string path =
      std::string(std::getenv("TMPDIR") != nullptr ? std::getenv("TMPDIR") : "/tmp") +
      "/complexity-XXXXXX";
};

void Measure(const Work& work) { MeasuredOperation(&work); }

void Open(Mp4Demux* demux, const MovieFile& file) {
  if (!demux->Init(file.Wide().c_str())) Die("the movie does not open");
}

void MeasureOpen(const Movie& movie) {
  const MovieFile file(movie.head + movie.fragments);
  Mp4Demux demux;
  Measure([&] { Open(&demux, file); });
}

void MeasureJudge(const Movie& movie) {
  const MovieFile file(movie.head + movie.fragments);
  Measure([&] {
    if (JudgeMP4HaveDRM(file.Wide().c_str())) Die("the movie is not protected");
  });
}

/// Calls `work` with a movie that is ready.
template <class OnReady>
void MeasureReady(const Movie& movie, OnReady&& work) {
  const MovieFile file(movie.head + movie.fragments);
  Mp4Demux demux;
  Open(&demux, file);
  if (!demux.ReadyToDemux() || demux.movieBox->readyTracks.empty()) Die("no track is ready");
  Measure([&] { work(demux.movieBox.get()); });
}

/// The first two tracks from their first sample to their last, over the pauses at each multiple of
/// 256.
void MeasureWalk(const Movie& movie) {
  MeasureReady(movie, [&](BoxMOOV* moov) {
    BoxBase::SAMPLE sample{};
    for (const int id : {1, 2}) {
      moov->Seek(0, id, 0);
      for (std::uint32_t i = 0; i < movie.samples; ++i) {
        moov->GetNextSampleInfo(&sample, id);
        moov->finished = 0;
      }
    }
  });
}

void MeasureSchedule(const Movie& movie) {
  MeasureReady(movie, [&](BoxMOOV* moov) {
    BoxBase::SAMPLE sample{};
    const std::size_t all = movie.samples * moov->readyTracks.size();
    for (std::size_t i = 0; i < all; ++i) moov->GetNextSampleInfo(&sample);
  });
}

/// As many seeks as grow with the movie, all over it: a step for each sample passed would show.
void MeasureSeek(const Movie& movie) {
  MeasureReady(movie, [&](BoxMOOV* moov) {
    constexpr std::uint64_t kUnitsOfASample = 1'000'000;
    const std::uint64_t length = movie.samples * kUnitsOfASample;
    std::uint64_t random = 1;
    for (std::uint32_t i = 0; i < movie.samples / 2; ++i) {
      random = random * 6364136223846793005u + 1442695040888963407u;
      moov->Seek(static_cast<long long>((random >> 20) % length + 1), 1 + i % 2, 0);
    }
  });
}

/// Fragments that have been read are merged, one after the other.
void MeasureMerge(const Movie& movie) {
  const MovieFile file(movie.head);
  Mp4Demux demux;
  Open(&demux, file);
  mmBufReader reader(movie.fragments.data(), movie.fragments.size());
  std::vector<std::unique_ptr<BoxMOOF>> fragments;
  while (!reader.IsEnd()) {
    const long long size = reader.GetBe32();
    reader.GetLe32();
    fragments.push_back(std::make_unique<BoxMOOF>());
    if (!fragments.back()->ReadData(&reader, size - 8, nullptr)) Die("a fragment is not read");
  }
  Measure([&] {
    for (const auto& fragment : fragments) {
      fragment->MergeFragment(demux.context.get(), demux.movieBox.get());
    }
  });
}

/// All samples of all tracks by the exact index, from opening on.
void MeasureIndex(const Movie& movie) {
  const Bytes file = movie.head + movie.fragments;
  Measure([&] {
    mp4::MemorySource source(file.data(), file.size());
    mp4::Movie index(&source);
    mp4::Sample sample;
    std::uint64_t samples = 0;
    for (const auto& track : index.Tracks()) {
      mp4::SampleCursor cursor(track.get());
      while (cursor.Next(&sample)) ++samples;
    }
    if (samples == 0) Die("no sample is listed");
  });
}

/// As many look-ups as grow with the movie, all over it.
void MeasureFind(const Movie& movie) {
  const Bytes file = movie.head + movie.fragments;
  mp4::MemorySource source(file.data(), file.size());
  mp4::Movie index(&source);
  mp4::Track* track = index.Tracks().at(0).get();
  mp4::Sample sample;
  const std::uint64_t count = track->SampleCount();
  if (!track->At(count, &sample)) Die("no sample is found");
  const auto length = static_cast<std::uint64_t>(sample.decodeTime) + 1;
  track->NumberAtCompositionTime(0);
  Measure([&] {
    std::uint64_t random = 1;
    for (std::uint32_t i = 0; i < movie.samples / 2; ++i) {
      random = random * 6364136223846793005u + 1442695040888963407u;
      const auto time = static_cast<std::int64_t>((random >> 20) % length);
      track->At((random >> 20) % count + 1, &sample);
      track->NumberAtDecodeTime(time);
      track->NumberAtCompositionTime(time);
      track->NumberAtPresentationTime(time);
      track->SyncAtOrBefore((random >> 30) % count + 1);
    }
  });
}

struct Operation {
  const char* name;
  void (*measure)(const Movie& movie);
};
constexpr Operation kOperations[] = {{"open", MeasureOpen},   {"judge", MeasureJudge},
                                     {"walk", MeasureWalk},   {"schedule", MeasureSchedule},
                                     {"seek", MeasureSeek},   {"merge", MeasureMerge},
                                     {"index", MeasureIndex}, {"find", MeasureFind}};

#define SHAPE(operation, shape, n) \
  { operation, #shape, complexity::shape, n }
constexpr Case kCases[] = {
    SHAPE("open", Sane, 4000),
    SHAPE("open", Alternating, 4000),
    SHAPE("open", ChunkASample, 4000),
    SHAPE("open", EverySampleSync, 4000),
    SHAPE("open", HugeSyncTable, 2000),
    SHAPE("open", ZeroCounts, 4000),
    SHAPE("open", FallingCounts, 4000),
    SHAPE("open", ManyEdits, 2000),
    SHAPE("open", ManyTracks, 1000),
    SHAPE("open", ManyEmptyBoxes, 1000),
    SHAPE("open", ManyFragments, 500),
    SHAPE("open", ManyTinyRuns, 1000),
    SHAPE("open", ManyTrackFragments, 1000),
    SHAPE("open", LongRuns, 2000),
    SHAPE("open", CountedRuns, 500),
    SHAPE("judge", Sane, 4000),
    SHAPE("judge", Alternating, 4000),
    SHAPE("judge", HugeSyncTable, 2000),
    SHAPE("judge", ManyEdits, 2000),
    SHAPE("judge", ManyTracks, 1000),
    SHAPE("judge", ManyEmptyBoxes, 1000),
    SHAPE("judge", ManyFragments, 500),
    SHAPE("judge", ManyTinyRuns, 1000),
    SHAPE("judge", ManyTrackFragments, 1000),
    SHAPE("judge", LongRuns, 2000),
    SHAPE("walk", Sane, 2000),
    SHAPE("walk", Alternating, 2000),
    SHAPE("walk", ChunkASample, 2000),
    SHAPE("walk", OneChunk, 2000),
    SHAPE("walk", HugeSyncTable, 1000),
    SHAPE("walk", ZeroCounts, 2000),
    SHAPE("walk", FallingCounts, 2000),
    SHAPE("walk", ManyEdits, 1000),
    SHAPE("walk", ManyEmptyEdits, 1000),
    SHAPE("walk", LongRuns, 2000),
    SHAPE("schedule", Sane, 2000),
    SHAPE("schedule", Alternating, 2000),
    SHAPE("schedule", ChunkASample, 2000),
    SHAPE("schedule", OneChunk, 2000),
    SHAPE("schedule", ManyEdits, 1000),
    SHAPE("schedule", EightTracks, 500),
    SHAPE("schedule", ManyFragments, 250),
    SHAPE("seek", Sane, 4000),
    SHAPE("seek", Alternating, 4000),
    SHAPE("seek", ChunkASample, 4000),
    SHAPE("seek", OneChunk, 4000),
    SHAPE("seek", EverySampleSync, 4000),
    SHAPE("seek", HugeSyncTable, 2000),
    SHAPE("seek", ZeroCounts, 4000),
    SHAPE("seek", FallingCounts, 4000),
    SHAPE("seek", LongRuns, 4000),
    SHAPE("merge", ManyFragments, 1000),
    SHAPE("merge", ManyTinyRuns, 2000),
    SHAPE("merge", ManyTrackFragments, 2000),
    SHAPE("merge", LongRuns, 4000),
    SHAPE("merge", CountedRuns, 2000),
    SHAPE("index", Sane, 2000),
    SHAPE("index", Alternating, 2000),
    SHAPE("index", ChunkASample, 2000),
    SHAPE("index", OneChunk, 2000),
    SHAPE("index", HugeSyncTable, 1000),
    SHAPE("index", ZeroCounts, 2000),
    SHAPE("index", FallingCounts, 2000),
    SHAPE("index", ManyEdits, 1000),
    SHAPE("index", ManyTracks, 500),
    SHAPE("index", ManyEmptyBoxes, 1000),
    SHAPE("index", ManyFragments, 500),
    SHAPE("index", ManyTinyRuns, 1000),
    SHAPE("index", ManyTrackFragments, 1000),
    SHAPE("index", LongRuns, 2000),
    SHAPE("index", CountedRuns, 100),
    SHAPE("find", Sane, 2000),
    SHAPE("find", Alternating, 2000),
    SHAPE("find", ChunkASample, 2000),
    SHAPE("find", OneChunk, 2000),
    SHAPE("find", EverySampleSync, 2000),
    SHAPE("find", HugeSyncTable, 1000),
    SHAPE("find", ZeroCounts, 2000),
    SHAPE("find", FallingCounts, 2000),
    SHAPE("find", ManyEdits, 1000),
    SHAPE("find", ManyEmptyEdits, 1000),
    SHAPE("find", LongRuns, 2000),
};
#undef SHAPE

const Operation* Find(const char* name) {
  for (const Operation& operation : kOperations) {
    if (std::strcmp(operation.name, name) == 0) return &operation;
  }
  return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  const Operation* operation = argc == 2 ? Find(argv[1]) : nullptr;
  if (operation == nullptr) Die("usage: complexity open|judge|walk|schedule|seek|merge|index|find");
  for (const Case& each : kCases) {
    if (std::strcmp(each.operation, operation->name) != 0) continue;
    for (const std::uint32_t n : {each.n, 2 * each.n}) {
      operation->measure(each.make(n));
      std::printf("%s %u\n", each.name, n);
    }
  }
  return 0;
}
