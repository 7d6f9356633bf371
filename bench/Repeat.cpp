#include "bench/Repeat.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <vector>

namespace bench {

namespace {

constexpr double kSeconds = 0.4;
constexpr std::size_t kLeastCalls = 3;

double NowMs() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration<double, std::milli>(now).count();
}

}  // namespace

double MedianMs(int repeats, double seconds, const std::function<bool()>& call) {
  std::vector<double> times;
  const double limit = seconds * 1000;
  for (double spent = 0; static_cast<int>(times.size()) < repeats;) {
    const double start = NowMs();
    if (!call()) return std::numeric_limits<double>::quiet_NaN();
    times.push_back(NowMs() - start);
    spent += times.back();
    if (spent >= limit && (times.size() >= kLeastCalls || times.back() >= limit)) break;
  }
  if (times.empty()) return 0;
  const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
  std::nth_element(times.begin(), middle, times.end());
  return *middle;
}

int RepeatMain(int argc, char** argv, const std::function<bool(const std::string&)>& open) {
  if (argc < 3 || argc > 4) {
    std::fprintf(stderr, "usage: %s FILE REPEATS [SECONDS]\n", argv[0]);
    return 2;
  }
  const std::string path = argv[1];
  const double seconds = argc > 3 ? std::atof(argv[3]) : kSeconds;
  const double median = MedianMs(std::atoi(argv[2]), seconds, [&] { return open(path); });
  if (std::isnan(median)) {
    std::fprintf(stderr, "%s: %s does not open\n", argv[0], argv[1]);
    return 1;
  }
  std::printf("%.6f\n", median);
  return 0;
}

}  // namespace bench
