#include "bench/Limit.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "io/ByteOrder.h"

namespace bench {

namespace {

struct Box {
  std::uint64_t at, size, header;
  std::uint32_t type;
};

bool ReadHeader(int file, std::uint64_t at, Box* box) {
  unsigned char header[16] = {};
  if (pread(file, header, sizeof header, static_cast<off_t>(at)) < 8) return false;
  const std::uint32_t size = mp4::LoadBe32(header);
  *box = {at, size, 8, mp4::LoadBe32(header + 4)};
  if (size == 1) *box = {at, mp4::LoadBe64(header + 8), 16, box->type};
  return box->size >= box->header;
}

std::uint64_t Sum(const unsigned char* bytes, std::size_t n) {
  std::uint64_t sum = 0;
  for (std::size_t i = 0; i + 4 <= n; i += 4) {
    std::uint32_t word;
    std::memcpy(&word, bytes + i, 4);
    sum += word;
  }
  return sum;
}

std::unique_ptr<unsigned char[]> Uninitialised(std::size_t n) {
  return std::unique_ptr<unsigned char[]>(new unsigned char[n]);
}

constexpr std::uint32_t kMoov = 0x6D6F6F76;
constexpr std::uint32_t kMoof = 0x6D6F6F66;

}  // namespace

std::uint64_t ReadAndSumMovie(const std::string& path, Buffer* buffer) {
  const int file = open(path.c_str(), O_RDONLY);
  std::uint64_t sum = 0;
  Box box;
  for (std::uint64_t at = 0; ReadHeader(file, at, &box); at += box.size) {
    if (box.type != kMoov && box.type != kMoof) continue;
    if (buffer->size < box.size) *buffer = {Uninitialised(box.size), box.size};
    const ssize_t n = pread(file, buffer->bytes.get(), box.size, static_cast<off_t>(at));
    if (n > 0) sum += Sum(buffer->bytes.get(), static_cast<std::size_t>(n));
  }
  close(file);
  return sum;
}

std::uint64_t CountTopLevelBoxes(const std::string& path) {
  const int file = open(path.c_str(), O_RDONLY);
  std::uint64_t count = 0;
  Box box;
  for (std::uint64_t at = 0; ReadHeader(file, at, &box); at += box.size) ++count;
  close(file);
  return count;
}

std::uint64_t FreadAndSum(const std::string& path, std::uint64_t from) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return 0;
  static unsigned char chunk[1 << 16];
  std::uint64_t sum = 0;
  std::fseek(file, static_cast<long>(from), SEEK_SET);
  for (std::size_t n; (n = std::fread(chunk, 1, sizeof chunk, file)) > 0;) sum += Sum(chunk, n);
  std::fclose(file);
  return sum;
}

std::size_t OpenAndReadStart(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) return 0;
  unsigned char start[4096];
  const std::size_t n = std::fread(start, 1, sizeof start, file);
  std::fclose(file);
  return n;
}

}  // namespace bench
