#pragma once

#include "io/ByteSource.h"

namespace mp4 {

/// Reads up to `n` bytes at `offset` into `bytes`. Returns how many, at least 1 below the size, or
/// a negative number of the caller's for a failure. Asked again for the rest when it gave fewer.
using ReadAtCallback = std::int64_t (*)(void* user, std::uint64_t offset, void* bytes,
                                        std::size_t n);
/// The size in bytes, or a negative number of the caller's for a failure.
using SizeCallback = std::int64_t (*)(void* user);

/// Bytes that a caller's two functions deliver. A read is taken to be slow, so there are few.
class CallbackSource final : public ByteSource {
 public:
  /// Asks for the size at once. A null function, or a failing size, is trouble at byte 0 of a
  /// source of size 0.
  CallbackSource(ReadAtCallback readAt, SizeCallback size, void* user);

  ReadPace Pace() const override { return ReadPace::kSlow; }

 private:
  std::size_t Deliver(std::uint64_t offset, unsigned char* bytes, std::size_t n) override;

  ReadAtCallback readAt_;
  void* user_;
};

}  // namespace mp4
