#pragma once

#include "io/ByteSource.h"

namespace mp4 {

/// The first bytes of another source, as if it ended there.
class PrefixSource final : public ByteSource {
 public:
  /// `below` is borrowed.
  PrefixSource(ByteSource* below, std::uint64_t size);

  const unsigned char* InMemory(std::uint64_t offset, std::size_t n) const override;
  ReadPace Pace() const override { return below_->Pace(); }

 private:
  std::size_t Deliver(std::uint64_t offset, unsigned char* bytes, std::size_t n) override;

  ByteSource* below_;
};

}  // namespace mp4
