#pragma once

#include <cstddef>
#include <cstdint>

#include "boxes/base/BoxBase.h"
#include "boxes/base/Mp4Context.h"
#include "boxes/tables/TimeRows.h"

/// Time-to-sample box "stts" (ISO/IEC 14496-12, TimeToSampleBox): runs of {sample count, sample
/// delta}, counts and deltas signed. It answers when a sample is decoded and which sample a time
/// falls into, and publishes sample count, duration and video frame rate in the track record.
///
/// Samples are 0-based, times are media timescale units. Queries asked in rising order cost
/// amortised constant time, others O(log n). In QuickTime packetised audio a sample is a packet of
/// one constant duration, and the runs serve the published sequence no more.
class MP4JUDGE_API BoxSTTS : public BoxBase {
 public:
  /// Fails on a null reader, a size below 1, or when memory is refused.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  /// Publishes the totals in the track record; divides them by packet in packetised audio.
  void CalcAvInfo();
  /// Brings an audio track's `timeToSampleTable` up to date; costs what was appended since.
  void OptimizeAudio();
  /// Rows that OptimizeAudio would write again because the sequence is not as this box left it.
  std::int64_t RowsToRefill() const;

  /// The low byte of the duration, sign-extended; 0 past the end. See LowByte in the source.
  signed char GetSampleDuration(int i);
  int GetTotalSamples() { return totalSamples; }
  /// The sample in force at `time`; the number of samples past the end.
  long long GetSampleIndexBefore(long long time);
  /// Decode time of sample `i`; the duration of all past the end.
  long long GetPTS(int i);

  /// Adds one sample behind the last. The caller completes a run with OptimizeAudio.
  void AppendTime(unsigned int duration) { AppendTimes(duration, 1); }
  /// As `count` calls of AppendTime, in one step where the result allows.
  void AppendTimes(unsigned int duration, unsigned int count);
  /// Upper bound of the rows that AppendTimes would add; 1 or 0 unless the table is odd.
  long long MostRowsFor(unsigned int duration, unsigned int count) const;

  int GetEntryCount() const { return rows.Count(); }
  /// The rows as file bytes, null before the first.
  const mmBuffer* GetEntries() const { return rows.Bytes(); }
  /// False once memory was refused: something appended or published is missing.
  bool IsIntact() const { return intact; }

 private:
  void SumRows();
  void PublishFrameRate();
  bool DividesPackets() const;
  void DivideByPacket();
  bool PublishesEntries() const;
  bool IsAsPublished() const;
  void PublishEntries();
  void AddToTotals(unsigned int duration, unsigned int count);
  void CountSamples(unsigned int duration, unsigned int count);
  bool IsConstant() const { return hasConstantDuration && constantDuration > 0; }

  Mp4Context::TRACK* track = nullptr;
  MP4_FILE_MODE fileMode = MP4_FILE_MODE_UNKNOWN;
  std::int32_t totalSamples = 0;
  std::int64_t totalDuration = 0;
  mp4::TimeRows rows;
  bool hasConstantDuration = false;
  std::int32_t constantDuration = 0;

  bool intact = true;
  std::size_t published = 0;  ///< rows this box put into the track's sequence
};
