#pragma once

#include <cstdint>
#include <memory>

#include "boxes/base/BoxBase.h"
#include "boxes/description/BoxAVCC.h"
#include "boxes/description/BoxESDS.h"
#include "boxes/description/BoxWAVE.h"

/// Sample description box "stsd" (ISO/IEC 14496-12 SampleDescriptionBox), a child of "stbl". Only
/// its first entry is read, by the handler type of the current track; what it says goes into the
/// current track's record. Entries are handed the entry size less 4: they read their own format.
class MP4JUDGE_API BoxSTSD : public BoxBase {
 public:
  /// An entry fails only on a null reader, or when memory or the opening's account refuses; broken
  /// children never fail it.
  class MP4JUDGE_API BaseSampleEntry : public BoxBase {};

  /// VisualSampleEntry, or a QuickTime image description: picture size, compressor name and decoder
  /// configuration. Sets the record's format only while that is 0.
  class MP4JUDGE_API VisualSampleEntry : public BaseSampleEntry {
   public:
    bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

    std::unique_ptr<BoxESDS> esds;
    std::unique_ptr<BoxAVCC> avcc;
  };

  /// AudioSampleEntry, or a QuickTime sound description of version 0 to 2. Always sets the record's
  /// format; one child is read, which in QuickTime files is searched for. The search costs one step
  /// per 4 bytes that exist.
  class MP4JUDGE_API AudioSampleEntry : public BaseSampleEntry {
   public:
    bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

    std::unique_ptr<BoxWAVE> wave;
    std::unique_ptr<BoxESDS> esds;
  };

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

/// Writes an AAC decoder configuration (ISO/IEC 14496-3 AudioSpecificConfig) of 2 bytes, or of 5
/// for a negative profile, which signals SBR explicitly, and returns their number. The object type
/// is |profile| + 1, `sampleRate` is in Hz. A null buffer gives 0.
MP4JUDGE_API int MakeAACExtraData(unsigned char* buffer, int profile, int sampleRate, int channels);
