// Opening, judging and the machine's limit, on the same files in one run.
#include <benchmark/benchmark.h>

#include "bench/Limit.h"
#include "bench/Movies.h"
#include "demux/FileInfoInterface.h"
#include "demux/Mp4Demux.h"

namespace {

bench::Shape ShapeOf(int64_t which) {
  return bench::StandardMovies()[static_cast<std::size_t>(which)];
}

void Headers(benchmark::State& state) {
  const bench::Shape shape = ShapeOf(state.range(0));
  const std::string path = bench::MovieFile(shape);
  for (auto _ : state) benchmark::DoNotOptimize(bench::CountTopLevelBoxes(path));
  state.SetLabel(shape.name);
}

void Limit(benchmark::State& state) {
  const bench::Shape shape = ShapeOf(state.range(0));
  const std::string path = bench::MovieFile(shape);
  bench::Buffer buffer;
  for (auto _ : state) benchmark::DoNotOptimize(bench::ReadAndSumMovie(path, &buffer));
  state.SetLabel(shape.name);
}

void FreadLimit(benchmark::State& state) {
  const bench::Shape shape = ShapeOf(state.range(0));
  const std::string path = bench::MovieFile(shape);
  const std::uint64_t chunks = (shape.videoSamples + shape.audioSamples) / 30 + 2;
  for (auto _ : state) benchmark::DoNotOptimize(bench::FreadAndSum(path, chunks << 14));
  state.SetLabel(shape.name);
}

void Judge(benchmark::State& state) {
  const bench::Shape shape = ShapeOf(state.range(0));
  const std::wstring path = bench::Wide(bench::MovieFile(shape));
  for (auto _ : state) benchmark::DoNotOptimize(JudgeMP4HaveDRM(path.c_str()));
  state.SetLabel(shape.name);
}

void Init(benchmark::State& state) {
  const bench::Shape shape = ShapeOf(state.range(0));
  const std::wstring path = bench::Wide(bench::MovieFile(shape));
  for (auto _ : state) {
    Mp4Demux demux;
    if (!demux.Init(path.c_str())) state.SkipWithError("does not open");
  }
  state.SetLabel(shape.name);
}

void InitFragments(benchmark::State& state) {
  const auto count = static_cast<std::uint32_t>(state.range(0));
  const std::wstring path = bench::Wide(bench::MovieFile(bench::Fragmented(count)));
  for (auto _ : state) {
    Mp4Demux demux;
    if (!demux.Init(path.c_str())) state.SkipWithError("does not open");
  }
  state.SetComplexityN(state.range(0));
}

void JudgeFragments(benchmark::State& state) {
  const auto count = static_cast<std::uint32_t>(state.range(0));
  const std::wstring path = bench::Wide(bench::MovieFile(bench::Fragmented(count)));
  for (auto _ : state) benchmark::DoNotOptimize(JudgeMP4HaveDRM(path.c_str()));
  state.SetComplexityN(state.range(0));
}

void FourCounts(benchmark::internal::Benchmark* bench) {
  for (const int count : {1000, 4000, 16000, 64000}) bench->Arg(count);
}

}  // namespace

BENCHMARK(Headers)->DenseRange(0, 5);
BENCHMARK(Limit)->DenseRange(0, 5);
BENCHMARK(FreadLimit)->DenseRange(1, 3);
BENCHMARK(Judge)->DenseRange(0, 5);
BENCHMARK(Init)->DenseRange(0, 5);
BENCHMARK(InitFragments)->Apply(FourCounts)->Complexity(benchmark::oN);
BENCHMARK(JudgeFragments)->Apply(FourCounts)->Complexity(benchmark::oN);

BENCHMARK_MAIN();
