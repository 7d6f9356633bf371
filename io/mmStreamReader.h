#pragma once

#include "io/Export.h"

namespace mp4 {
class ScanControl;
}

/// The byte source every box reads through. Two readers exist: Mp4StreamReader (a file) and
/// mmBufReader (memory). The order of the operations is part of the interface.
///
/// The multi-byte getters are composed from GetByte and the smaller getters, always through the
/// virtual table, so a reader that overrides GetByte changes them all. There is no error state:
/// what lies outside the source reads as zero.
class MP4JUDGE_API mmStreamReader {
 public:
  mmStreamReader() = default;
  mmStreamReader(const mmStreamReader&) = delete;
  mmStreamReader& operator=(const mmStreamReader&) = delete;
  virtual ~mmStreamReader();

  virtual unsigned long long GetLe64();
  virtual unsigned long long GetBe64();
  virtual unsigned int GetLe32();
  virtual unsigned int GetBe32();
  virtual unsigned int GetLe24();
  virtual unsigned int GetBe24();
  virtual unsigned int GetLe16();
  virtual unsigned int GetBe16();

  /// The next byte, 0 outside the source.
  virtual unsigned char GetByte() = 0;
  /// Copies the next `n` bytes to `dst` and returns how many were delivered.
  virtual unsigned int GetData(void* dst, unsigned int n) = 0;
  /// Position in bytes from the start of the source.
  virtual long long GetPos() = 0;
  /// Goes to an absolute position. The result differs between readers; do not use it as a position.
  virtual long long SetPos(long long pos) = 0;
  /// Size of the source in bytes.
  virtual long long GetSize() = 0;
  /// Moves by `n` bytes, back for a negative `n`. The result differs between readers.
  virtual long long Skip(long long n) = 0;
  /// True at the end of the source.
  virtual bool IsEnd() = 0;

  /// The account of the opening in progress, null outside one. Not for hosts; a host's own reader
  /// leaves it alone.
  virtual mp4::ScanControl* Scan() { return nullptr; }
  /// Attaches that account (borrowed; null detaches). A reader that keeps none is unbounded.
  virtual void AttachScan(mp4::ScanControl* control) { (void)control; }
};
