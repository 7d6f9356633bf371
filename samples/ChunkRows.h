#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "samples/Search.h"
#include "samples/TableBytes.h"

namespace mp4 {

/// How the tables of QuickTime sound count: frames of sound instead of the packets that are stored.
struct Packing {
  std::uint32_t frames = 1;  ///< table entries that one sample takes
  std::uint32_t bytes = 0;   ///< size of a sample; 0: as the size table has it
};

/// Chunks: SampleToChunkBox ("stsc", ISO/IEC 14496-12, 8.7.4) over ChunkOffsetBox ("stco") or
/// ChunkLargeOffsetBox ("co64", 8.7.5). Rows whose first chunk does not rise are passed over. Both
/// stay as file bytes, with a mark every kRowsPerMark rows.
///
/// An entry is what the tables count; a sample is one entry, or more by the Packing of the sample
/// description.
class ChunkRows {
 public:
  static constexpr std::size_t kRowsPerMark = 16;
  static constexpr std::size_t kWidth = 12;

  struct Row {
    std::uint64_t firstChunk = 0;  ///< 0-based
    std::uint64_t endChunk = 0;
    std::uint64_t firstEntry = 0;   ///< 0-based
    std::uint64_t firstSample = 0;  ///< 0-based
    std::uint32_t perChunk = 0;     ///< entries
    std::uint32_t description = 0;
    std::size_t index = 0;

    std::uint64_t Chunks() const { return endChunk - firstChunk; }
    std::uint64_t Entries() const { return Chunks() * perChunk; }
  };

  using PackingOf = std::function<Packing(std::uint32_t description)>;

  void LoadMap(BoxTree* tree, BoxId box, SampleProblems* problems);
  void LoadOffsets(BoxTree* tree, BoxId box, SampleProblems* problems);
  /// Counts what the chunks hold of `entries` table entries. `packing` may be null: one entry is
  /// one sample.
  void Count(std::uint64_t entries, const PackingOf& packing, SampleProblems* problems);

  std::uint64_t Chunks() const { return chunks_; }
  std::size_t Rows() const { return rows_; }
  std::uint64_t Entries() const { return entries_; }
  std::uint64_t Samples() const { return samples_; }
  bool Packs() const { return packing_ != nullptr; }
  Packing PackingFor(std::uint32_t description) const {
    return packing_ ? packing_(description) : Packing{};
  }
  std::uint64_t OffsetOf(std::uint64_t chunk) const {
    return wide_ ? LoadBe64(offsets_.data() + chunk * 8) : LoadBe32(offsets_.data() + chunk * 4);
  }

  /// Asks for the bytes of an offset.
  void Foresee(std::uint64_t chunk) const { offsets_.Foresee(chunk * (wide_ ? 8 : 4)); }

  /// The row that holds a sample below Samples(), and that of an entry below Entries().
  Row FindSample(std::uint64_t sample) const { return rows_ == 1 ? first_ : FindBySample(sample); }
  Row FindEntry(std::uint64_t entry) const;
  /// The sample that holds an entry below Entries(), and the first entry of a sample.
  std::uint64_t SampleOf(std::uint64_t entry) const;
  std::uint64_t EntryOf(std::uint64_t sample) const;
  /// The first row, and the one behind another; Rows() as its index behind the last.
  Row First() const { return first_; }
  Row Next(const Row& row) const;

 private:
  struct Mark {
    std::uint64_t entry;
    std::uint64_t sample;
  };
  Row RowAt(std::size_t index, std::uint64_t entry, std::uint64_t sample) const;
  std::uint64_t SamplesOf(const Row& row) const;
  Row FindBySample(std::uint64_t sample) const;
  template <class FirstOf>
  Row Find(std::uint64_t value, std::uint64_t whole, const FirstOf& first) const;

  TableBytes map_;
  std::size_t rows_ = 0;
  TableBytes offsets_;
  bool wide_ = false;
  std::uint64_t chunks_ = 0;
  std::uint64_t entries_ = 0;
  std::uint64_t samples_ = 0;
  PackingOf packing_;
  std::vector<Mark> marks_;
  Row first_;
};

}  // namespace mp4
