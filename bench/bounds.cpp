// The worst files against the promised bounds of time and memory:
//   bounds [MEGABYTES...]      4 and 64 by default
// Each file is judged and opened in a process of its own. Exit code 1 when a bound is broken.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/HostileMovies.h"
#include "demux/FileInfoInterface.h"
#include "demux/Mp4Demux.h"
#include "tests/Fixtures.h"

namespace {

constexpr double kMiB = 1024 * 1024;

struct Cost {
  double seconds = 0;
  double mebibytes = 0;
  bool result = false;
};

double Now() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double>(now).count();
}

/// Processor time and peak memory of `work` in a process of its own.
template <class Work>
Cost Measure(Work&& work) {
  std::fflush(stdout);
  const pid_t child = fork();
  if (child == 0) _exit(work() ? 1 : 0);
  int status = 0;
  rusage usage{};
  wait4(child, &status, 0, &usage);
  if (!WIFEXITED(status)) {
    std::printf("crashed\n");
    std::exit(2);
  }
  const auto seconds = [](const timeval& t) {
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
  };
  return {seconds(usage.ru_utime) + seconds(usage.ru_stime),
          static_cast<double>(usage.ru_maxrss) / 1024, WEXITSTATUS(status) == 1};
}

bool MeasureMovie(const bench::HostileMovie& movie, std::size_t size) {
  // Made in a process of its own too, so that the measured ones do not inherit its memory.
  const std::string path = TempFile::Directory() + "/mp4judge-bounds";
  Measure([&] {
    const Bytes bytes = movie.make(size);
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) return false;
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    return std::fclose(file) == 0 && written;
  });
  const std::wstring wide(path.begin(), path.end());
  const Cost judge = Measure([&] { return JudgeMP4HaveDRM(wide.c_str()) != 0; });
  const Cost open = Measure([&] {
    Mp4Demux demux;
    const bool opened = demux.Init(wide.c_str());
    demux.ReadyToDemux();
    return opened;
  });
  std::FILE* file = std::fopen(path.c_str(), "rb");
  std::fseek(file, 0, SEEK_END);
  const auto n = static_cast<double>(std::ftell(file));
  std::fclose(file);
  std::remove(path.c_str());
  const double most = 256 + 16 * n / kMiB + 256 * movie.compressed;
  const double longest = 2 + 100e-9 * n;
  const bool kept = judge.seconds <= longest && open.seconds <= longest &&
                    judge.mebibytes <= most && open.mebibytes <= most;
  std::printf("%-30s %8.2f %8.3f %8.3f %8.3f %8.0f %8.0f %8.0f  %d%d %s\n", movie.name.c_str(),
              n / kMiB, judge.seconds, open.seconds, longest, judge.mebibytes, open.mebibytes, most,
              judge.result, open.result, kept ? "" : "BROKEN");
  return kept;
}

}  // namespace

int main(int argc, char** argv) {
  std::printf("%-30s %8s %8s %8s %8s %8s %8s %8s\n", "file", "MiB", "judge s", "open s", "bound s",
              "judge MB", "open MB", "bound MB");
  const double start = Now();
  std::string only;
  std::vector<std::size_t> sizes;
  for (int i = 1; i < argc; ++i) {
    const std::size_t size = std::strtoul(argv[i], nullptr, 10);
    if (size != 0) sizes.push_back(size);
    if (size == 0) only = argv[i];
  }
  if (sizes.empty()) sizes = {4, 64};
  bool kept = true;
  for (const bench::HostileMovie& movie : bench::HostileMovies()) {
    for (const std::size_t size : sizes) {
      if (movie.name.find(only) != std::string::npos) kept &= MeasureMovie(movie, size << 20);
      if (movie.name.find("compressed: ") == 0) break;
    }
  }
  std::printf("%.0f s in all\n", Now() - start);
  return kept ? 0 : 1;
}
