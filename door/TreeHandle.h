#pragma once

#include <memory>
#include <string>

#include "io/ByteSource.h"
#include "mp4judge/look.h"

/// The handle of mp4judge/look.h.
struct mp4judge_tree {
  std::unique_ptr<mp4::ByteSource> source;  ///< null when it could not be opened
  mp4judge_error error = MP4JUDGE_OK;
  int systemError = 0;
  bool complete = false;
  std::string text;

  /// Takes over what went wrong with the source since.
  void NoteTrouble(const mp4::ByteSource& read);
};
