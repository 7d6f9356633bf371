#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// The sample tables as plain walks over plain rows, one step at a time: what the boxes' fast paths
/// must agree with. Written for reading, not for speed.
namespace reference {

inline std::int32_t Wrap32(std::int64_t v) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(static_cast<std::uint64_t>(v)));
}
inline std::int64_t Add64(std::int64_t a, std::int64_t b) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}
inline std::int64_t Sub64(std::int64_t a, std::int64_t b) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b));
}
inline std::int64_t Mul64(std::int64_t a, std::int64_t b) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b));
}
/// Truncated toward zero; dividing by -1 negates with wrap.
inline std::int64_t Div64(std::int64_t a, std::int64_t b) { return b == -1 ? Sub64(0, a) : a / b; }
inline std::int32_t Div32(std::int32_t a, std::int32_t b) { return Wrap32(Div64(a, b)); }

/// What the tables publish, as far as the boxes under test write it.
struct Track {
  bool video = false;
  bool audio = false;
  bool quickTime = false;
  bool samr = false;
  std::int32_t compressionId = 0;
  std::uint32_t samplesPerPacket = 0;
  std::uint32_t bytesPerFrame = 0;
  std::uint32_t bitsPerSample = 0;
  std::uint32_t channels = 0;
  std::int32_t timescale = 0;

  std::int32_t numSamples = 0;
  std::int64_t duration = 0;
  std::int32_t frameRateNum = 0;
  std::int32_t frameRateDen = 0;
  std::int32_t bitRate = 0;
  std::int64_t totalSampleBytes = 0;
  std::uint32_t maxSampleSize = 0;
  std::uint32_t constSampleCount = 0;
  std::uint32_t constSampleSize = 0;
};

struct TimeRow {
  std::uint32_t count;
  std::uint32_t delta;
};

/// Time to sample.
struct TimeTable {
  Track* track = nullptr;
  std::vector<TimeRow> held;  ///< every whole row of the box, and those appended
  std::int32_t entryCount = 0;
  std::int32_t totalSamples = 0;
  std::int64_t totalDuration = 0;
  bool constant = false;
  std::int32_t constantDuration = 0;
  std::vector<TimeRow> published;

  std::int32_t Count(std::int32_t j) const { return static_cast<std::int32_t>(held[j].count); }
  std::int64_t Delta(std::int32_t j) const { return static_cast<std::int32_t>(held[j].delta); }

  void Read(const std::vector<TimeRow>& rows, std::uint32_t declared, Track* current) {
    held = rows;
    entryCount = static_cast<std::int32_t>(declared);
    if (entryCount > static_cast<std::int64_t>(rows.size())) entryCount = rows.size();
    for (std::int32_t j = 0; j < entryCount; ++j) {
      totalSamples = Wrap32(std::int64_t{totalSamples} + Count(j));
      totalDuration = Add64(totalDuration, Count(j) * Delta(j));
    }
    track = current;
    CalcAvInfo();
    OptimizeAudio();
  }

  void CalcAvInfo() {
    if (track == nullptr) return;
    track->numSamples = totalSamples;
    track->duration = totalDuration;
    const std::int64_t s = totalSamples;
    const std::int64_t d = totalDuration;
    if (track->video && s != 0) {
      if (s == -1 || d % s == 0) {
        track->frameRateDen = Wrap32(Div64(d, s));
        track->frameRateNum = track->timescale;
      } else {
        track->frameRateDen = Wrap32(Div64(Mul64(d, 1024), s));
        track->frameRateNum = Wrap32(Mul64(track->timescale, 1024));
      }
    }
    const auto p = static_cast<std::int32_t>(track->samplesPerPacket);
    const auto channels = static_cast<std::int32_t>(track->channels);
    if (track->audio && track->quickTime && track->compressionId != -2 && p > 0 && channels != 0) {
      constant = true;
      totalDuration = Div32(totalSamples, channels);
      totalSamples = Div32(totalSamples, p);
      constantDuration = p;
    }
  }

  void OptimizeAudio() {
    if (track == nullptr || !track->audio) return;
    published.clear();
    if (constant) {
      published.push_back(
          {static_cast<std::uint32_t>(totalSamples), static_cast<std::uint32_t>(constantDuration)});
      return;
    }
    for (std::int32_t j = 0; j < entryCount; ++j) published.push_back(held[j]);
  }

  static int LowByte(std::int64_t v) {
    const int byte = static_cast<int>(v & 0xFF);
    return byte < 128 ? byte : byte - 256;
  }

  int GetSampleDuration(std::int32_t i) const {
    if (constant) return LowByte(constantDuration);
    std::int32_t sum = 0;
    for (std::int32_t j = 0; j < entryCount; ++j) {
      sum = Wrap32(std::int64_t{sum} + Count(j));
      if (sum > i) return LowByte(Delta(j));
    }
    return 0;
  }

  std::int64_t GetPTS(std::int32_t i) const {
    if (constant && constantDuration > 0) return std::int64_t{constantDuration} * i;
    std::int32_t before = 0;
    std::int64_t acc = 0;
    for (std::int32_t j = 0; j < entryCount; ++j) {
      if (Wrap32(std::int64_t{before} + Count(j)) >= i) {
        return Add64(acc, Delta(j) * Wrap32(std::int64_t{i} - before));
      }
      acc = Add64(acc, Delta(j) * Count(j));
      before = Wrap32(std::int64_t{before} + Count(j));
    }
    return acc;
  }

