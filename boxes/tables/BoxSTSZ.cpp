#include "boxes/tables/BoxSTSZ.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "boxes/base/FullBoxHeader.h"
#include "io/BigEndianRows.h"
#include "io/FillFrom.h"
#include "io/FourCC.h"
#include "io/WithoutThrowing.h"
#include "io/WrapMath.h"

namespace {

/// Audio whose codec has whole bits per sample is addressed by sample frame, whatever sizes the box
/// holds: hosts read such tracks as PCM. In ISO/IEC 14496-12 the box alone has the sizes.
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
  rows.Clear();
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
  if (!rows.Read(reader, body)) return false;
  sampleCount = static_cast<std::uint32_t>(std::min<std::int64_t>(declared, rows.Held()));
  const mp4::RowTotals totals = mp4::WidestRows().total(rows.Bytes(), sampleCount);
  largestSize = totals.largest;
  *total = totals.sum;
  return true;
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
  const unsigned char* bytes = rows.Bytes();
  mp4::FillFrom(&table, 0, sampleCount, [bytes](std::size_t from, std::size_t n, tagSTSZ* out) {
    mp4::WidestRows().copy(bytes + from * sizeof *out, n, out);
  });
}

void BoxSTSZ::PublishTotals(std::uint64_t total) {
  track->totalSampleBytes = static_cast<std::int64_t>(total);
  track->maxSampleSize = largestSize;
  if (track->duration < 1) return;
  const std::int64_t perDuration = mp4::WrapMul(track->totalSampleBytes, track->timescale);
  track->bitRate = mp4::Truncate32(mp4::WrapMul(perDuration, 8) / track->duration);
}

unsigned int BoxSTSZ::GetSampleSize(int i) {
  return constantSize != 0 ? constantSize : rows.SizeOf(i);
}

unsigned long long BoxSTSZ::SumSizes(int first, int last) {
  if (first >= last) return 0;
  if (constantSize == 0) return rows.Sum(first, last);
  return static_cast<std::uint64_t>(std::int64_t{last} - first) * constantSize;
}

void BoxSTSZ::AppendSizes(unsigned int size, unsigned int count) {
  while (count > 0) {
    const std::uint64_t done = AppendStep(size, count);
    if (done == 0) {
      intact = false;
      return;
    }
    count -= static_cast<unsigned int>(done);
  }
}

void BoxSTSZ::AppendEach(const std::uint32_t* sizes, std::size_t count) {
  const std::uint32_t* const end = sizes + count;
  // Until the table form is reached, and again where the count wraps.
  while (sizes != end && !TakesRows(static_cast<std::size_t>(end - sizes))) {
    const std::uint32_t* const other =
        std::find_if(sizes, end, [size = *sizes](std::uint32_t each) { return each != size; });
    AppendSizes(*sizes, static_cast<unsigned int>(other - sizes));
    sizes = other;
  }
  if (sizes == end) return;
  if (!AppendRows(sizes, static_cast<std::size_t>(end - sizes))) {
    intact = false;
    return;
  }
  sampleCount += static_cast<std::uint32_t>(end - sizes);
  const auto asSigned = [](std::uint32_t a, std::uint32_t b) {
    return static_cast<std::int32_t>(a) < static_cast<std::int32_t>(b);
  };
  PublishAppended(*std::max_element(sizes, end, asSigned));
}

bool BoxSTSZ::TakesRows(std::size_t count) const {
  return sampleCount != 0 && !MustExpand() && count < (1ULL << 32) - sampleCount;
}

/// Appends as many of `count` samples as one form takes; returns how many, 0 without memory. A
/// count that wraps to 0 starts a constant form again.
std::uint64_t BoxSTSZ::AppendStep(unsigned int size, unsigned int count) {
  if (sampleCount == 0) {
    constantSize = size;
    sampleCount = 1;
    return 1;
  }
  const std::uint64_t step = std::min<std::uint64_t>(count, (1ULL << 32) - sampleCount);
  if (constantSize != 0 && constantSize == size) {
    sampleCount += static_cast<std::uint32_t>(step);
    if (track != nullptr) track->constSampleCount = sampleCount;
    return step;
  }
  if (MustExpand() && !Expand()) return 0;
  if (!AppendRows(size, step)) return 0;
  sampleCount += static_cast<std::uint32_t>(step);
  PublishAppended(size);
  return step;
}

/// Into the table form, from samples that exist only as a count: the constant form, or zero sizes
/// that no row holds.
bool BoxSTSZ::Expand() {
  if (!rows.StartWith(sampleCount, constantSize)) return false;
  constantSize = 0;
  return true;
}

/// Appends rows, and for audio the published sizes. The samples of an expanded constant form are
/// not published with them: hosts expect only what was appended.
bool BoxSTSZ::AppendRows(unsigned int size, std::size_t count) {
  if (!rows.MakeRoom(count)) return false;
  const bool published = !IsAudio() || mp4::WithoutThrowing([&] {
    std::vector<tagSTSZ>& table = track->sampleSizeTable;
    table.insert(table.end(), count, tagSTSZ{size});
  });
  if (!published) return false;
  rows.Append(size, count);
  return true;
}

bool BoxSTSZ::AppendRows(const std::uint32_t* sizes, std::size_t count) {
  if (!rows.MakeRoom(count)) return false;
  const bool published = !IsAudio() || mp4::WithoutThrowing([&] {
    std::vector<tagSTSZ>& table = track->sampleSizeTable;
    const std::size_t before = table.size();
    mp4::FillFrom(&table, before, before + count,
                  [&](std::size_t from, std::size_t n, tagSTSZ* out) {
                    std::memcpy(out, sizes + (from - before), n * sizeof *out);
                  });
  });
  if (!published) return false;
  rows.Append(sizes, count);
  return true;
}

void BoxSTSZ::PublishAppended(unsigned int size) {
  if (track == nullptr) return;
  if (static_cast<std::int32_t>(size) >= static_cast<std::int32_t>(track->maxSampleSize)) {
    track->maxSampleSize = size;
  }
  track->constSampleCount = track->constSampleSize = 0;
}

bool BoxSTSZ::MustExpand() const { return constantSize != 0 || rows.IsEmpty(); }
