#pragma once

#include <memory>

#include "io/ByteSource.h"

namespace mp4 {

/// Why a file did not open.
enum class OpenFault : std::uint8_t {
  kNone,
  kSystem,      ///< the system refused; its errno says why
  kDirectory,   ///< a directory
  kNotRegular,  ///< a pipe, socket or character device: never waited for
};

struct OpenResult {
  OpenFault fault = OpenFault::kNone;
  int error = 0;  ///< errno of kSystem
};

/// A regular file or block device, read with pread. Opening never waits.
class FileSource final : public ByteSource {
 public:
  /// Opens the file of these very bytes as name. Null with the reason in `result` (which may be
  /// null) when it cannot be opened, and when there is no memory (kSystem, ENOMEM).
  static std::unique_ptr<FileSource> Open(const char* path, OpenResult* result);
  ~FileSource() override;

 private:
  explicit FileSource(int file) : file_(file) {}
  OpenResult TakeSize();
  std::size_t Deliver(std::uint64_t offset, unsigned char* bytes, std::size_t n) override;

  int file_;
};

}  // namespace mp4
