// A verdict from opening the file to closing it, warm, with what it reads.
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "bench/Movies.h"
#include "inspect/Inspect.h"
#include "io/FileSource.h"

namespace {

void InspectOnce(const std::string& path, const mp4::InspectOptions& options,
                 benchmark::State* state) {
  const std::unique_ptr<mp4::FileSource> file = mp4::FileSource::Open(path.c_str(), nullptr);
  if (file == nullptr) return state->SkipWithError("does not open");
  mp4::CachedSource source(file.get());
  const mp4::Report report = mp4::Inspect(&source, options);
  if (report.verdict != mp4::ProtectionVerdict::kClear) state->SkipWithError("is not clear");
  state->counters["reads"] = static_cast<double>(source.Reads());
  state->counters["bytes"] = static_cast<double>(source.BytesRead());
}

void Inspect(benchmark::State& state) {
  const bench::Shape shape = bench::StandardMovies()[static_cast<std::size_t>(state.range(0))];
  const std::string path = bench::MovieFile(shape);
  for (auto _ : state) InspectOnce(path, {}, &state);
  state.SetLabel(shape.name);
}

void InspectEverything(benchmark::State& state) {
  const auto count = static_cast<std::uint32_t>(state.range(0));
  const std::string path = bench::MovieFile(bench::Fragmented(count));
  for (auto _ : state) InspectOnce(path, {true}, &state);
  state.SetComplexityN(state.range(0));
}

}  // namespace

BENCHMARK(Inspect)->DenseRange(0, 5)->Unit(benchmark::kMicrosecond);
BENCHMARK(InspectEverything)->Arg(1000)->Arg(16000)->Unit(benchmark::kMicrosecond)->Complexity();
BENCHMARK_MAIN();
