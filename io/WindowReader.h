#pragma once

#include <cstddef>
#include <memory>

#include "io/mmStreamReader.h"

namespace mp4 {

/// A reader with exactly the positions of C stdio over something that is read at an offset: reading
/// never moves past the end, seeking may, and a seek before the start fails and moves nothing.
/// Without anything open every operation is harmless: position 0, reads give 0, seeks fail.
///
/// Small reads go through a window that starts small after a jump and grows while reading goes
/// forward; large reads go straight to their destination.
class MP4JUDGE_API WindowReader : public mmStreamReader {
 public:
  unsigned char GetByte() override;
  /// Returns the bytes actually read, fewer at the end.
  unsigned int GetData(void* dst, unsigned int n) override;
  long long GetPos() override;
  /// Returns 0 on success, -1 on failure.
  long long SetPos(long long pos) override;
  /// Returns 0 on success, -1 on failure.
  long long Skip(long long n) override;
  /// True exactly at the end; a position past it does not count.
  bool IsEnd() override;

  ScanControl* Scan() override { return scan; }
  void AttachScan(ScanControl* control) override { scan = control; }

 protected:
  /// Goes to position 0 and drops what the window holds.
  void Restart();

 private:
  virtual bool IsOpen() const = 0;
  /// Reads up to `n` bytes at `offset`; fewer at the end or when something fails.
  virtual std::size_t ReadAt(long long offset, void* dst, std::size_t n) = 0;

  bool Fill();
  std::size_t NextStep() const;
  bool NothingThere() const;

  long long pos = 0;
  std::unique_ptr<unsigned char[]> window;
  long long windowStart = 0;
  std::size_t windowLength = 0;
  std::size_t windowStep = 0;
  ScanControl* scan = nullptr;
};

}  // namespace mp4
