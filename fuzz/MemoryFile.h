#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace fuzz {

/// The fuzzer's bytes as a real file that never touches a disk.
class MemoryFile {
 public:
  MemoryFile(const std::uint8_t* data, std::size_t size) : file_(memfd_create("fuzz", 0)) {
    if (file_ < 0) std::abort();
    for (std::size_t done = 0; done < size;) {
      const ssize_t n = write(file_, data + done, size - done);
      if (n <= 0) std::abort();
      done += static_cast<std::size_t>(n);
    }
    name_ = "/proc/self/fd/" + std::to_string(file_);
    path_.assign(name_.begin(), name_.end());
  }
  ~MemoryFile() { close(file_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  const wchar_t* path() const { return path_.c_str(); }
  const char* name() const { return name_.c_str(); }

 private:
  int file_;
  std::string name_;
  std::wstring path_;
};

}  // namespace fuzz
