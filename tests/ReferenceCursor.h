#pragma once

#include <cstdint>
#include <vector>

#include "boxes/base/SampleRecords.h"
#include "io/ByteOrder.h"
#include "tests/ReferenceTables.h"

/// Sample tables and cursors in their plainest form: a walk for every question, one sample a step.
/// The tests hold the library's fast paths against them.
namespace reference_cursor {

using reference::Add64;
using reference::Div32;
using reference::Div64;
using reference::Sub64;
using reference::Wrap32;

/// The sample-to-chunk cursor, over the bytes of the table.
struct SampleToChunk {
  std::vector<unsigned char> bytes;
  std::int32_t count = 0;
  std::int32_t divisor = 1;

  std::size_t pos = 0;
  std::int32_t entry = 0;
  std::uint32_t chunk = 0, sample = 0, first = 0, nextRun = 0;
  std::int32_t samplesInChunk = 0;

  void Add(const tagSTSC& row) {
    for (const std::uint32_t word :
         {row.firstChunk, row.samplesPerChunk, row.sampleDescriptionIndex}) {
      for (int shift = 24; shift >= 0; shift -= 8) {
        bytes.push_back(static_cast<unsigned char>(word >> shift));
      }
    }
    ++count;
  }

  std::uint32_t Word() {
    const std::uint32_t value = pos + 4 <= bytes.size() ? mp4::LoadBe32(&bytes[pos]) : 0;
    pos += 4;
    return value;
  }

  void ReadyToDemux() {
    sample = first = 0;
    entry = 0;
    pos = 0;
    chunk = Word() - 1;
    samplesInChunk = Div32(static_cast<std::int32_t>(Word()), divisor);
    pos += 4;
    nextRun = 0;
    if (bytes.size() >= 24) nextRun = Word() - 1;
  }

  std::uint32_t NextSample() {
    ++sample;
    if (sample - first != static_cast<std::uint32_t>(samplesInChunk)) return sample;
    ++chunk;
    first = sample;
    if (chunk != nextRun) return sample;
    if (entry >= Wrap32(std::int64_t{count} - 1)) return sample;
    ++entry;
    samplesInChunk = static_cast<std::int32_t>(Word());
    pos += 4;
    if (bytes.size() >= pos + 12) nextRun = Word() - 1;
    samplesInChunk = Div32(samplesInChunk, divisor);
    return sample;
  }

  void Seek(int target) {
    if (sample > static_cast<std::uint32_t>(target)) ReadyToDemux();
    while (sample < static_cast<std::uint32_t>(target)) NextSample();
  }

  tagSTSC AppendSampleToChunk(std::uint32_t description, std::uint32_t samples) {
    std::uint32_t last = 0;
    if (count >= 1) last = mp4::LoadBe32(&bytes[static_cast<std::size_t>(count - 1) * 12]);
    const tagSTSC row{last + 1, samples, description};
    Add(row);
    return row;
  }
};

/// Time-to-sample, sample sizes, chunk offsets and sync samples as plain lists.
struct Tables {
  std::vector<tagSTTS> times;
  std::vector<std::uint32_t> sizes;
  std::uint32_t constantSize = 0;  ///< instead of `sizes`, when not 0
  std::vector<std::uint64_t> offsets;
  std::vector<std::uint32_t> syncs;
  bool hasSyncs = false;

  static std::int64_t Signed(std::uint32_t v) { return static_cast<std::int32_t>(v); }

  std::int32_t TotalSamples() const {
    std::uint32_t total = 0;
    for (const tagSTTS& run : times) total += run.sampleCount;
    return static_cast<std::int32_t>(total);
  }

  std::int32_t Duration(std::int32_t i) const {
    std::uint32_t sum = 0;
    for (const tagSTTS& run : times) {
      sum += run.sampleCount;
      if (static_cast<std::int32_t>(sum) > i) return static_cast<std::int8_t>(run.sampleDelta);
    }
    return 0;
  }

