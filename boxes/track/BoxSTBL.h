#pragma once

#include <cstdint>
#include <memory>

#include "boxes/base/BoxBase.h"
#include "boxes/base/Mp4Context.h"
#include "boxes/description/BoxSTSD.h"
#include "boxes/tables/BoxSTCO.h"
#include "boxes/tables/BoxSTSC.h"
#include "boxes/tables/BoxSTSS.h"
#include "boxes/tables/BoxSTSZ.h"
#include "boxes/tables/BoxSTTS.h"

/// Sample table box "stbl", contained in "minf" (ISO/IEC 14496-12 SampleTableBox): owns the sample
/// description and the sample tables, and keeps one cursor over the track's samples. Samples and
/// chunks are counted from 0, times are decode times in media timescale units.
class MP4JUDGE_API BoxSTBL : public BoxBase {
 public:
  /// Reads the children; a second one of a kind replaces the first, unknown ones are passed over.
  /// Fails on a null reader, a negative size, or when a child fails. In an audio track every chunk
  /// from the last sample-to-chunk run on then gets an entry of its own.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  /// Drops the children.
  void Clear();

  /// Puts the cursor on sample 0; 0 when the description or a table other than the sync samples is
  /// missing, else 1. The argument is not used.
  int ReadyToDemux(SAMPLE* unused);

  /// Steps to the next sample; false at the end, before ReadyToDemux, with a table missing, and at
  /// every multiple of 256 samples (see BoxSTBL.cpp). Amortised O(1).
  bool Next();

  /// Copies duration, size, offset and time of the current sample. 1, or 0 for null.
  int GetSampleInfo(SAMPLE* sample);

  /// Goes to the sample at `time`, or to the sync sample at or before it where the track has a sync
  /// table, and returns the time reached. Before ReadyToDemux or with a table missing, `curTime` is
  /// returned and nothing moves. O(log n) in the tables.
  long long Seek(long long time);

  std::unique_ptr<BoxSTSD> sampleDescriptionBox;
  std::unique_ptr<BoxSTTS> timeToSampleBox;
  std::unique_ptr<BoxSTSC> sampleToChunkBox;
  std::unique_ptr<BoxSTSZ> sampleSizeBox;
  std::unique_ptr<BoxSTCO> chunkOffsetBox;
  std::unique_ptr<BoxSTSS> syncSampleBox;

  std::int32_t sampleCount = 0;  ///< when ReadyToDemux was called
  std::int32_t curSample = 0;
  std::int32_t curChunk = 0;
  std::int32_t curDuration = 0;  ///< as BoxSTTS delivers it, a signed 8-bit value
  std::uint32_t curSize = 0;     ///< bytes
  std::int64_t curTime = 0;
  std::int64_t curOffset = 0;  ///< in the file; -1 when there is no such chunk

 private:
  bool HasTables() const {
    return timeToSampleBox != nullptr && sampleSizeBox != nullptr && sampleToChunkBox != nullptr &&
           chunkOffsetBox != nullptr;
  }
  void CompleteAudioChunks(mmStreamReader* reader, Mp4Context* context);
  std::int64_t ChunkOffset(std::int32_t chunk) const;
  std::int32_t SeekTarget(long long time);
  void TakeSample(std::int32_t sample, std::int32_t chunk);

  bool ready = false;
};
