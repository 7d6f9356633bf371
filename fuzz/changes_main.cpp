// Runs a fuzz target over broken copies of real files: changes_TARGET FILE...
// Each file is cut at 20 places and has a random byte changed 200 times, half of them near its
// ends, where the boxes are.
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Stands in for the fuzzer's mutation, which is not used here.
extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t*, std::size_t size, std::size_t) {
  return size;
}

namespace {

constexpr int kCuts = 20;
constexpr int kChanges = 200;
constexpr std::size_t kEnds = 4096;

using Random = std::mt19937_64;

std::vector<std::uint8_t> ReadFile(const char* path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

std::size_t Place(std::size_t size, bool anywhere, Random* random) {
  const std::size_t place = (*random)() % size;
  if (anywhere || size <= 2 * kEnds) return place;
  const std::size_t near = place % (2 * kEnds);
  return near < kEnds ? near : size - 1 - (near - kEnds);
}

void Break(std::vector<std::uint8_t> bytes, Random* random) {
  if (bytes.empty()) return;
  for (int i = 0; i < kCuts; ++i) {
    // A copy of exactly this size, so that the sanitizer sees a read behind it.
    const std::vector<std::uint8_t> cut(bytes.begin(),
                                        bytes.begin() + Place(bytes.size(), i % 2, random));
    LLVMFuzzerTestOneInput(cut.data(), cut.size());
  }
  for (int i = 0; i < kChanges; ++i) {
    std::uint8_t& byte = bytes[Place(bytes.size(), i % 2, random)];
    const std::uint8_t before = byte;
    byte = static_cast<std::uint8_t>((*random)());
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    byte = before;
  }
}

}  // namespace

int main(int argc, char** argv) {
  Random random(1);
  for (int i = 1; i < argc; ++i) {
    const std::vector<std::uint8_t> bytes = ReadFile(argv[i]);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    Break(bytes, &random);
  }
  std::printf("%d files, %d runs each\n", argc - 1, 1 + kCuts + kChanges);
  return argc > 1 ? 0 : 1;
}
