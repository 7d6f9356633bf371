#pragma once

#include "io/ByteSource.h"
#include "io/WindowReader.h"

namespace mp4 {

/// The host's reader over a byte source: the positions of the reader over a file, so that the
/// host's parsers answer the same for memory, callbacks and ranges. What the source cannot deliver
/// reads as the end; ask the source for its trouble afterwards.
class SourceReader final : public WindowReader {
 public:
  /// `source` is borrowed; null is a reader without anything open.
  explicit SourceReader(ByteSource* source) : source_(source) {}

  long long GetSize() override;

 private:
  bool IsOpen() const override { return source_ != nullptr; }
  std::size_t ReadAt(long long offset, void* dst, std::size_t n) override;

  ByteSource* source_;
};

}  // namespace mp4
