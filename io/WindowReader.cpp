#include "io/WindowReader.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "io/NewArray.h"
#include "io/ScanControl.h"

namespace mp4 {

namespace {

/// Bytes loaded at a time. A load behind a jump takes the smallest step. A load that goes on where
/// the last one ended takes twice the last step, up to the largest. So does a load behind a gap
/// that is shorter than the last step, but up to kLargestStepOverGaps only: the bytes of gaps are
/// loaded for nothing.
constexpr std::size_t kSmallestStep = 1024;
constexpr std::size_t kLargestStepOverGaps = 4096;
constexpr std::size_t kLargestStep = 16384;

}  // namespace

void WindowReader::Restart() {
  pos = 0;
  windowLength = windowStep = 0;
}

/// While a source is being opened, reading behind its end asks nobody: a broken file can have its
/// boxes do that by the million.
bool WindowReader::NothingThere() const {
  return !IsOpen() || (scan != nullptr && pos >= scan->sourceSize);
}

std::size_t WindowReader::NextStep() const {
  const long long gap = pos - windowStart - static_cast<long long>(windowLength);
  const auto step = static_cast<long long>(windowStep);
  if (windowLength == 0 || gap < 0 || gap >= step) return kSmallestStep;
  if (gap == 0) return std::min(windowStep * 2, kLargestStep);
  return std::max(windowStep, std::min(windowStep * 2, kLargestStepOverGaps));
}

/// Loads the window at the current position; false when there is nothing to read.
bool WindowReader::Fill() {
  if (NothingThere()) return false;
  if (window == nullptr) {
    window = NewArray<unsigned char>(kLargestStep);
    if (window == nullptr) return false;
  }
  windowStep = NextStep();
  windowStart = pos;
  windowLength = ReadAt(pos, window.get(), windowStep);
  return windowLength > 0;
}

unsigned char WindowReader::GetByte() {
  auto at = static_cast<unsigned long long>(pos - windowStart);
  if (at >= windowLength) {
    if (!Fill()) return 0;
    at = 0;
  }
  ++pos;
  return window[at];
}

unsigned int WindowReader::GetData(void* dst, unsigned int n) {
  auto* out = static_cast<unsigned char*>(dst);
  unsigned int got = 0;
  while (got < n) {
    const auto at = static_cast<unsigned long long>(pos - windowStart);
    const std::size_t wanted = n - got;
    std::size_t taken = 0;
    if (at < windowLength) {
      taken = std::min<std::size_t>(wanted, windowLength - at);
      std::memcpy(out + got, window.get() + at, taken);
    } else if (wanted >= kLargestStep) {
      taken = NothingThere() ? 0 : ReadAt(pos, out + got, wanted);
    } else if (Fill()) {
      continue;
    }
    if (taken == 0) break;
    got += static_cast<unsigned int>(taken);
    pos += static_cast<long long>(taken);
  }
  return got;
}

long long WindowReader::GetPos() { return pos; }

long long WindowReader::SetPos(long long p) {
  if (!IsOpen() || p < 0) return -1;
  pos = p;
  return 0;
}

long long WindowReader::Skip(long long n) {
  if (!IsOpen() || n < -pos || n > LLONG_MAX - pos) return -1;
  pos += n;
  return 0;
}

bool WindowReader::IsEnd() { return GetPos() == GetSize(); }

}  // namespace mp4
