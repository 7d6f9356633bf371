#include "tools/FileVerdict.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace {

/// A shorter file is no movie file at all.
constexpr int kSmallestFile = 20;

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
  if (info.st_size < kSmallestFile) {
    return "shorter than " + std::to_string(kSmallestFile) + " bytes";
  }
  return {};
}

}  // namespace

FileVerdict JudgeNamedFile(const std::string& path) {
  std::string obstacle = Obstacle(path);
  if (!obstacle.empty()) return {MP4JUDGE_HOST_UNREADABLE, std::move(obstacle)};
  const mp4judge_host_answer answer = mp4judge_host_judge(path.c_str());
  if (answer == MP4JUDGE_HOST_UNREADABLE) {
    return {answer, "not a movie file: no readable movie box"};
  }
  return {answer, {}};
}
