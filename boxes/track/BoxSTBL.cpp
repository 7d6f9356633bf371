#include "boxes/track/BoxSTBL.h"

#include <algorithm>
#include <cstddef>

#include "boxes/base/BoxReading.h"
#include "io/FourCC.h"
#include "io/WrapMath.h"

namespace {

/// A step succeeds by the low byte of the new sample's index: at every multiple of 256 the walk
/// reports an end, and the caller steps on if it means to. Hosts are built around these pauses; the
/// file format has nothing like them.
bool StepReportsSample(unsigned int newIndex) { return (newIndex & 0xFF) != 0; }

mp4::Child ReadOffsets(std::unique_ptr<BoxSTCO>* slot, mmStreamReader* reader,
                       const mp4::ChildHeader& child, Mp4Context* context) {
  *slot = std::make_unique<BoxSTCO>(child.type);
  return (*slot)->ReadData(reader, child.payload, context) ? mp4::Child::kRead
                                                           : mp4::Child::kFailed;
}

}  // namespace

bool BoxSTBL::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < 0) return false;
  if (size == 0) return true;
  // ISO/IEC 14496-12 has more: composition times ("ctts") and compact sizes ("stz2") go unread.
  const auto dispatch = [&](const mp4::ChildHeader& child) {
    switch (child.type) {
      case mp4::FourCC("stsd"):
        return mp4::ReadReplacing(&sampleDescriptionBox, reader, child, context);
      case mp4::FourCC("stts"):
        return mp4::ReadReplacing(&timeToSampleBox, reader, child, context);
      case mp4::FourCC("stsc"):
        return mp4::ReadReplacing(&sampleToChunkBox, reader, child, context);
      case mp4::FourCC("stsz"):
        return mp4::ReadReplacing(&sampleSizeBox, reader, child, context);
      case mp4::FourCC("stss"):
        return mp4::ReadReplacing(&syncSampleBox, reader, child, context);
      case mp4::FourCC("stco"):
      case mp4::FourCC("co64"):
        return ReadOffsets(&chunkOffsetBox, reader, child, context);
      default:
        return mp4::Child::kUnknown;
    }
  };
  const bool read = mp4::ReadContainer(reader, size, 0, dispatch);
  CompleteAudioChunks(reader, context);
  return read;
}

/// Gives every chunk of an audio track from the last sample-to-chunk run on an entry of its own. In
/// ISO/IEC 14496-12 the last run holds for all of them.
///
/// The counts handed on are the published ones, already divided by the packet size, and publishing
/// divides them again: hosts read the sequence that results. An opening's account bounds what many
/// small tables can add to one long chunk list; where it refuses, nothing is added.
void BoxSTBL::CompleteAudioChunks(mmStreamReader* reader, Mp4Context* context) {
  const Mp4Context::TRACK* track = mp4::CurrentTrack(context);
  if (track == nullptr || sampleToChunkBox == nullptr) return;
  const std::size_t chunks = track->chunkOffsetTable.size();
  if (track->sampleToChunkTable.empty() || chunks == 0) return;
  const tagSTSC last = track->sampleToChunkTable.back();
  if (last.firstChunk >= chunks) return;
  const std::size_t missing = chunks - last.firstChunk;
  mp4::ScanControl* scan = reader->Scan();
  const std::int64_t cost = mp4::prices::kCompletedChunk * static_cast<std::int64_t>(missing);
  if (scan != nullptr && !scan->TakeMerge(cost)) return;
  sampleToChunkBox->AppendSampleToChunks(last.sampleDescriptionIndex, last.samplesPerChunk,
                                         missing);
}

void BoxSTBL::Clear() {
  sampleDescriptionBox.reset();
  timeToSampleBox.reset();
  sampleToChunkBox.reset();
  sampleSizeBox.reset();
  chunkOffsetBox.reset();
  syncSampleBox.reset();
  ready = false;
}

int BoxSTBL::ReadyToDemux(SAMPLE* /*unused*/) {
  if (sampleDescriptionBox == nullptr || !HasTables()) return 0;
  curTime = 0;
  curOffset = ChunkOffset(0);
  TakeSample(0, 0);
  sampleCount = timeToSampleBox->GetTotalSamples();
  ready = true;
  return sampleToChunkBox->ReadyToDemux();
}

std::int64_t BoxSTBL::ChunkOffset(std::int32_t chunk) const {
  return static_cast<std::int64_t>(chunkOffsetBox->GetChunkOffset(chunk));
}

void BoxSTBL::TakeSample(std::int32_t sample, std::int32_t chunk) {
  curSize = sampleSizeBox->GetSampleSize(sample);
  curDuration = timeToSampleBox->GetSampleDuration(sample);
  curSample = sample;
  curChunk = chunk;
}

bool BoxSTBL::Next() {
  if (!ready || !HasTables()) return false;
  if (!StepReportsSample(sampleToChunkBox->NextSample())) return false;
  const auto sample = static_cast<std::int32_t>(sampleToChunkBox->GetCurSampleIndex());
  const auto chunk = static_cast<std::int32_t>(sampleToChunkBox->GetCurChunkIndex());
  curTime = mp4::WrapAdd(curTime, curDuration);
  curOffset = chunk == curChunk ? mp4::WrapAdd(curOffset, curSize) : ChunkOffset(chunk);
  if (curOffset <= 0 || sample >= sampleCount) return false;
  TakeSample(sample, chunk);
  return true;
}

int BoxSTBL::GetSampleInfo(SAMPLE* sample) {
  if (sample == nullptr) return 0;
  sample->duration = static_cast<std::uint32_t>(curDuration);
  sample->size = curSize;
  sample->offset = static_cast<std::uint64_t>(curOffset);
  sample->time = curTime;
  return 1;
}

long long BoxSTBL::Seek(long long time) {
  if (!ready || !HasTables()) return curTime;
  const std::int32_t target = SeekTarget(time);
  curTime = timeToSampleBox->GetPTS(target);
  sampleToChunkBox->Seek(target);
  const auto chunk = static_cast<std::int32_t>(sampleToChunkBox->GetCurChunkIndex());
  const auto first = static_cast<std::int32_t>(sampleToChunkBox->GetFirstSampleInCurChunk());
  curOffset = ChunkOffset(chunk);
  if (mp4::WrapSub32(target, first) > 0) {
    const std::uint64_t before = sampleSizeBox->SumSizes(first, target);
    curOffset = mp4::WrapAdd(curOffset, static_cast<std::int64_t>(before));
  }
  TakeSample(target, chunk);
  return curTime;
}

/// The sample at `time`, moved back to a sync sample where there is a table of them.
std::int32_t BoxSTBL::SeekTarget(long long time) {
  std::int32_t target = mp4::Truncate32(timeToSampleBox->GetSampleIndexBefore(time));
  if (syncSampleBox != nullptr && syncSampleBox->GetEntryCount() > 0) {
    target = static_cast<std::int32_t>(syncSampleBox->GetSampleIndexBeforeThis(target));
  }
  return std::max(target, 0);
}
