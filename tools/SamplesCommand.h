#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tool {

/// What a person may ask of "mp4judge samples".
struct SamplesOptions {
  std::string path;
  std::string init;  ///< the initialization of a media segment; empty: the file describes itself
  std::optional<std::uint32_t> track;
  /// Samples listed in all; otherwise as many as the size of the file makes likely.
  std::optional<std::uint64_t> most;
  bool json = false;
  bool csv = false;
};

/// Prints where every sample lies and when it plays, track after track; returns the exit status: 0,
/// or 2 when the file cannot be opened or read, holds no tracks, or something is wrong with the
/// boxes that place its samples. What is wrong goes to standard error.
int RunSamples(const SamplesOptions& options);

/// The command, with its arguments still to be taken apart.
int SamplesCommand(const std::vector<std::string>& arguments);

}  // namespace tool
