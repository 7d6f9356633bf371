// Opens each file and reads its first 4 KiB, nothing else: what a folder costs at the least.
//   open_read FILE...
#include <cstdio>

#include "bench/Limit.h"

int main(int argc, char** argv) {
  std::size_t bytes = 0;
  for (int i = 1; i < argc; ++i) bytes += bench::OpenAndReadStart(argv[i]);
  std::printf("%zu bytes of %d files\n", bytes, argc - 1);
  return bytes > 0 ? 0 : 1;
}
