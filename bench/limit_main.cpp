// What the machine can do, in milliseconds, for each file:
//   limit FILE...
// A walk over the headers of the top-level boxes, the same with the movie boxes read and summed,
// and opening the file to read its first 4 KiB. One tab-separated line a file.
#include <malloc.h>

#include <cstdio>

#include "bench/Limit.h"
#include "bench/Repeat.h"

int main(int argc, char** argv) {
  constexpr int kRepeats = 201;
  constexpr double kSeconds = 0.3;
  if (argc < 2) return 2;
  // A fixed threshold: the allocator would otherwise keep large blocks and hand them out again.
  mallopt(M_MMAP_THRESHOLD, 1 << 17);
  std::printf("headers\tlimit\tfresh\tstart\tfile\n");
  for (int i = 1; i < argc; ++i) {
    const std::string path = argv[i];
    bench::Buffer buffer;
    std::uint64_t sum = 0;
    const double headers = bench::MedianMs(
        kRepeats, kSeconds, [&] { return (sum += bench::CountTopLevelBoxes(path)) > 0; });
    const double limit = bench::MedianMs(
        kRepeats, kSeconds, [&] { return (sum += bench::ReadAndSumMovie(path, &buffer)) > 0; });
    const double fresh = bench::MedianMs(kRepeats, kSeconds, [&] {
      bench::Buffer own;
      return (sum += bench::ReadAndSumMovie(path, &own)) > 0;
    });
    const double start =
        bench::MedianMs(kRepeats, kSeconds, [&] { return bench::OpenAndReadStart(path) > 0; });
    std::printf("%.6f\t%.6f\t%.6f\t%.6f\t%s\n", headers, limit, fresh, start, argv[i]);
  }
  return 0;
}
