#pragma once

#include <cstddef>
#include <memory>

#include "io/mmStreamReader.h"

/// The reader over a block of memory, used for an inflated movie box. Positions are signed 32-bit:
/// 64-bit arguments are truncated, results sign-extended. Reads always advance and deliver zeros
/// outside the bytes, before the start too, so that the callers' size arithmetic comes out as at
/// the end of a file.
class MP4JUDGE_API mmBufReader : public mmStreamReader {
 public:
  mmBufReader() = default;
  /// Copies `n` bytes; at most 2^31 - 1 of them. On a failed allocation the reader is empty.
  mmBufReader(const void* bytes, std::size_t n);
  /// Takes over an array of `n` bytes, of which at most 2^31 - 1 are read.
  mmBufReader(std::unique_ptr<unsigned char[]> bytes, std::size_t n);

  unsigned char GetByte() override;
  /// Always returns `n`.
  unsigned int GetData(void* dst, unsigned int n) override;
  long long GetPos() override;
  /// Returns the new position.
  long long SetPos(long long pos) override;
  long long GetSize() override;
  /// Returns the new position.
  long long Skip(long long n) override;
  /// True when the position is at or past the size.
  bool IsEnd() override;

  mp4::ScanControl* Scan() override { return scan; }
  /// Attaches the account of an opening (borrowed; null detaches).
  void AttachScan(mp4::ScanControl* control) override { scan = control; }

  std::unique_ptr<unsigned char[]> data;
  int capacity = 0;
  int size = 0;
  int pos = 0;

 private:
  mp4::ScanControl* scan = nullptr;
};
