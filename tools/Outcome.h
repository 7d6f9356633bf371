#pragma once

#include <string>
#include <vector>

#include "mp4judge/mp4judge.h"
#include "tools/JudgeOptions.h"

namespace tool {

/// What the tool says about one file.
struct Outcome {
  mp4judge_verdict verdict = MP4JUDGE_UNDETERMINED;
  std::string detail;                ///< "cenc: video, audio", or the reason; may be empty
  std::vector<std::string> schemes;  ///< for the summary
  std::string json;                  ///< with --json
  std::string explanation;           ///< with --explain: further lines, each ended
  int hostAnswer = -1;
  bool otherFormat = false;  ///< plainly something else than a movie, by its first bytes
  bool lasting = true;       ///< follows from the file's bytes alone, so it may be remembered
};

/// Judges one file by its name, byte for byte. Throws bad_alloc alone.
Outcome JudgePath(const std::string& path, const JudgeOptions& options);

/// An outcome that needs no look at the file.
Outcome Unjudged(const std::string& path, const std::string& reason, const JudgeOptions& options);

/// Why a file is plainly no movie, so that nothing is to be seen in it; else empty.
std::string WhyNoMovie(const std::string& path);

/// "cenc: video, audio": by what the media of a protected file is protected; else empty.
std::string ProtectedBy(const mp4judge_report* report);

/// The line, or the lines, that tell it, separator included.
std::string Tell(const std::string& path, const Outcome& outcome, const JudgeOptions& options,
                 bool colours);

}  // namespace tool
