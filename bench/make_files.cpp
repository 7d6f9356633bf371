// The files that are measured:
//   make_files movies             makes the six standard movies and prints "NAME PATH" for each
//   make_files fragments          makes movies of fragments and prints "COUNT PATH" for each
//   make_files folder DIR COUNT   makes COUNT small files of several kinds in DIR
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "bench/Movies.h"

namespace {

int MakeMovies() {
  for (const bench::Shape& shape : bench::StandardMovies()) {
    std::printf("%s %s\n", shape.name.c_str(), bench::MovieFile(shape).c_str());
  }
  return 0;
}

int MakeFragments() {
  for (const std::uint32_t count : {1000, 4000, 16000, 64000}) {
    std::printf("%u %s\n", count, bench::MovieFile(bench::Fragmented(count)).c_str());
  }
  return 0;
}

/// Clear, protected, fragmented, and sound alone, in turn; no two neighbours of a kind are alike.
bench::Shape SmallMovie(std::uint32_t i) {
  const std::uint32_t samples = 30 + i % 97;
  switch (i % 4) {
    case 0:
      return {.name = "clear", .videoSamples = samples, .audioSamples = samples};
    case 1:
      return {.name = "protected",
              .videoSamples = samples,
              .audioSamples = samples,
              .audioFormat = "drms"};
    case 2:
      return {.name = "fragmented", .fragments = 2 + i % 5};
    default:
      return {.name = "song", .audioSamples = 10 * samples};
  }
}

int MakeFolder(const std::string& dir, std::uint32_t count) {
  for (std::uint32_t i = 0; i < count; ++i) {
    const bench::Shape shape = SmallMovie(i);
    bench::WriteMovie(shape, dir + "/" + std::to_string(100000 + i) + "-" + shape.name + ".mp4");
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc > 1 ? argv[1] : "";
  if (what == "movies" && argc == 2) return MakeMovies();
  if (what == "fragments" && argc == 2) return MakeFragments();
  if (what == "folder" && argc == 4) {
    return MakeFolder(argv[2], static_cast<std::uint32_t>(std::atoi(argv[3])));
  }
  std::fprintf(stderr, "usage: make_files movies | fragments | folder DIR COUNT\n");
  return 2;
}
