#include "tools/FileVerdict.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>

#include "io/Limits.h"
#include "io/Utf8Path.h"
#include "tools/WidePath.h"

namespace {

std::string SystemReason() { return std::strerror(errno); }

/// Opens and closes the file, which finds more than permission bits tell.
bool Opens(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return false;
  close(fd);
  return true;
}

/// Why the library could not even start on the file; empty when it can.
std::string Obstacle(const std::string& path) {
  struct stat info {};
  if (stat(path.c_str(), &info) != 0) return SystemReason();
  if (S_ISDIR(info.st_mode)) return "is a directory";
  if (!S_ISREG(info.st_mode)) return "not a regular file";
  if (!Opens(path)) return SystemReason();
  if (info.st_size < mp4::limits::kSmallestFile) {
    return "shorter than " + std::to_string(mp4::limits::kSmallestFile) + " bytes";
  }
  return {};
}

}  // namespace

FileVerdict JudgeNamedFile(const std::string& path) {
  const auto unreadable = [](std::string reason) {
    return FileVerdict{mp4::Verdict::kUnreadable, std::move(reason)};
  };
  std::string obstacle = Obstacle(path);
  if (!obstacle.empty()) return unreadable(std::move(obstacle));
  const std::optional<std::wstring> wide = WidePath(path);
  if (!wide) return unreadable("the name is not valid UTF-8");
  // The library would cut a longer name short and judge another file.
  if (path.size() > mp4::kPathLimit) {
    return unreadable("the name is longer than " + std::to_string(mp4::kPathLimit) + " bytes");
  }
  const mp4::Verdict verdict = mp4::JudgeFile(wide->c_str());
  if (verdict == mp4::Verdict::kUnreadable) {
    return unreadable("not a movie file: no readable movie box");
  }
  return {verdict, {}};
}
