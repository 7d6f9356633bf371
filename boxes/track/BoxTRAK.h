#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "boxes/base/BoxBase.h"
#include "boxes/base/Mp4Context.h"
#include "boxes/track/BoxMDIA.h"
#include "boxes/track/BoxTKHD.h"
#include "boxes/track/TrackEdits.h"

/// Track box "trak" (ISO/IEC 14496-12 TrackBox), contained in "moov". Reads the edit list itself
/// and applies it to sample times and seeks; everything else it hands down to the media box.
class MP4JUDGE_API BoxTRAK : public BoxBase {
 public:
  ~BoxTRAK() override;

  /// False without reader, below 4 bytes, when the media box or the track header fails, or without
  /// a media box. A missing track header does not fail it.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;
  /// Drops the boxes and the sample record; the edit list stays.
  void Clear();

  /// Makes a new sample record and puts the media on its first sample; `editIndex` stays. False
  /// without track header or media box, or when the media box refuses.
  bool ReadyToDemux();
  /// Fills in the current sample, its time corrected by the edit list. May move on to the edit that
  /// holds the sample; false when no edit does. Cost: constant, plus one seek an edit moved.
  bool GetSampleInfo(SAMPLE* sample);
  bool Next();
  /// Goes to a time of 100 ns units and returns the time reached; -1 without a media box. With an
  /// edit list the result is in other units, see EditedSeekResult. Cost: one step an edit.
  long long Seek(long long time);
  /// 0 without track header.
  int GetTrackID() { return trackHeaderBox != nullptr ? trackHeaderBox->GetTrackID() : 0; }
  /// Always 0: the handler type is in the track's record.
  unsigned int GetHandlerType() { return 0; }

  std::unique_ptr<BoxTKHD> trackHeaderBox;
  std::unique_ptr<BoxMDIA> mediaBox;
  std::unique_ptr<SAMPLE> sample;  ///< `data` is released with it, as an array
  std::uint32_t format = 0;        ///< sample-entry format when the box ended
  std::uint8_t hasEditList = 0;
  std::int32_t movieTimescale = 0;  ///< when the edit list was read
  std::int32_t editIndex = 0;       ///< 0-based edit that iteration is in
  std::vector<tagElstItem> editList;
  std::int64_t editDuration = 0;  ///< sum of all segment durations, movie timescale units

 private:
  bool Publish(Mp4Context* context, const std::vector<tagElstItem>& edits);
  bool KeepEdits(Mp4Context::TRACK* track, const std::vector<tagElstItem>& edits);
  void DropSample();
  std::int32_t MediaTimescale() const;
  mp4::TrackEdits Timeline() const;
  bool ApplyEdits(SAMPLE* current, bool ok);
  bool FindEdit(SAMPLE* current, bool ok);
  std::int64_t EditedSeekResult(std::int64_t mediaTime) const;

  mp4::EditSum editSum;
};
