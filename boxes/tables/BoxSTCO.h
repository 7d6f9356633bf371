#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "boxes/base/BoxBase.h"
#include "boxes/base/Mp4Context.h"
#include "io/mmBuffer.h"

/// Chunk offset box: "stco" (32-bit offsets) or "co64" (64-bit), contained in "stbl". ISO/IEC
/// 14496-12 ChunkOffsetBox and ChunkLargeOffsetBox. The entries stay as the file's bytes.
///
/// In an audio track the offsets are also published in the track record's `chunkOffsetTable`, which
/// equals them after reading and after every append; an append extends it by what was added.
class MP4JUDGE_API BoxSTCO : public BoxBase {
 public:
  /// Any type other than "stco" has 64-bit entries.
  explicit BoxSTCO(unsigned int type) : type(type) {}

  /// Reads the table. Fails on a null reader, a negative size, or without memory. The entries are
  /// at most those whose bytes exist.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  /// Absolute file offset in bytes of the 0-based chunk `k`; all ones when there is none. O(1).
  unsigned long long GetChunkOffset(int k);

  /// Adds a chunk at an absolute file offset. Amortised O(1). Without memory nothing is added.
  void AppendChunk(unsigned long long offset);

  /// Publishes the offsets in the record of an audio track: those added since this box last did so,
  /// all of them when another box or the caller has changed the sequence.
  void OptimizeAudio();
  /// Offsets that publishing would write again because the sequence is not as this box left it.
  std::int64_t RowsToRefill() const;

  std::uint32_t type;

 private:
  std::size_t EntrySize() const;
  std::uint64_t OffsetAt(std::size_t k) const;
  bool PublishesOffsets() const;
  bool IsAsPublished() const;
  void PublishNew();

  Mp4Context::TRACK* track = nullptr;  ///< borrowed; null when read without a context
  std::int32_t entryCount = 0;
  std::unique_ptr<mmBuffer> entries;
  std::size_t published = 0;  ///< offsets in `chunkOffsetTable` when this box last filled it
};
