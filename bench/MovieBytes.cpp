#include "bench/MovieBytes.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>

#include "io/ByteOrder.h"

namespace bench {

namespace {

template <std::size_t n>
bool IsOneOf(std::string_view type, const std::string_view (&types)[n]) {
  return std::find(types, types + n, type) != types + n;
}

constexpr std::string_view kParents[] = {"moov", "trak", "mdia", "minf", "stbl", "moof", "traf"};
/// Composition offsets are not among them: they are passed over.
constexpr std::string_view kTables[] = {"stts", "stsc", "stsz", "stco", "co64", "stss"};

void Count(int file, std::uint64_t at, std::uint64_t end, MovieBytes* sum) {
  unsigned char header[16];
  while (at + 8 <= end && pread(file, header, sizeof header, static_cast<off_t>(at)) >= 8) {
    const std::uint32_t shortSize = mp4::LoadBe32(header);
    const std::uint64_t size = shortSize == 1 ? mp4::LoadBe64(header + 8) : shortSize;
    const std::string_view type(reinterpret_cast<const char*>(header) + 4, 4);
    if (size < 8) return;
    if (type == "moov" || type == "moof") sum->movie += size;
    if (IsOneOf(type, kTables)) sum->tables += size - 16;
    if (type == "trun") sum->runs += size - 16;
    if (IsOneOf(type, kParents)) Count(file, at + 8, at + size, sum);
    at += size;
  }
}

}  // namespace

MovieBytes CountMovieBytes(const std::string& path) {
  MovieBytes sum;
  const int file = open(path.c_str(), O_RDONLY);
  const off_t end = lseek(file, 0, SEEK_END);
  if (end > 0) Count(file, 0, static_cast<std::uint64_t>(end), &sum);
  close(file);
  return sum;
}

}  // namespace bench
