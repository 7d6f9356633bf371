#include "boxes/tables/BoxSTTS.h"

#include <algorithm>
#include <cstddef>

#include "boxes/base/TableBody.h"
#include "io/BigEndianRows.h"
#include "io/FillFrom.h"
#include "io/FourCC.h"
#include "io/WrapMath.h"

bool BoxSTTS::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < 1) return false;
  mp4::SkipFullBoxHeader(reader);
  const std::uint32_t declared = reader->GetBe32();
  entryCount = 0;
  hasConstantDuration = false;
  published = 0;
  index.Reset();
  if (!mp4::ReadTableBody(reader, mp4::WrapSub(size, 8), kRowBytes, &entries)) return false;
  entryCount = mp4::ClampCount(declared, *entries, kRowBytes);
  SumEntries();
  if (context == nullptr) return true;
  track = context->GetCurrentTrack();
  fileMode = context->GetFileMode();
  CalcAvInfo();
  OptimizeAudio();
  return intact;
}

void BoxSTTS::SumEntries() {
  const auto rows = static_cast<std::size_t>(std::max(entryCount, 0));
  const mp4::TimeTotals totals = mp4::WidestRows().times(entries->data.get(), rows);
  totalSamples = static_cast<std::int32_t>(totals.samples);
  totalDuration = static_cast<std::int64_t>(totals.duration);
}

void BoxSTTS::CalcAvInfo() {
  if (track == nullptr) return;
  track->numSamples = totalSamples;
  track->duration = totalDuration;
  if (track->handlerType == mp4::FourCC("vide")) PublishFrameRate();
  if (DividesPackets()) DivideByPacket();
}

/// A mean duration that is not a whole number is published in 1/1024 of a unit.
void BoxSTTS::PublishFrameRate() {
  if (totalSamples == 0) return;
  const std::int64_t mean = mp4::WrapDiv(totalDuration, totalSamples);
  const bool whole = mp4::WrapMul(mean, totalSamples) == totalDuration;
  const std::int64_t fine = mp4::WrapMul(totalDuration, 1024);
  track->frameRateDen = mp4::Truncate32(whole ? mean : mp4::WrapDiv(fine, totalSamples));
  track->frameRateNum = whole ? track->timescale : mp4::WrapMul32(track->timescale, 1024);
}

bool BoxSTTS::DividesPackets() const {
  return PublishesEntries() && fileMode == MP4_FILE_MODE_MOV && track->compressionId != -2 &&
         static_cast<std::int32_t>(track->samplesPerPacket) > 0 && track->channels != 0;
}

/// The table of packetised QuickTime audio counts single samples; from here on a sample is a
/// packet. The track record keeps the undivided totals, and every append divides again: hosts see
/// the numbers that come of it.
void BoxSTTS::DivideByPacket() {
  const auto perPacket = static_cast<std::int32_t>(track->samplesPerPacket);
  hasConstantDuration = true;
  totalDuration = mp4::WrapDiv32(totalSamples, static_cast<std::int32_t>(track->channels));
  totalSamples = mp4::WrapDiv32(totalSamples, perPacket);
  constantDuration = perPacket;
}

bool BoxSTTS::PublishesEntries() const {
  return track != nullptr && track->handlerType == mp4::FourCC("soun");
}

bool BoxSTTS::IsAsPublished() const {
  return track->timeToSampleOwner == this && track->timeToSampleTable.size() == published;
}

std::int64_t BoxSTTS::RowsToRefill() const {
  if (!PublishesEntries() || hasConstantDuration || IsAsPublished()) return 0;
  return std::max(entryCount, 0);
}

void BoxSTTS::OptimizeAudio() {
  if (!PublishesEntries()) return;
  intact = mp4::WithoutThrowing([this] { PublishEntries(); }) && intact;
}

/// Rows published before are final but for the last, as long as no other table filled the sequence.
void BoxSTTS::PublishEntries() {
  std::vector<tagSTTS>& table = track->timeToSampleTable;
  const std::size_t first = IsAsPublished() && published > 0 ? published - 1 : 0;
  track->timeToSampleOwner = this;
  published = 0;
  if (hasConstantDuration) {
    table.assign(1, {static_cast<std::uint32_t>(totalSamples),
                     static_cast<std::uint32_t>(constantDuration)});
    return;
  }
  const unsigned char* rows = entries->data.get();
  const auto load = [rows](std::size_t from, std::size_t n, tagSTTS* out) {
    mp4::WidestRows().copy(rows + from * kRowBytes, 2 * n, out);
  };
  mp4::FillFrom(&table, first, static_cast<std::size_t>(std::max(entryCount, 0)), load);
  published = table.size();
}
