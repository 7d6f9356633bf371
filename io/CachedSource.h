#pragma once

#include <deque>
#include <memory>

#include "io/ByteSource.h"

namespace mp4 {

/// A source read in few, well-sized pieces, the last of which are kept: walking over box headers,
/// looking at fields in place, and going back to them cost one read of the source below. Delivers
/// exactly its bytes; its faults are noted here, too.
class CachedSource final : public ByteSource {
 public:
  /// The most bytes one View may ask for.
  static constexpr std::size_t kLargestView = std::size_t{64} << 10;
  /// Pieces kept: this many bytes, or the last piece alone.
  static constexpr std::size_t kMostKept = std::size_t{144} << 10;

  /// `below` is borrowed.
  explicit CachedSource(ByteSource* below);

  /// `n` bytes in one piece, valid until the next call of View or ReadAt; null unless all of them
  /// are there. `n` is at most kLargestView, else null.
  const unsigned char* View(std::uint64_t offset, std::size_t n);

  const unsigned char* InMemory(std::uint64_t offset, std::size_t n) const override {
    return below_->InMemory(offset, n);
  }
  ReadPace Pace() const override { return below_->Pace(); }

  /// Reads of the source below, and the bytes they delivered, so far.
  std::uint64_t Reads() const { return reads_; }
  std::uint64_t BytesRead() const { return bytesRead_; }

 private:
  struct Piece {
    std::uint64_t offset;
    std::size_t size;
    std::unique_ptr<unsigned char[]> bytes;
  };

  const Piece* PieceWith(std::uint64_t offset) const;
  const Piece* Load(std::uint64_t offset, std::size_t n);
  unsigned CountHop(std::uint64_t offset, std::uint64_t reach);
  std::size_t StepFor(std::uint64_t offset, std::size_t n);
  std::size_t ReadBelow(std::uint64_t offset, unsigned char* bytes, std::size_t n);
  void MakeRoom(std::size_t n);
  std::size_t Deliver(std::uint64_t offset, unsigned char* bytes, std::size_t n) override;

  ByteSource* below_;
  std::deque<Piece> pieces_;  ///< oldest first
  std::size_t kept_ = 0;
  std::uint64_t lastBegin_ = 0;  ///< of the piece read last
  std::uint64_t lastEnd_ = 0;    ///< its end
  std::size_t lastStep_ = 0;
  unsigned hops_ = 0;  ///< short ones in a row
  std::uint64_t reads_ = 0;
  std::uint64_t bytesRead_ = 0;
};

}  // namespace mp4
