#pragma once

#include <string>
#include <vector>

namespace tool {

/// What a person may ask of a judgement.
struct JudgeOptions {
  std::vector<std::string> paths;       ///< as given, in order
  std::vector<std::string> extensions;  ///< lower case, without the dot; empty: any
  std::string filesFrom;                ///< a list of names, one a line; "-" is standard input
  std::string files0From;               ///< the same, each ended by a zero byte
  std::string cache;                    ///< the cache's file; empty: none
  int jobs = 0;                         ///< threads; 0: one for each processor
  bool recursive = false;
  bool allFiles = false;  ///< in folders, list what is plainly no movie too
  bool quiet = false;
  bool onlyProtected = false;
  bool onlyOthers = false;
  bool nulSeparated = false;
  bool json = false;
  bool explain = false;
  bool hostAnswer = false;
  bool everything = false;
  bool summary = false;
  bool sandbox = true;
};

/// Exit statuses. The highest that applies to any file holds.
enum ExitStatus { kAllClear = 0, kSomeProtected = 1, kTrouble = 2, kInterrupted = 130 };

}  // namespace tool
