#include "io/Mp4StreamReader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "io/Utf8Path.h"

namespace {

bool IsRandomAccess(int file) {
  struct stat info {};
  return fstat(file, &info) == 0 && (S_ISREG(info.st_mode) || S_ISBLK(info.st_mode));
}

}  // namespace

Mp4StreamReader::~Mp4StreamReader() { Close(); }

void Mp4StreamReader::Close() {
  if (file >= 0) close(file);
  file = -1;
  Restart();
}

bool Mp4StreamReader::SetFilePath(const wchar_t* path) {
  mp4::PathBuffer name;
  mp4::WidePathToUtf8(path, &name);
  Close();
  // Non-blocking, so that a pipe without a writer cannot hold the host up.
  file = open(name.data(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file >= 0 && !IsRandomAccess(file)) Close();
  return file >= 0;
}

std::size_t Mp4StreamReader::ReadAt(long long offset, void* dst, std::size_t n) {
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

long long Mp4StreamReader::GetSize() {
  struct stat info {};
  if (file < 0 || fstat(file, &info) != 0) return 0;
  if (S_ISREG(info.st_mode)) return info.st_size;
  const off_t end = lseek(file, 0, SEEK_END);
  return end < 0 ? 0 : end;
}
