#pragma once

#include <cstddef>

#include "io/WindowReader.h"

/// The reader over a file, with exactly the positions of C stdio: reading never moves past the end,
/// seeking may, and a seek before the start fails and moves nothing. Without an open file every
/// operation is harmless: size and position 0, reads give 0, seeks fail.
///
/// Only regular files and block devices open: a directory, a pipe or a socket is refused, and
/// opening never waits. Small reads go through a window that starts small after a jump and grows
/// while reading goes forward; large reads go straight to their destination.
class MP4JUDGE_API Mp4StreamReader : public mp4::WindowReader {
 public:
  Mp4StreamReader() = default;
  ~Mp4StreamReader() override;

  /// Opens the file for reading, closing an earlier one. The wide path is UTF-32; its UTF-8 form is
  /// cut at a whole character so that it never exceeds 2,047 bytes. False when it cannot be opened;
  /// null stands for the empty name.
  bool SetFilePath(const wchar_t* path);

  long long GetSize() override;

 private:
  void Close();
  bool IsOpen() const override { return file >= 0; }
  std::size_t ReadAt(long long offset, void* dst, std::size_t n) override;

  int file = -1;
};
