#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

/// What the machine can do: the least any reader of a movie must spend.
namespace bench {

/// Memory that is kept from one reading to the next.
struct Buffer {
  std::unique_ptr<unsigned char[]> bytes;
  std::size_t size = 0;
};

/// Finds the movie box by walking the top-level headers, reads it whole with pread into `buffer`
/// and returns the sum of its words.
std::uint64_t ReadAndSumMovie(const std::string& path, Buffer* buffer);

/// Walks the top-level headers alone and returns how many there are.
std::uint64_t CountTopLevelBoxes(const std::string& path);

/// Reads the whole file with fread, 64 KiB at a time, and sums its words: for tables by themselves.
std::uint64_t FreadAndSum(const std::string& path, std::uint64_t from);

/// Opens the file with fopen and reads its first 4 KiB; what any program that looks into a file
/// does. Returns the bytes read.
std::size_t OpenAndReadStart(const std::string& path);

}  // namespace bench
