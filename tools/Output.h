#pragma once

#include <memory>
#include <string>

#include "mp4judge/look.h"

namespace tool {

/// Whether standard output is a terminal that shows colours, and NO_COLOR is not set.
bool WantsColours();

/// Text on its way to standard output, coloured when that is wanted.
class Output {
 public:
  Output() = default;
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  void Write(const std::string& text);
  /// The same dimmed, bold, or as a warning.
  void Dim(const std::string& text) { Styled("\x1B[2m", text); }
  void Bold(const std::string& text) { Styled("\x1B[1m", text); }
  void Warn(const std::string& text) { Styled("\x1B[31m", text); }
  /// Hands out what is left. False, with a word on standard error, when the output failed.
  bool End();
  bool Failed() const;

 private:
  void Styled(const char* style, const std::string& text);

  const bool colours_ = WantsColours();
};

/// A text of the file that keeps to its line: control characters stand as \xHH.
std::string OneLine(const std::string& text);

using TreeHandle = std::unique_ptr<mp4judge_tree, void (*)(mp4judge_tree*)>;

/// Opens a file. Null when that fails, and why is said on standard error.
TreeHandle OpenToLook(const std::string& file);
/// Says on standard error that a file is plainly no movie. True when it may be one.
bool CheckMovie(const std::string& file);
/// Says on standard error what kept a file from being read as a whole. True when nothing did.
bool CheckRead(const std::string& file, mp4judge_error error, int systemError);

}  // namespace tool
