#include "door/HostCopy.h"

#include <algorithm>

#include "io/FourCC.h"
#include "iso/BoxTree.h"

namespace mp4 {

namespace {

/// Bytes behind the last box that the host might take for one.
constexpr std::uint64_t kMostRest = 64;

bool IsReadByHost(std::uint32_t type) {
  return type == FourCC("moov") || type == FourCC("moof") || type == FourCC("ftyp");
}

class Copying {
 public:
  Copying(CachedSource* source, std::uint64_t end, std::uint64_t most)
      : source_(source), end_(end), most_(most) {}

  HostCopy Run() {
    BoxTree tree(source_);
    std::uint64_t done = 0;
    for (BoxId id = tree.FirstChild(kRootBox); id != kNoBox && copy_.whole; id = tree.Next(id)) {
      const Box box = tree.At(id);
      if (box.offset >= end_) break;
      Take(box);
      done = box.end;
    }
    if (done < end_) Append(done, std::min(end_ - done, kMostRest));
    return std::move(copy_);
  }

  HostCopy RunOverEveryByte() {
    Append(0, end_);
    return std::move(copy_);
  }

 private:
  void Take(const Box& box) {
    const std::uint64_t header = source_->Size() - box.offset < 16 ? box.headerSize : 16;
    const bool all = IsReadByHost(box.type);
    const std::size_t at = copy_.bytes.size();
    Append(box.offset,
           all ? box.end - box.offset : std::min<std::uint64_t>(header, box.end - box.offset));
    if (!all && copy_.whole) Shorten(at, box);
  }

  /// Writes into the header at `at` the size that is left of its box. A size of 0 stays.
  void Shorten(std::size_t at, const Box& box) {
    const std::size_t left = copy_.bytes.size() - at;
    const auto stored = [&](std::size_t i) { return copy_.bytes[at + i]; };
    if (left < 8 || (stored(0) | stored(1) | stored(2) | stored(3)) == 0) return;
    const bool wide = (stored(0) | stored(1) | stored(2)) == 0 && stored(3) == 1;
    // What was cut stays cut by as much.
    const std::uint64_t size = left + (box.IsCut() ? 1 : 0);
    const std::size_t from = wide ? 8 : 0;
    const std::size_t width = wide ? 8 : 4;
    if (left < from + width) return;
    for (std::size_t i = 0; i < width; ++i) {
      copy_.bytes[at + from + i] = static_cast<unsigned char>(size >> (8 * (width - 1 - i)));
    }
  }

  void Append(std::uint64_t offset, std::uint64_t n) {
    if (n > most_ - copy_.bytes.size()) {
      copy_.whole = false;
      return;
    }
    const std::size_t at = copy_.bytes.size();
    copy_.pieces.push_back({at, offset});
    copy_.bytes.resize(at + static_cast<std::size_t>(n));
    copy_.whole =
        source_->ReadAt(offset, copy_.bytes.data() + at, static_cast<std::size_t>(n)) == n;
  }

  CachedSource* source_;
  std::uint64_t end_;
  std::uint64_t most_;
  HostCopy copy_;
};

}  // namespace

HostCopy HostCopy::Of(CachedSource* source, std::uint64_t end, std::uint64_t most) {
  return Copying(source, std::min(end, source->Size()), most).Run();
}

HostCopy HostCopy::OfEveryByte(CachedSource* source, std::uint64_t end, std::uint64_t most) {
  return Copying(source, std::min(end, source->Size()), most).RunOverEveryByte();
}

std::uint64_t HostCopy::OffsetInSource(std::uint64_t offset) const {
  const auto behind = std::find_if(pieces.begin(), pieces.end(),
                                   [&](const Piece& piece) { return piece.offset > offset; });
  if (behind == pieces.begin()) return offset;
  const Piece& piece = *(behind - 1);
  return piece.inSource + (offset - piece.offset);
}

}  // namespace mp4
