// What a caller of the C interface waits for: a report by path from opening the file to freeing it,
// warm, without and with the host's answer; its JSON; and through callbacks, with the reads
// counted.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "bench/Movies.h"
#include "mp4judge/mp4judge.h"

namespace {

bench::Shape ShapeAt(const benchmark::State& state) {
  return bench::StandardMovies()[static_cast<std::size_t>(state.range(0))];
}

void Judge(benchmark::State& state, bool hostAnswer, bool json) {
  const std::string path = bench::MovieFile(ShapeAt(state));
  mp4judge_options options = MP4JUDGE_OPTIONS_DEFAULT;
  options.host_answer = hostAnswer ? 1 : 0;
  for (auto _ : state) {
    mp4judge_report* report = mp4judge_inspect_path(path.c_str(), &options);
    if (mp4judge_report_verdict(report) != MP4JUDGE_CLEAR) state.SkipWithError("is not clear");
    if (json) benchmark::DoNotOptimize(mp4judge_report_json(report));
    mp4judge_report_free(report);
  }
  state.SetLabel(ShapeAt(state).name);
}

void Verdict(benchmark::State& state) { Judge(state, false, false); }
void VerdictAndHostAnswer(benchmark::State& state) { Judge(state, true, false); }
void VerdictHostAnswerAndJson(benchmark::State& state) { Judge(state, true, true); }

/// A file behind callbacks.
struct Remote {
  int file;
  int reads;

  static int64_t ReadAt(void* user, uint64_t offset, void* bytes, size_t n) {
    auto* remote = static_cast<Remote*>(user);
    ++remote->reads;
    return pread(remote->file, bytes, n, static_cast<off_t>(offset));
  }
  static int64_t Size(void* user) { return lseek(static_cast<Remote*>(user)->file, 0, SEEK_END); }
};

void ThroughCallbacks(benchmark::State& state) {
  const std::string path = bench::MovieFile(ShapeAt(state));
  Remote remote{open(path.c_str(), O_RDONLY | O_CLOEXEC), 0};
  for (auto _ : state) {
    remote.reads = 0;
    mp4judge_report_free(
        mp4judge_inspect_callbacks(Remote::ReadAt, Remote::Size, &remote, nullptr));
  }
  state.counters["reads"] = remote.reads;
  state.SetLabel(ShapeAt(state).name);
  close(remote.file);
}

}  // namespace

BENCHMARK(Verdict)->DenseRange(0, 5)->Unit(benchmark::kMicrosecond);
BENCHMARK(VerdictAndHostAnswer)->DenseRange(0, 5)->Unit(benchmark::kMicrosecond);
BENCHMARK(VerdictHostAnswerAndJson)->DenseRange(0, 5)->Unit(benchmark::kMicrosecond);
BENCHMARK(ThroughCallbacks)->DenseRange(0, 5)->Unit(benchmark::kMicrosecond);
BENCHMARK_MAIN();
