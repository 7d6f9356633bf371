#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "boxes/base/BoxBase.h"
#include "boxes/base/Mp4Context.h"
#include "boxes/tables/ChunkWalk.h"
#include "io/mmBuffer.h"

/// Sample-to-chunk box "stsc", contained in "stbl": runs of chunks that hold the same number of
/// samples (ISO/IEC 14496-12 SampleToChunkBox), and the cursor that walks the samples through their
/// chunks. The entries stay as the file's bytes; an audio track's are also published in the track
/// record's `sampleToChunkTable`.
///
/// Samples and chunks are counted from 0 here, in unsigned 32 bits that wrap. A chunk of 0 samples
/// never ends. The cursor reports no end: chunk offsets and sample counts tell.
class MP4JUDGE_API BoxSTSC : public BoxBase {
 public:
  /// Reads the table. Fails on a null reader, a size below 1, or without memory. The entries are at
  /// most those whose bytes exist.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  /// Puts the cursor on sample 0. Always 1. An empty table reads as one entry of zeros.
  int ReadyToDemux();

  /// Steps to the next sample and returns its index, never a failure code. O(1).
  unsigned int NextSample();
  unsigned int GetCurSampleIndex() { return cursor.sample; }
  unsigned int GetCurChunkIndex() { return cursor.chunk; }
  unsigned int GetFirstSampleInCurChunk() { return cursor.firstSample; }

  /// As stepping to `sample` one by one, from the start when it lies behind; a negative one is 0.
  /// O(log n) in the table's entries, plus one step an entry where none has looked before.
  void Seek(int sample);

  /// Adds an entry for the chunk after the last entry's first chunk; never merges. Amortised O(1).
  /// A cursor in the last entry keeps what it knows; one that starts over sees the new entry.
  /// Without memory nothing is added.
  void AppendSampleToChunk(unsigned int sample_description_index, unsigned int samples_per_chunk);

  /// As `chunks` calls of AppendSampleToChunk, in one step; false without memory.
  bool AppendSampleToChunks(unsigned int sample_description_index, unsigned int samples_per_chunk,
                            std::size_t chunks);

 private:
  void LearnPackets();
  void PublishAll();
  void AppendRow(const tagSTSC& row);
  bool MakeRoomToPublish(std::size_t more);
  void Publish(tagSTSC row);
  bool PublishesEntries() const;
  std::int32_t Divisor() const { return dividesByPacket ? samplesPerPacket : 1; }
  mp4::ChunkWalk Walk() const { return {entries.get(), entryCount, Divisor()}; }

  Mp4Context::TRACK* track = nullptr;  ///< borrowed
  std::unique_ptr<mmBuffer> entries;
  std::int32_t entryCount = 0;
  mp4::ChunkCursor cursor;
  MP4_FILE_MODE fileMode = MP4_FILE_MODE_MP4;
  std::int32_t samplesPerPacket = 0;
  std::int32_t compressionId = 0;
  bool dividesByPacket = false;  ///< QuickTime packetised audio: entries count its samples in full

  bool onCommonWalk = false;  ///< the cursor stands where a walk from sample 0 would pass
  mp4::ChunkMarks marks;
};
