#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "io/mmStreamReader.h"

/// The reader over a file, with exactly the positions of C stdio: reading never moves past the end,
/// seeking may, and a seek before the start fails and moves nothing. Without an open file every
/// operation is harmless: size and position 0, reads give 0, seeks fail.
///
/// Only regular files and block devices open: a directory, a pipe or a socket is refused, and
/// opening never waits. Small reads go through a window that starts small after a jump and grows
/// while reading goes forward; large reads go straight to their destination.
class MP4JUDGE_API Mp4StreamReader : public mmStreamReader {
 public:
  Mp4StreamReader() = default;
  ~Mp4StreamReader() override;

  /// Opens the file for reading, closing an earlier one. The wide path is UTF-32; its UTF-8 form is
  /// cut at a whole character so that it never exceeds 2,047 bytes. False when it cannot be opened;
  /// null stands for the empty name.
  bool SetFilePath(const wchar_t* path);
  /// The same for a name as the system has it: its very bytes, whatever they are, and never cut.
  bool SetFileName(const char* name);

  unsigned char GetByte() override;
  /// Returns the bytes actually read, fewer at the end of the file.
  unsigned int GetData(void* dst, unsigned int n) override;
  long long GetPos() override;
  /// Returns 0 on success, -1 on failure.
  long long SetPos(long long pos) override;
  long long GetSize() override;
  /// Returns 0 on success, -1 on failure.
  long long Skip(long long n) override;
  /// True exactly at the end; a position past it does not count.
  bool IsEnd() override;

  mp4::ScanControl* Scan() override { return scan; }
  /// Attaches the account of an opening (borrowed; null detaches).
  void AttachScan(mp4::ScanControl* control) { scan = control; }

 private:
  void Close();
  bool Fill();
  std::size_t NextStep() const;
  bool NothingThere() const;
  std::size_t ReadAt(long long offset, void* dst, std::size_t n) const;

  int file = -1;
  long long pos = 0;
  std::unique_ptr<unsigned char[]> window;
  long long windowStart = 0;
  std::size_t windowLength = 0;
  std::size_t windowStep = 0;
  mp4::ScanControl* scan = nullptr;
};
