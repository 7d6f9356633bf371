#pragma once

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "io/Mp4StreamReader.h"
#include "io/mmBufReader.h"
#include "tests/Bytes.h"

/// A file that exists while the object lives.
class TempFile {
 public:
  explicit TempFile(const Bytes& bytes) {
    std::string name = Directory() + "/mp4judge-XXXXXX";
    const int fd = mkstemp(name.data());
    if (fd < 0) std::abort();
    path_ = name;
    std::size_t done = 0;
    while (done < bytes.size()) {
      const ssize_t n = write(fd, bytes.data() + done, bytes.size() - done);
      if (n <= 0) std::abort();
      done += static_cast<std::size_t>(n);
    }
    close(fd);
  }
  ~TempFile() { std::remove(path_.c_str()); }
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;

  const std::string& path() const { return path_; }
  /// The path as the library takes it; temporary paths are ASCII.
  std::wstring wide() const { return std::wstring(path_.begin(), path_.end()); }

  static std::string Directory() {
    const char* dir = std::getenv("TMPDIR");
    return dir != nullptr && *dir != 0 ? dir : "/tmp";
  }

 private:
  std::string path_;
};

/// A file reader over bytes of its own.
struct FileReader {
  explicit FileReader(const Bytes& bytes) : file(bytes) {
    if (!reader.SetFilePath(file.wide().c_str())) std::abort();
  }
  TempFile file;
  Mp4StreamReader reader;
};
