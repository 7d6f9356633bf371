#pragma once

#include <cstdint>
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
};

struct InfoOptions {
  std::string file;
  bool json = false;
};

struct ChartOptions {
  std::string file;
  std::string output;  ///< ends in ".svg" or ".html"
};

struct DiffOptions {
  std::string first, second;
};

}  // namespace tool
