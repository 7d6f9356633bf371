#include "io/Mp4StreamReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <new>

#include "io/ScanControl.h"
#include "io/Utf8Path.h"

namespace {

/// After a jump a small step is read, since the next jump is often near; forward reading doubles
/// it, over gaps shorter than a step too, but then less far: what lies in gaps is not wanted.
constexpr std::size_t kSmallestStep = 1024;
constexpr std::size_t kLargestStepOverGaps = 4096;
constexpr std::size_t kLargestStep = 16384;

bool IsRandomAccess(int file) {
  struct stat info {};
  return fstat(file, &info) == 0 && (S_ISREG(info.st_mode) || S_ISBLK(info.st_mode));
}

}  // namespace

Mp4StreamReader::~Mp4StreamReader() { Close(); }

void Mp4StreamReader::Close() {
  if (file >= 0) close(file);
  file = -1;
  pos = 0;
  windowLength = windowStep = 0;
}

bool Mp4StreamReader::SetFilePath(const wchar_t* path) {
  mp4::PathBuffer name;
  mp4::WidePathToUtf8(path, &name);
  return SetFileName(name.data());
}

bool Mp4StreamReader::SetFileName(const char* name) {
  Close();
  // Non-blocking, so that a pipe without a writer cannot hold the host up.
  file = open(name != nullptr ? name : "", O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file >= 0 && !IsRandomAccess(file)) Close();
  return file >= 0;
}

std::size_t Mp4StreamReader::ReadAt(long long offset, void* dst, std::size_t n) const {
  std::size_t got = 0;
  while (got < n) {
    const ssize_t r = pread(file, static_cast<char*>(dst) + got, n - got,
                            static_cast<off_t>(offset + static_cast<long long>(got)));
    if (r < 0 && errno == EINTR) continue;
    if (r <= 0) break;
    got += static_cast<std::size_t>(r);
  }
  return got;
}

/// While a file is being opened, reading behind its end asks the system nothing: a broken file can
/// have its boxes do that by the million.
bool Mp4StreamReader::NothingThere() const {
  return file < 0 || (scan != nullptr && pos >= scan->sourceSize);
}

std::size_t Mp4StreamReader::NextStep() const {
  const long long gap = pos - windowStart - static_cast<long long>(windowLength);
  const auto step = static_cast<long long>(windowStep);
  if (windowLength == 0 || gap < 0 || gap >= step) return kSmallestStep;
  if (gap == 0) return std::min(windowStep * 2, kLargestStep);
  return std::max(windowStep, std::min(windowStep * 2, kLargestStepOverGaps));
}

/// Loads the window at the current position; false when there is nothing to read.
bool Mp4StreamReader::Fill() {
  if (NothingThere()) return false;
  if (window == nullptr) {
    window.reset(new (std::nothrow) unsigned char[kLargestStep]);
    if (window == nullptr) return false;
  }
  windowStep = NextStep();
  windowStart = pos;
  windowLength = ReadAt(pos, window.get(), windowStep);
  return windowLength > 0;
}

unsigned char Mp4StreamReader::GetByte() {
  auto at = static_cast<unsigned long long>(pos - windowStart);
  if (at >= windowLength) {
    if (!Fill()) return 0;
    at = 0;
  }
  ++pos;
  return window[at];
}

unsigned int Mp4StreamReader::GetData(void* dst, unsigned int n) {
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

long long Mp4StreamReader::GetPos() { return pos; }

long long Mp4StreamReader::SetPos(long long p) {
  if (file < 0 || p < 0) return -1;
  pos = p;
  return 0;
}

long long Mp4StreamReader::Skip(long long n) {
  if (file < 0 || n < -pos || n > LLONG_MAX - pos) return -1;
  pos += n;
  return 0;
}

long long Mp4StreamReader::GetSize() {
  struct stat info {};
  if (file < 0 || fstat(file, &info) != 0) return 0;
  if (S_ISREG(info.st_mode)) return info.st_size;
  const off_t end = lseek(file, 0, SEEK_END);
  return end < 0 ? 0 : end;
}

bool Mp4StreamReader::IsEnd() { return GetPos() == GetSize(); }
