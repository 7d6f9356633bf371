#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tool {

/// What a person may ask of the boxes of a file.
struct TreeOptions {
  std::string file;
  std::string path;  ///< as mp4judge_tree_options has it; empty: all
  int depth = 0;     ///< levels; 0: all
  std::uint64_t most = 200000;
  bool fields = true;
  bool json = false;
  bool sandbox = true;
};

struct InfoOptions {
  std::string file;
  bool json = false;
  bool sandbox = true;
};

struct SamplesOptions {
  std::string file;
  std::string init;  ///< the initialization of a media segment; empty: the file describes itself
  std::optional<std::uint32_t> track;
  /// Samples listed in all; otherwise as many as the size of the file makes likely.
  std::optional<std::uint64_t> most;
  bool json = false;
  bool csv = false;
  bool sandbox = true;
};

struct ChartOptions {
  std::string file;
  std::string output;  ///< ends in ".svg" or ".html"
  bool sandbox = true;
};

struct DiffOptions {
  std::string first, second;
  bool sandbox = true;
};

}  // namespace tool