  std::int64_t Time(std::int32_t i) const {
    std::uint32_t before = 0;
    std::int64_t time = 0;
    for (const tagSTTS& run : times) {
      const auto left = static_cast<std::int32_t>(static_cast<std::uint32_t>(i) - before);
      if (static_cast<std::int32_t>(before + run.sampleCount) >= i) {
        return Add64(time, Signed(run.sampleDelta) * left);
      }
      time = Add64(time, Signed(run.sampleDelta) * Signed(run.sampleCount));
      before += run.sampleCount;
    }
    return time;
  }

  std::int32_t IndexBefore(std::int64_t time) const {
    std::uint32_t n = 0;
    std::int64_t passed = 0;
    for (const tagSTTS& run : times) {
      const std::int64_t delta = Signed(run.sampleDelta);
      const std::int64_t end = Add64(passed, Signed(run.sampleCount) * delta);
      if (end > time) {
        const std::int64_t steps = delta != 0 ? Div64(Sub64(time, passed), delta) : 0;
        return static_cast<std::int32_t>(n + static_cast<std::uint32_t>(steps));
      }
      n += run.sampleCount;
      passed = end;
    }
    return static_cast<std::int32_t>(n);
  }

  std::uint32_t Size(std::int32_t i) const {
    if (constantSize != 0) return constantSize;
    return i >= 0 && i < static_cast<std::int32_t>(sizes.size())
               ? sizes[static_cast<std::size_t>(i)]
               : 0;
  }

  std::int64_t Offset(std::int32_t k) const {
    if (k < 0 || k >= static_cast<std::int32_t>(offsets.size())) return -1;
    return static_cast<std::int64_t>(offsets[static_cast<std::size_t>(k)]);
  }

  std::int32_t SyncBefore(std::int32_t sample) const {
    std::int32_t kept = 0;
    for (const std::uint32_t number : syncs) {
      const auto index = static_cast<std::int32_t>(number - 1);
      if (index > sample) break;
      kept = index;
    }
    return kept;
  }
};

/// The cursor of a track.
struct Cursor {
  Tables tables;
  SampleToChunk chunks;

  std::int32_t sampleCount = 0, curSample = 0, curChunk = 0, curDuration = 0;
  std::uint32_t curSize = 0;
  std::int64_t curTime = 0, curOffset = 0;

  void ReadyToDemux() {
    curTime = 0;
    curOffset = tables.Offset(0);
    curDuration = tables.Duration(0);
    curSize = tables.Size(0);
    curSample = curChunk = 0;
    sampleCount = tables.TotalSamples();
    chunks.ReadyToDemux();
  }

  bool Next() {
    const std::uint32_t r = chunks.NextSample();
    if ((r & 0xFF) == 0) return false;
    const auto i = static_cast<std::int32_t>(chunks.sample);
    const auto k = static_cast<std::int32_t>(chunks.chunk);
    curTime = Add64(curTime, curDuration);
    if (k == curChunk) {
      curOffset = Add64(curOffset, curSize);
    } else {
      curOffset = tables.Offset(k);
    }
    if (curOffset <= 0 || i >= sampleCount) return false;
    curSize = tables.Size(i);
    curDuration = tables.Duration(i);
    curSample = i;
    curChunk = k;
    return true;
  }

  std::int32_t SeekTarget(std::int64_t time) const {
    std::int32_t target = tables.IndexBefore(time);
    if (tables.hasSyncs && !tables.syncs.empty()) target = tables.SyncBefore(target);
    return target < 0 ? 0 : target;
  }

  std::int64_t Seek(std::int64_t time) {
    const std::int32_t target = SeekTarget(time);
    curTime = tables.Time(target);
    chunks.Seek(target);
    const auto k = static_cast<std::int32_t>(chunks.chunk);
    curOffset = tables.Offset(k);
    curChunk = k;
    curSample = target;
    for (auto j = static_cast<std::int32_t>(chunks.first); j < target; ++j) {
      curOffset = Add64(curOffset, tables.Size(j));
    }
    curSize = tables.Size(target);
    curDuration = tables.Duration(target);
    return curTime;
  }
};

}  // namespace reference_cursor