  std::int64_t GetSampleIndexBefore(std::int64_t time) const {
    if (constant && constantDuration > 0) return time / constantDuration;
    std::int32_t n = 0;
    std::int64_t acc = 0;
    for (std::int32_t j = 0; j < entryCount; ++j) {
      const std::int64_t end = Add64(acc, Count(j) * Delta(j));
      if (end > time) {
        if (Delta(j) == 0) return n;
        return Wrap32(Add64(n, Div64(Sub64(time, acc), Delta(j))));
      }
      n = Wrap32(std::int64_t{n} + Count(j));
      acc = end;
    }
    return n;
  }

  void AppendTime(std::uint32_t duration) {
    totalSamples = Wrap32(std::int64_t{totalSamples} + 1);
    totalDuration = Add64(totalDuration, duration);
    CalcAvInfo();
    if (entryCount >= 1 && held[entryCount - 1].delta == duration) {
      held[entryCount - 1].count += 1;
      return;
    }
    held.push_back({1, duration});
    entryCount = Wrap32(std::int64_t{entryCount} + 1);
  }
};

/// Sample sizes.
struct SizeTable {
  Track* track = nullptr;
  std::uint32_t largest = 0;
  std::uint32_t constant = 0;
  std::uint32_t count = 0;
  std::vector<std::uint32_t> held;
  std::vector<std::uint32_t> published;

  void Read(std::uint32_t constantSize, std::uint32_t declared,
            const std::vector<std::uint32_t>& rows, Track* current) {
    constant = constantSize;
    count = declared;
    track = current;
    if (track != nullptr && track->audio && !track->samr && track->bitsPerSample != 0) {
      const std::int32_t bytes = static_cast<std::int32_t>(track->bitsPerSample) / 8;
      constant = static_cast<std::uint32_t>(
          Wrap32(Mul64(bytes, static_cast<std::int32_t>(track->channels))));
    }
    std::uint64_t total = 0;
    if (constant != 0) {
      largest = constant;
      total = std::uint64_t{count} * constant;
    } else {
      held = rows;
      if (count > held.size()) count = static_cast<std::uint32_t>(held.size());
      for (std::uint32_t i = 0; i < count; ++i) {
        if (held[i] > largest) largest = held[i];
        total += held[i];
      }
    }
    if (track == nullptr) return;
    if (track->quickTime && track->compressionId != -2 && track->bytesPerFrame >= 1 &&
        constant != 0) {
      constant = largest = track->bytesPerFrame;
      if (track->samplesPerPacket != 0) {
        total = std::uint64_t{count / track->samplesPerPacket} * track->bytesPerFrame;
      }
    }
    if (track->audio) {
      published.clear();
      if (constant != 0) {
        track->constSampleCount = count;
        track->constSampleSize = constant;
      } else {
        for (std::uint32_t i = 0; i < count; ++i) published.push_back(held[i]);
      }
    }
    track->totalSampleBytes = static_cast<std::int64_t>(total);
    track->maxSampleSize = largest;
    if (track->duration >= 1) {
      const std::int64_t bits = Mul64(Mul64(track->totalSampleBytes, track->timescale), 8);
      track->bitRate = Wrap32(bits / track->duration);
    }
  }

  std::uint32_t GetSampleSize(std::int32_t i) const {
    if (constant != 0) return constant;
    if (i < 0 || i >= static_cast<std::int64_t>(held.size())) return 0;
    return held[i];
  }

  std::uint64_t SumSizes(std::int32_t first, std::int32_t last) const {
    std::uint64_t sum = 0;
    for (std::int32_t j = first; j < last; ++j) sum += GetSampleSize(j);
    return sum;
  }

  void AppendSize(std::uint32_t size) {
    if (count == 0) {
      constant = size;
      count = 1;
      return;
    }
    if (constant != 0 && size == constant) {
      count += 1;
      if (track != nullptr) track->constSampleCount = count;
      return;
    }
    if (constant != 0 || held.empty()) held.assign(count, constant);
    constant = 0;
    held.push_back(size);
    count += 1;
    if (track == nullptr) return;
    if (static_cast<std::int32_t>(size) >= static_cast<std::int32_t>(track->maxSampleSize)) {
      track->maxSampleSize = size;
    }
    track->constSampleCount = track->constSampleSize = 0;
    if (track->audio) published.push_back(size);
  }
};

/// Sync samples.
struct SyncTable {
  bool buffer = false;
  std::vector<std::uint32_t> held;
  std::int32_t entryCount = 0;

  void Read(const std::vector<std::uint32_t>& rows) {
    buffer = !rows.empty();
    held = rows;
    entryCount = static_cast<std::int32_t>(rows.size());
  }

  std::uint32_t GetSampleIndex(std::int32_t i) const {
    if (i < 0 || !buffer || i >= entryCount) return 0xFFFFFFFF;
    std::uint32_t value = 0;
    for (std::int32_t byte = i; byte < i + 4; ++byte) {
      value = value << 8 | (held[byte / 4] >> (24 - 8 * (byte % 4)) & 0xFF);
    }
    return value;
  }

  std::uint32_t GetSampleIndexBeforeThis(std::int32_t sample) const {
    if (!buffer) return 0xFFFFFFFF;
    std::int32_t kept = 0;
    for (std::int32_t j = 0; j < entryCount; ++j) {
      const auto value = static_cast<std::int32_t>(held[j] - 1);
      if (value > sample) break;
      kept = value;
    }
    return static_cast<std::uint32_t>(kept);
  }

  void AppendRAP(std::uint32_t number) {
    buffer = true;
    held.push_back(number);
    entryCount += 1;
  }
};

}  // namespace reference
