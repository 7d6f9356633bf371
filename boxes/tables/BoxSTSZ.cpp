#include "boxes/tables/BoxSTSZ.h"

#include <algorithm>

#include "boxes/base/TableBody.h"
#include "io/BigEndianRows.h"
#include "io/FillFrom.h"
#include "io/FourCC.h"
#include "io/WrapMath.h"

namespace {

/// Audio whose codec has whole bits per sample is addressed by sample frame, whatever sizes the box
/// holds: hosts read such tracks as PCM.
bool HasForcedSize(const Mp4Context::TRACK& track) {
  return track.handlerType == mp4::FourCC("soun") && track.format != mp4::FourCC("samr") &&
         track.bitsPerSample != 0;
}

std::uint32_t ForcedSize(const Mp4Context::TRACK& track) {
  const std::int32_t bytes = static_cast<std::int32_t>(track.bitsPerSample) / 8;
  return static_cast<std::uint32_t>(
      mp4::WrapMul32(bytes, static_cast<std::int32_t>(track.channels)));
}

}  // namespace

bool BoxSTSZ::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < 1) return false;
  mp4::SkipFullBoxHeader(reader);
  largestSize = 0;
  constantSize = reader->GetBe32();
  sampleCount = reader->GetBe32();
  entries.reset();
  blockSums.clear();
  prefixCount = 0;
  if (context != nullptr) track = context->GetCurrentTrack();
  if (context != nullptr && track != nullptr && HasForcedSize(*track)) {
    constantSize = ForcedSize(*track);
  }

  std::uint64_t total = static_cast<std::uint64_t>(sampleCount) * constantSize;
  const long long body = mp4::WrapSub(size, 12);
  if (constantSize != 0) {
    largestSize = constantSize;
    reader->Skip(body);
  } else if (!ReadTableForm(reader, body, &total)) {
    return false;
  }
  if (context == nullptr || track == nullptr) return true;
  if (context->GetFileMode() == MP4_FILE_MODE_MOV) DividePackets(&total);
  if (IsAudio()) intact = mp4::WithoutThrowing([this] { PublishSizes(); });
  PublishTotals(total);
  return intact;
}

bool BoxSTSZ::ReadTableForm(mmStreamReader* reader, long long body, std::uint64_t* total) {
  const std::uint32_t declared = sampleCount;
  sampleCount = 0;
  if (!mp4::ReadTableBody(reader, body, kRowBytes, &entries)) return false;
  sampleCount =
      static_cast<std::uint32_t>(std::min<std::uint64_t>(declared, entries->used / kRowBytes));
  SumEntries(total);
  return true;
}

void BoxSTSZ::SumEntries(std::uint64_t* total) {
  const mp4::RowTotals totals = mp4::WidestRows().total(entries->data.get(), sampleCount);
  largestSize = totals.largest;
  *total = totals.sum;
}

/// QuickTime packetised audio: the box counts single samples, the file holds packets.
void BoxSTSZ::DividePackets(std::uint64_t* total) {
  if (track->compressionId == -2 || track->bytesPerFrame < 1 || constantSize == 0) return;
  constantSize = largestSize = track->bytesPerFrame;
  if (track->samplesPerPacket == 0) return;
  *total = static_cast<std::uint64_t>(sampleCount / track->samplesPerPacket) * constantSize;
}

bool BoxSTSZ::IsAudio() const {
  return track != nullptr && track->handlerType == mp4::FourCC("soun");
}

void BoxSTSZ::PublishSizes() {
  std::vector<tagSTSZ>& table = track->sampleSizeTable;
  table.clear();
  if (constantSize != 0) {
    track->constSampleCount = sampleCount;
    track->constSampleSize = constantSize;
    return;
  }
  const unsigned char* rows = entries->data.get();
  mp4::FillFrom(&table, 0, sampleCount, [rows](std::size_t from, std::size_t n, tagSTSZ* out) {
    mp4::WidestRows().copy(rows + from * kRowBytes, n, out);
  });
}

void BoxSTSZ::PublishTotals(std::uint64_t total) {
  track->totalSampleBytes = static_cast<std::int64_t>(total);
  track->maxSampleSize = largestSize;
  if (track->duration < 1) return;
  const std::int64_t perDuration = mp4::WrapMul(track->totalSampleBytes, track->timescale);
  track->bitRate = mp4::Truncate32(mp4::WrapMul(perDuration, 8) / track->duration);
}
