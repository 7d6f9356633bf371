#include "io/CachedSource.h"

#include <algorithm>
#include <cstring>

#include "io/NewArray.h"
#include "io/ReadAhead.h"

namespace mp4 {

CachedSource::CachedSource(ByteSource* below) : below_(below) {
  SetSize(below->Size());
  if (below->Failed()) Report(below->Trouble());
}

/// The newest piece that holds this byte; few are kept, so a plain scan is the quickest.
const CachedSource::Piece* CachedSource::PieceWith(std::uint64_t offset) const {
  for (auto piece = pieces_.rbegin(); piece != pieces_.rend(); ++piece) {
    if (offset - piece->offset < piece->size) return &*piece;
  }
  return nullptr;
}

/// How many reads in a row went forward by no more than `reach`, with one at `offset`.
unsigned CachedSource::CountHop(std::uint64_t offset, std::uint64_t reach) {
  const bool isShort = lastStep_ != 0 && offset >= lastBegin_ && offset < lastEnd_ + reach;
  hops_ = isShort ? hops_ + 1 : 0;
  lastBegin_ = offset;
  return hops_;
}

std::size_t CachedSource::StepFor(std::uint64_t offset, std::size_t n) {
  std::size_t step = 0;
  switch (below_->Pace()) {
    case ReadPace::kExact:
      break;
    case ReadPace::kSlow: {
      const bool growing = CountHop(offset, kLongestSlowHop) > kSlowHopsBeforeGrowing;
      step = growing          ? std::min(lastStep_ * 2, kLargestSlowRead)
             : lastStep_ == 0 ? kFirstSlowRead
                              : kNextSlowRead;
      break;
    }
    case ReadPace::kQuick: {
      const bool growing = CountHop(offset, kLongestQuickHop) > kQuickHopsBeforeGrowing;
      const bool forward = lastStep_ != 0 && offset == lastEnd_;
      step = growing || forward ? std::min(lastStep_ * 2, kLargestQuickRead) : kFirstQuickRead;
      break;
    }
  }
  lastStep_ = std::max<std::size_t>(step, 1);
  return std::max(step, n);
}

std::size_t CachedSource::ReadBelow(std::uint64_t offset, unsigned char* bytes, std::size_t n) {
  const std::size_t got = below_->ReadAt(offset, bytes, n);
  ++reads_;
  bytesRead_ += got;
  if (got < n && below_->Failed()) Report(below_->Trouble());
  return got;
}

void CachedSource::MakeRoom(std::size_t n) {
  while (!pieces_.empty() && kept_ + n > kMostKept) {
    kept_ -= pieces_.front().size;
    pieces_.pop_front();
  }
}

/// Reads a piece that starts at `offset` and holds `n` bytes if the source has them; null when it
/// delivers nothing.
const CachedSource::Piece* CachedSource::Load(std::uint64_t offset, std::size_t n) {
  const std::size_t step =
      static_cast<std::size_t>(std::min<std::uint64_t>(StepFor(offset, n), Size() - offset));
  Piece piece{offset, 0, nullptr};
  piece.bytes = NewArray<unsigned char>(step);
  if (piece.bytes == nullptr) {
    Report({SourceFault::kNoMemory, offset, n, 0});
    return nullptr;
  }
  piece.size = ReadBelow(offset, piece.bytes.get(), step);
  if (piece.size == 0) return nullptr;
  MakeRoom(step);
  kept_ += piece.size;
  lastEnd_ = offset + piece.size;
  pieces_.push_back(std::move(piece));
  return &pieces_.back();
}

const unsigned char* CachedSource::View(std::uint64_t offset, std::size_t n) {
  if (offset > Size() || n > Size() - offset || n > kLargestView) return nullptr;
  static const unsigned char nothing = 0;
  if (n == 0) return &nothing;
  if (const unsigned char* direct = below_->InMemory(offset, n)) return direct;
  const Piece* piece = PieceWith(offset);
  if (piece == nullptr || n > piece->size - (offset - piece->offset)) piece = Load(offset, n);
  if (piece == nullptr || n > piece->size - (offset - piece->offset)) return nullptr;
  return piece->bytes.get() + (offset - piece->offset);
}

std::size_t CachedSource::Deliver(std::uint64_t offset, unsigned char* bytes, std::size_t n) {
  if (const unsigned char* direct = below_->InMemory(offset, n)) {
    std::memcpy(bytes, direct, n);
    return n;
  }
  std::size_t got = 0;
  while (got < n) {
    const std::uint64_t at = offset + got;
    const Piece* piece = PieceWith(at);
    if (piece == nullptr && n - got >= kLargestQuickRead) {
      return got + ReadBelow(at, bytes + got, n - got);
    }
    if (piece == nullptr) piece = Load(at, n - got);
    if (piece == nullptr) break;
    const std::size_t inside = static_cast<std::size_t>(at - piece->offset);
    const std::size_t taken = std::min(n - got, piece->size - inside);
    std::memcpy(bytes + got, piece->bytes.get() + inside, taken);
    got += taken;
  }
  return got;
}

}  // namespace mp4
