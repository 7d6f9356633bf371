#include "boxes/tables/BoxSTTS.h"

#include <algorithm>
#include <vector>

#include "boxes/base/FullBoxHeader.h"
#include "io/BigEndianRows.h"
#include "io/FillFrom.h"
#include "io/FourCC.h"
#include "io/WithoutThrowing.h"
#include "io/WrapMath.h"

namespace {

/// Hosts were written against durations cut to one signed byte: 1024 reads as 0, 3003 as -69. In
/// ISO/IEC 14496-12 a sample delta has 32 bits.
signed char LowByte(std::int32_t duration) {
  return static_cast<signed char>(static_cast<unsigned char>(duration & 0xFF));
}

}  // namespace

bool BoxSTTS::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < 1) return false;
  mp4::SkipFullBoxHeader(reader);
  const std::uint32_t declared = reader->GetBe32();
  hasConstantDuration = false;
  published = 0;
  if (!rows.Read(reader, mp4::WrapSub(size, 8), declared)) return false;
  SumRows();
  if (context == nullptr) return true;
  track = context->GetCurrentTrack();
  fileMode = context->GetFileMode();
  CalcAvInfo();
  OptimizeAudio();
  return intact;
}

void BoxSTTS::SumRows() {
  const auto count = static_cast<std::size_t>(std::max(rows.Count(), 0));
  const mp4::TimeTotals totals = mp4::WidestRows().times(rows.Bytes()->data.get(), count);
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
  return std::max(rows.Count(), 0);
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
  const unsigned char* bytes = rows.Bytes()->data.get();
  const auto load = [bytes](std::size_t from, std::size_t n, tagSTTS* out) {
    mp4::WidestRows().copy(bytes + from * mp4::TimeRows::kRowBytes, 2 * n, out);
  };
  mp4::FillFrom(&table, first, static_cast<std::size_t>(std::max(rows.Count(), 0)), load);
  published = table.size();
}

signed char BoxSTTS::GetSampleDuration(int i) {
  return LowByte(hasConstantDuration ? constantDuration : rows.DurationOf(i));
}

long long BoxSTTS::GetPTS(int i) {
  return IsConstant() ? static_cast<long long>(constantDuration) * i : rows.TimeOf(i);
}

long long BoxSTTS::GetSampleIndexBefore(long long time) {
  return IsConstant() ? time / constantDuration : rows.SampleAt(time);
}

void BoxSTTS::AppendTimes(unsigned int duration, unsigned int count) {
  if (count == 0) return;
  AddToTotals(duration, count);
  intact = rows.Append(duration, count) && intact;
}

void BoxSTTS::CountSamples(unsigned int duration, unsigned int count) {
  totalSamples = mp4::WrapAdd32(totalSamples, static_cast<std::int32_t>(count));
  const std::uint64_t added = static_cast<std::uint64_t>(duration) * count;
  totalDuration = mp4::WrapAdd(totalDuration, static_cast<std::int64_t>(added));
  CalcAvInfo();
}

/// As CountSamples of one sample, `count` times, in few steps. The last sample is always counted by
/// itself: where it wraps the number of samples to 0, the frame rate published before it stays.
/// With packets of two samples or more every step divides the totals again; they soon stop
/// changing, and then no further step would.
void BoxSTTS::AddToTotals(unsigned int duration, unsigned int count) {
  if (!DividesPackets() || track->samplesPerPacket == 1) {
    if (count > 1) CountSamples(duration, count - 1);
    CountSamples(duration, 1);
    return;
  }
  for (; count > 0; --count) {
    const std::int32_t samples = totalSamples;
    const std::int64_t before = totalDuration;
    CountSamples(duration, 1);
    if (samples == totalSamples && before == totalDuration) return;
  }
}

long long BoxSTTS::MostRowsFor(unsigned int duration, unsigned int count) const {
  return rows.MostRowsFor(duration, count);
}
