#include "io/FileSource.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "io/WithoutThrowing.h"

namespace mp4 {

std::unique_ptr<FileSource> FileSource::Open(const char* path, OpenResult* result) {
  OpenResult unused;
  if (result == nullptr) result = &unused;
  // Non-blocking, so that a pipe without a writer cannot hold the caller up.
  const int file = open(path != nullptr ? path : "", O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) {
    *result = {OpenFault::kSystem, errno};
    return nullptr;
  }
  std::unique_ptr<FileSource> source;
  if (!WithoutThrowing([&] { source.reset(new FileSource(file)); })) {
    close(file);
    *result = {OpenFault::kSystem, ENOMEM};
    return nullptr;
  }
  *result = source->TakeSize();
  if (result->fault != OpenFault::kNone) source.reset();
  return source;
}

FileSource::~FileSource() { close(file_); }

OpenResult FileSource::TakeSize() {
  struct stat info {};
  if (fstat(file_, &info) != 0) return {OpenFault::kSystem, errno};
  if (S_ISDIR(info.st_mode)) return {OpenFault::kDirectory, 0};
  if (S_ISREG(info.st_mode)) {
    SetSize(static_cast<std::uint64_t>(info.st_size));
    return {};
  }
  if (!S_ISBLK(info.st_mode)) return {OpenFault::kNotRegular, 0};
  const off_t end = lseek(file_, 0, SEEK_END);
  if (end < 0) return {OpenFault::kSystem, errno};
  SetSize(static_cast<std::uint64_t>(end));
  return {};
}

std::size_t FileSource::Deliver(std::uint64_t offset, unsigned char* bytes, std::size_t n) {
  std::size_t got = 0;
  while (got < n) {
    const ssize_t r = pread(file_, bytes + got, n - got, static_cast<off_t>(offset + got));
    if (r < 0 && errno == EINTR) continue;
    if (r <= 0) {
      // Nothing below the size means that the file was cut meanwhile.
      Report({SourceFault::kReadFailed, offset + got, n - got, r < 0 ? errno : 0});
      break;
    }
    got += static_cast<std::size_t>(r);
  }
  return got;
}

}  // namespace mp4
