#pragma once

#include <cstdint>
#include <random>
#include <vector>

#include "tests/ReferenceTables.h"
#include "tests/TableFixtures.h"

namespace fixture {

/// Numbers for random tables: the same on every machine for one seed.
class Dice {
 public:
  explicit Dice(std::uint32_t seed) : engine(seed) {}

  std::uint32_t Word() { return static_cast<std::uint32_t>(engine()); }
  std::int64_t Wide() {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(Word()) << 32 | Word());
  }
  std::uint32_t Below(std::uint32_t n) { return Word() % n; }
  bool OneIn(std::uint32_t n) { return Below(n) == 0; }
  /// A number a muxer would hardly write: ends of the range, small negatives, anything.
  std::uint32_t Hostile() {
    constexpr std::uint32_t kOdd[] = {0, 1, 0x7FFFFFFF, 0x80000000, 0x80000001, 0xFFFFFFFF};
    if (OneIn(3)) return kOdd[Below(6)];
    if (OneIn(2)) return ~Below(100);
    return Word();
  }

 private:
  std::mt19937 engine;
};

/// How wild the numbers of one table are.
struct Mood {
  std::uint32_t hostileOneIn;  ///< 0: never
  std::uint32_t most;          ///< sane numbers stay below
};

inline Mood RandomMood(Dice* dice) {
  constexpr Mood kMoods[] = {{0, 4}, {0, 2000}, {40, 10}, {8, 300}, {2, 5}, {1, 1}};
  return kMoods[dice->Below(6)];
}

inline std::uint32_t Number(Dice* dice, const Mood& mood) {
  if (mood.hostileOneIn != 0 && dice->OneIn(mood.hostileOneIn)) return dice->Hostile();
  return dice->Below(mood.most);
}

/// A track record and its reference with the same properties.
class TwinTrack {
 public:
  explicit TwinTrack(Dice* dice)
      : movie(kHandlers[kind = dice->Below(3)],
              dice->OneIn(2) ? MP4_FILE_MODE_MOV : MP4_FILE_MODE_MP4) {
    Mp4Context::TRACK& t = *movie.track;
    t.timescale = static_cast<std::int32_t>(dice->OneIn(4) ? dice->Hostile() : dice->Below(90000));
    t.compressionId = dice->OneIn(3) ? -2 : 0;
    t.samplesPerPacket = Small(dice);
    t.bytesPerFrame = Small(dice);
    t.bitsPerSample = dice->OneIn(3) ? dice->Below(33) : 0;
    t.channels = Small(dice);
    t.format = dice->OneIn(3) ? mp4::FourCC("samr") : mp4::FourCC("mp4a");
    t.duration = dice->OneIn(3) ? dice->Wide() : dice->Below(100000);

    twin.video = kind == 0;
    twin.audio = kind == 1;
    twin.quickTime = movie.context.fileMode == MP4_FILE_MODE_MOV;
    twin.samr = t.format == mp4::FourCC("samr");
    twin.compressionId = t.compressionId;
    twin.samplesPerPacket = t.samplesPerPacket;
    twin.bytesPerFrame = t.bytesPerFrame;
    twin.bitsPerSample = t.bitsPerSample;
    twin.channels = t.channels;
    twin.timescale = t.timescale;
    twin.duration = t.duration;
  }

  /// Whether the record says what the reference says.
  bool Agrees() const {
    const Mp4Context::TRACK& t = *movie.track;
    return t.numSamples == twin.numSamples && t.duration == twin.duration &&
           t.frameRateNum == twin.frameRateNum && t.frameRateDen == twin.frameRateDen &&
           t.bitRate == twin.bitRate && t.totalSampleBytes == twin.totalSampleBytes &&
           t.maxSampleSize == twin.maxSampleSize && t.constSampleCount == twin.constSampleCount &&
           t.constSampleSize == twin.constSampleSize;
  }

 private:
  static constexpr char kHandlers[3][5] = {"vide", "soun", "text"};
  static std::uint32_t Small(Dice* dice) {
    return dice->OneIn(5) ? dice->Hostile() : dice->Below(4);
  }

  std::uint32_t kind = 0;

 public:
  OneTrack movie;
  reference::Track twin;
};

}  // namespace fixture
