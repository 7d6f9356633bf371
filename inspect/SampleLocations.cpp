#include "inspect/SampleLocations.h"

#include "io/FourCC.h"

namespace mp4 {

namespace {

/// A table of rows of the same width behind a count.
class Rows {
 public:
  Rows(BoxTree* tree, BoxId box, std::uint64_t countAt, std::uint64_t width)
      : tree_(tree), box_(box), first_(countAt + 4), width_(width) {
    FieldView fields = box != kNoBox ? tree->Payload(box, countAt, 4) : FieldView();
    count_ = fields.U32();
  }

  std::uint32_t Count() const { return count_; }
  /// The row's bytes; empty when they are not there.
  FieldView Row(std::uint64_t index) {
    if (index >= count_) return {};
    return tree_->Payload(box_, first_ + index * width_, static_cast<std::size_t>(width_));
  }

 private:
  BoxTree* tree_;
  BoxId box_;
  std::uint64_t first_;
  std::uint64_t width_;
  std::uint32_t count_ = 0;
};

/// SampleSizeBox (8.7.3.2) and CompactSampleSizeBox (8.7.3.3).
bool ReadSizes(BoxTree* tree, BoxId stbl, std::size_t most, std::vector<std::uint32_t>* sizes) {
  const BoxId stsz = tree->Child(stbl, FourCC("stsz"));
  const BoxId box = stsz != kNoBox ? stsz : tree->Child(stbl, FourCC("stz2"));
  if (box == kNoBox) return false;
  FieldView fields = tree->Payload(box, 4, 8);
  const std::uint32_t same = fields.U32();
  const std::uint32_t count = fields.U32();
  if (!fields.Ok() || count > most) return false;
  if (stsz != kNoBox && same != 0) {
    sizes->assign(count, same);
    return true;
  }
  const std::uint32_t bits = stsz != kNoBox ? 32 : same & 0xFF;
  if (bits != 4 && bits != 8 && bits != 16 && bits != 32) return false;
  for (std::uint64_t i = 0; i < count; ++i) {
    fields = tree->Payload(box, 12 + i * bits / 8, (bits + 7) / 8);
    const std::uint32_t value = bits == 32 ? fields.U32() : bits == 16 ? fields.U16() : fields.U8();
    if (!fields.Ok()) return false;
    sizes->push_back(bits != 4 ? value : i % 2 == 0 ? value >> 4 : value & 15);
  }
  return true;
}

/// ChunkOffsetBox (8.7.5).
class ChunkOffsets {
 public:
  ChunkOffsets(BoxTree* tree, BoxId stbl)
      : wide_(tree->Child(stbl, FourCC("stco")) == kNoBox),
        rows_(tree, tree->Child(stbl, wide_ ? FourCC("co64") : FourCC("stco")), 4, wide_ ? 8 : 4) {}

  std::uint32_t Count() const { return rows_.Count(); }
  bool At(std::uint64_t chunk, std::uint64_t* offset) {
    FieldView row = rows_.Row(chunk);
    *offset = wide_ ? row.U64() : row.U32();
    return row.Ok();
  }

 private:
  bool wide_;
  Rows rows_;
};

}  // namespace

bool LocateSamples(BoxTree* tree, BoxId stbl, std::size_t most,
                   std::vector<SampleLocation>* samples) {
  std::vector<std::uint32_t> sizes;
  if (!ReadSizes(tree, stbl, most, &sizes)) return false;
  // SampleToChunkBox (8.7.4): first chunk, samples per chunk, sample entry.
  Rows runs(tree, tree->Child(stbl, FourCC("stsc")), 4, 12);
  ChunkOffsets chunks(tree, stbl);
  if (sizes.empty()) return runs.Count() == 0 && chunks.Count() == 0;
  std::uint64_t run = 0;
  for (std::uint64_t chunk = 0; samples->size() < sizes.size(); ++chunk) {
    FieldView next = runs.Row(run + 1);
    if (next.Left() >= 4 && next.U32() == chunk + 1) ++run;
    FieldView row = runs.Row(run);
    row.Skip(4);
    const std::uint32_t perChunk = row.U32();
    std::uint64_t offset = 0;
    if (!row.Ok() || perChunk == 0 || !chunks.At(chunk, &offset)) return false;
    for (std::uint32_t i = 0; i < perChunk && samples->size() < sizes.size(); ++i) {
      samples->push_back({offset, sizes[samples->size()]});
      offset += sizes[samples->size() - 1];
    }
  }
  return true;
}

}  // namespace mp4
