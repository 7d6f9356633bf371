#pragma once

#include <string>

#include "mp4judge/mp4judge.h"

/// What the tool says about one file.
struct FileVerdict {
  mp4judge_host_answer verdict;
  std::string reason;  ///< why it is unreadable; empty otherwise
};

/// Judges the file of that name (bytes as the system gives them). Only regular files are opened, so
/// that a pipe or a device cannot hold the caller up.
FileVerdict JudgeNamedFile(const std::string& path);
