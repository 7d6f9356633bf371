// Walking, scheduling and seeking, for movies of different shapes.
#include <benchmark/benchmark.h>

#include <random>

#include "bench/Movies.h"
#include "demux/Mp4Demux.h"

namespace {

bench::Shape ShapeOf(int64_t which) {
  switch (which) {
    case 0:
      return bench::LongMovie();
    case 1:
      return bench::VariableMovie();
    default:
      return bench::FourMillion();
  }
}

/// Opens a movie and readies it; exits the benchmark on failure.
bool Open(Mp4Demux* demux, const bench::Shape& shape, benchmark::State* state) {
  const bool ready = demux->Init(bench::Wide(bench::MovieFile(shape)).c_str()) &&
                     demux->ReadyToDemux() && demux->movieBox->readyTracks.size() == 2;
  if (!ready) state->SkipWithError("not ready");
  state->SetLabel(shape.name);
  return ready;
}

/// One track from its first sample to its last, over the false at each multiple of 256.
void WalkTrack(benchmark::State& state) {
  const bench::Shape shape = ShapeOf(state.range(0));
  Mp4Demux demux;
  if (!Open(&demux, shape, &state)) return;
  BoxBase::SAMPLE sample{};
  for (auto _ : state) {
    demux.movieBox->Seek(0, 1, 0);
    for (std::uint32_t i = 0; i < shape.videoSamples; ++i) {
      demux.movieBox->GetNextSampleInfo(&sample, 1);
      demux.movieBox->finished = 0;
    }
    benchmark::DoNotOptimize(sample);
  }
  state.SetItemsProcessed(state.iterations() * shape.videoSamples);
}

void Schedule(benchmark::State& state) {
  const bench::Shape shape = ShapeOf(state.range(0));
  Mp4Demux demux;
  if (!Open(&demux, shape, &state)) return;
  BoxBase::SAMPLE sample{};
  const std::uint32_t all = shape.videoSamples + shape.audioSamples;
  for (auto _ : state) {
    demux.movieBox->ReadyToDemux();
    for (std::uint32_t i = 0; i < all; ++i) demux.movieBox->GetNextSampleInfo(&sample);
    benchmark::DoNotOptimize(sample);
  }
  state.SetItemsProcessed(state.iterations() * all);
}

void RandomSeek(benchmark::State& state) {
  const bench::Shape shape = ShapeOf(state.range(0));
  Mp4Demux demux;
  if (!Open(&demux, shape, &state)) return;
  const int track = static_cast<int>(state.range(1));
  std::mt19937_64 random(7);
  const std::uint64_t length = shape.videoSamples / 60 * 10000000ull;
  for (auto _ : state) {
    const auto time = static_cast<long long>(random() % length) + 1;
    benchmark::DoNotOptimize(demux.movieBox->Seek(time, track, 0));
  }
}

}  // namespace

BENCHMARK(WalkTrack)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(Schedule)->DenseRange(0, 2)->Unit(benchmark::kMillisecond);
BENCHMARK(RandomSeek)->ArgsProduct({{0, 1, 2}, {1, 2}});

BENCHMARK_MAIN();
