#pragma once

#include <cstdint>
#include <memory>

#include "boxes/base/BoxBase.h"

/// Sample description box "stsd" (ISO/IEC 14496-12 SampleDescriptionBox), a child of "stbl". Only
/// its first entry is read, by the handler type of the current track; what it says goes into the
/// current track's record. Entries are handed the entry size less 4: they read their own format.
class MP4JUDGE_API BoxSTSD : public BoxBase {
 public:
  /// An entry fails only on a null reader, or when memory or the opening's account refuses; broken
  /// children never fail it.
  class MP4JUDGE_API BaseSampleEntry : public BoxBase {};

  class VisualSampleEntry;  // in VisualSampleEntry.h
  class AudioSampleEntry;   // in AudioSampleEntry.h

  /// Passes over its payload.
  class MP4JUDGE_API MpegSampleEntry : public BaseSampleEntry {
   public:
    bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;
  };

  /// Passes over its payload.
  class MP4JUDGE_API HintSampleEntry : public BaseSampleEntry {};

  /// False on a null reader, a size below 1, a track with handler "MPEG", or a failed entry.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;
  /// Drops the entry.
  void Clear();

  std::uint32_t handlerType = 0;           ///< of the current track when read; 0 without one
  std::unique_ptr<BaseSampleEntry> entry;  ///< null for handlers that are not described
};

// Whoever knows this box may name its entries; they need it whole, and so come behind it.
#include "boxes/description/AudioSampleEntry.h"   // IWYU pragma: export
#include "boxes/description/VisualSampleEntry.h"  // IWYU pragma: export
