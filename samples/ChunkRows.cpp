#include "samples/ChunkRows.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "io/FourCC.h"
#include "io/MakeLazyArray.h"
#include "samples/Search.h"

namespace mp4 {

namespace {

/// Samples in a chunk of so many entries: the last one may be short.
std::uint64_t SamplesIn(std::uint64_t entries, const Packing& packing) {
  return entries / packing.frames + (entries % packing.frames != 0 ? 1 : 0);
}

}  // namespace

void ChunkRows::LoadMap(BoxTree* tree, BoxId id, SampleProblems* problems) {
  const Box box = tree->At(id);
  rows_ = LoadRows(tree, id, 4, kWidth, &map_, problems);
  std::size_t rising = 0;
  std::uint32_t before = 0;
  while (rising < rows_ && LoadBe32(map_.data() + rising * kWidth) > before) {
    before = LoadBe32(map_.data() + rising++ * kWidth);
  }
  if (rising < rows_) {
    LazyArray<unsigned char> kept = NewBytes(rows_ * kWidth);
    if (kept == nullptr) throw std::bad_alloc();
    std::size_t n = 0;
    before = 0;
    for (std::size_t row = 0; row < rows_; ++row) {
      const unsigned char* bytes = map_.data() + row * kWidth;
      if (n > 0 && LoadBe32(bytes) <= before) continue;
      before = LoadBe32(bytes);
      std::memcpy(kept.get() + n++ * kWidth, bytes, kWidth);
    }
    if (n < rows_) {
      problems->Note(SampleFault::kRowsDoNotRise, box.type, rows_, n, box.offset);
    }
    map_.Own(std::move(kept), n * kWidth);
    rows_ = n;
  }
  if (rows_ > 0 && LoadBe32(map_.data()) != 1) {
    problems->Note(SampleFault::kFirstChunksUnnamed, box.type, 0, 0, box.offset);
  }
}

void ChunkRows::LoadOffsets(BoxTree* tree, BoxId id, SampleProblems* problems) {
  wide_ = tree->At(id).type == FourCC("co64");
  chunks_ = LoadRows(tree, id, 4, wide_ ? 8 : 4, &offsets_, problems);
}

ChunkRows::Row ChunkRows::RowAt(std::size_t index, std::uint64_t entry,
                                std::uint64_t sample) const {
  Row row;
  row.index = index;
  row.firstEntry = entry;
  row.firstSample = sample;
  if (index >= rows_) return row;
  const unsigned char* bytes = map_.data() + index * kWidth;
  // A first chunk of 0 means the first, like 1.
  const auto chunk = [this](const unsigned char* p) {
    const std::uint64_t number = LoadBe32(p);
    return std::min(number > 0 ? number - 1 : 0, chunks_);
  };
  row.firstChunk = chunk(bytes);
  row.endChunk = index + 1 < rows_ ? chunk(bytes + kWidth) : chunks_;
  row.perChunk = LoadBe32(bytes + 4);
  row.description = LoadBe32(bytes + 8);
  return row;
}

std::uint64_t ChunkRows::SamplesOf(const Row& row) const {
  if (packing_ == nullptr) return row.Entries();
  return row.Chunks() * SamplesIn(row.perChunk, packing_(row.description));
}

ChunkRows::Row ChunkRows::Next(const Row& row) const {
  return RowAt(row.index + 1, row.firstEntry + row.Entries(), row.firstSample + SamplesOf(row));
}

void ChunkRows::Count(std::uint64_t entries, const PackingOf& packing, SampleProblems* problems) {
  packing_ = packing;
  first_ = RowAt(0, 0, 0);
  entries_ = samples_ = 0;
  marks_.clear();
  marks_.reserve(rows_ / kRowsPerMark + 1);
  for (Row row = First(); row.index < rows_ && entries_ < entries; row = Next(row)) {
    if (row.index % kRowsPerMark == 0) marks_.push_back({row.firstEntry, row.firstSample});
    if (row.Entries() <= entries - entries_) {
      entries_ += row.Entries();
      samples_ += SamplesOf(row);
      continue;
    }
    const Packing pack = PackingFor(row.description);
    const std::uint64_t left = entries - entries_;
    samples_ +=
        left / row.perChunk * SamplesIn(row.perChunk, pack) + SamplesIn(left % row.perChunk, pack);
    entries_ = entries;
  }
  if (entries_ < entries) {
    problems->Note(SampleFault::kFewerInChunks, FourCC("stsc"), entries, entries_);
  }
}

template <class FirstOf>
ChunkRows::Row ChunkRows::Find(std::uint64_t value, std::uint64_t whole,
                               const FirstOf& first) const {
  if (rows_ == 1) return First();
  const std::size_t mark =
      LastNotAbove(marks_.size(), GuessPlace(value, PlacesPer(whole, marks_.size()), marks_.size()),
                   value, [&](std::size_t i) { return first(marks_[i].entry, marks_[i].sample); });
  Row row = RowAt(mark * kRowsPerMark, marks_[mark].entry, marks_[mark].sample);
  for (;;) {
    const Row next = Next(row);
    if (next.index >= rows_ || first(next.firstEntry, next.firstSample) > value) return row;
    row = next;
  }
}

ChunkRows::Row ChunkRows::FindBySample(std::uint64_t sample) const {
  return Find(sample, samples_, [](std::uint64_t, std::uint64_t first) { return first; });
}

ChunkRows::Row ChunkRows::FindEntry(std::uint64_t entry) const {
  return Find(entry, entries_, [](std::uint64_t first, std::uint64_t) { return first; });
}

std::uint64_t ChunkRows::SampleOf(std::uint64_t entry) const {
  if (!Packs()) return entry;
  const Row row = FindEntry(entry);
  const Packing pack = PackingFor(row.description);
  const std::uint64_t inside = entry - row.firstEntry;
  return row.firstSample + inside / row.perChunk * SamplesIn(row.perChunk, pack) +
         inside % row.perChunk / pack.frames;
}

std::uint64_t ChunkRows::EntryOf(std::uint64_t sample) const {
  if (!Packs()) return sample;
  const Row row = FindSample(sample);
  const Packing pack = PackingFor(row.description);
  const std::uint64_t samplesPerChunk = SamplesIn(row.perChunk, pack);
  const std::uint64_t inside = sample - row.firstSample;
  return row.firstEntry + inside / samplesPerChunk * row.perChunk +
         inside % samplesPerChunk * pack.frames;
}

}  // namespace mp4
