// The exact sample index: opening, walking, looking up and exporting, for movies of different
// shapes.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "bench/Limit.h"
#include "bench/Movies.h"
#include "io/FileSource.h"
#include "samples/Movie.h"
#include "samples/SampleColumns.h"
#include "samples/SampleCursor.h"

namespace {

bench::Shape ShapeOf(int64_t which) {
  switch (which) {
    case 0:
      return bench::LongMovie();
    case 1:
      return bench::VariableMovie();
    case 2:
      return bench::FourMillion();
    default:
      return bench::Fragmented(20000);
  }
}

/// A movie over its file.
struct Opened {
  explicit Opened(const bench::Shape& shape)
      : source(mp4::FileSource::Open(bench::MovieFile(shape).c_str(), nullptr)),
        movie(source.get()) {}
  std::unique_ptr<mp4::FileSource> source;
  mp4::Movie movie;
};

std::uint64_t WalkAll(mp4::Movie* movie) {
  std::uint64_t samples = 0;
  std::uint64_t sum = 0;
  mp4::Sample sample;
  for (const auto& track : movie->Tracks()) {
    mp4::SampleCursor cursor(track.get());
    while (cursor.Next(&sample)) {
      ++samples;
      sum += sample.offset + static_cast<std::uint64_t>(sample.compositionTime) + sample.size;
    }
  }
  benchmark::DoNotOptimize(sum);
  return samples;
}

void OpenAndWalk(benchmark::State& state) {
  const bench::Shape shape = ShapeOf(state.range(0));
  std::uint64_t samples = 0;
  for (auto _ : state) {
    Opened opened(shape);
    samples += WalkAll(&opened.movie);
  }
  state.SetItemsProcessed(static_cast<int64_t>(samples));
  state.SetLabel(shape.name);
}

/// Everything of OpenAndWalk but the walk.
void OpenAndLoad(benchmark::State& state) {
  const bench::Shape shape = ShapeOf(state.range(0));
  for (auto _ : state) {
    Opened opened(shape);
    for (const auto& track : opened.movie.Tracks()) {
      benchmark::DoNotOptimize(track->SampleCount());
    }
  }
  state.SetLabel(shape.name);
}

void ListTracks(benchmark::State& state) {
  const bench::Shape shape = ShapeOf(state.range(0));
  for (auto _ : state) {
    Opened opened(shape);
    benchmark::DoNotOptimize(opened.movie.Tracks().size());
  }
  state.SetLabel(shape.name);
}

void ReadBoxes(benchmark::State& state) {
  const bench::Shape shape = ShapeOf(state.range(0));
  const std::string path = bench::MovieFile(shape);
  for (auto _ : state) {
    bench::Buffer buffer;
    benchmark::DoNotOptimize(bench::ReadAndSumMovie(path, &buffer));
  }
  state.SetLabel(shape.name);
}

void Walk(benchmark::State& state) {
  const bench::Shape shape = ShapeOf(state.range(0));
  Opened opened(shape);
  std::uint64_t samples = 0;
  WalkAll(&opened.movie);
  for (auto _ : state) samples += WalkAll(&opened.movie);
  state.SetItemsProcessed(static_cast<int64_t>(samples));
  state.SetLabel(shape.name);
}

enum class By { kNumber, kDecodeTime, kCompositionTime, kSync };

/// Random look-ups in the first track, each with the sample found.
template <By by>
void LookUp(benchmark::State& state) {
  const bench::Shape shape = ShapeOf(state.range(0));
  Opened opened(shape);
  mp4::Track* track = opened.movie.Tracks().at(0).get();
  mp4::Sample sample;
  const std::uint64_t count = track->SampleCount();
  track->At(count, &sample);
  const auto end = static_cast<std::uint64_t>(sample.decodeTime);
  std::mt19937_64 random(7);
  for (auto _ : state) {
    std::uint64_t number = random() % count + 1;
    if (by == By::kSync) number = track->SyncAtOrBefore(number);
    if (by == By::kDecodeTime) {
      number = track->NumberAtDecodeTime(static_cast<std::int64_t>(random() % end));
    }
    if (by == By::kCompositionTime) {
      number = track->NumberAtCompositionTime(static_cast<std::int64_t>(random() % end));
    }
    track->At(number, &sample);
    benchmark::DoNotOptimize(sample);
  }
  state.SetLabel(shape.name);
}

void Columns(benchmark::State& state) {
  const bench::Shape shape = ShapeOf(state.range(0));
  Opened opened(shape);
  std::vector<std::size_t> counts;
  std::size_t all = 0;
  for (const auto& track : opened.movie.Tracks()) all += track->SampleCount();
  std::vector<std::uint64_t> offsets(all);
  std::vector<std::uint32_t> sizes(all), durations(all);
  std::vector<std::int64_t> decodeTimes(all), compositionTimes(all);
  std::vector<std::uint8_t> flags(all);
  for (auto _ : state) {
    std::size_t at = 0;
    for (const auto& track : opened.movie.Tracks()) {
      mp4::SampleColumns columns;
      columns.offsets = &offsets[at];
      columns.sizes = &sizes[at];
      columns.decodeTimes = &decodeTimes[at];
      columns.compositionTimes = &compositionTimes[at];
      columns.durations = &durations[at];
      columns.flags = &flags[at];
      at += mp4::FillColumns(track.get(), 1, all - at, columns);
    }
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(static_cast<int64_t>(all) * static_cast<int64_t>(state.iterations()));
  state.SetLabel(shape.name);
}

}  // namespace

BENCHMARK(OpenAndWalk)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);
BENCHMARK(OpenAndLoad)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);
BENCHMARK(ListTracks)->DenseRange(0, 3)->Unit(benchmark::kMicrosecond);
BENCHMARK(ReadBoxes)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);
BENCHMARK(Walk)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);
BENCHMARK_TEMPLATE(LookUp, By::kNumber)->DenseRange(0, 3);
BENCHMARK_TEMPLATE(LookUp, By::kDecodeTime)->DenseRange(0, 3);
BENCHMARK_TEMPLATE(LookUp, By::kCompositionTime)->DenseRange(0, 3);
BENCHMARK_TEMPLATE(LookUp, By::kSync)->DenseRange(0, 3);
BENCHMARK(Columns)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
