#pragma once

#include <algorithm>
#include <random>
#include <vector>

#include "tests/samples/SampleFixtures.h"

namespace fixture {

/// Sample tables, and every sample worked out from them one after the other as ISO/IEC 14496-12
/// says it (8.6.1.2, 8.6.1.3, 8.6.2, 8.6.4, 8.7.3 to 8.7.5): no marks, no look-ups, no states.
struct PlainTables {
  struct Run {
    std::uint32_t count;
    std::uint32_t value;
  };
  struct Map {
    std::uint32_t firstChunk;
    std::uint32_t perChunk;
    std::uint32_t description;
  };
  std::vector<std::uint32_t> sizes;
  std::vector<Run> times, compositions;
  std::vector<Map> map;
  std::vector<std::uint32_t> chunks;
  bool hasSync = false;
  std::vector<std::uint32_t> sync;
  std::vector<unsigned char> depends;

  Bytes File() const {
    TableMovie movie;
    movie.stsz = Stsz(Words(sizes));
    movie.stco = Stco(Words(chunks));
    movie.stts = RunBox("stts", times);
    Bytes rows = Bytes().Be32(Count(map));
    for (const Map& row : map) rows.Be32(row.firstChunk).Be32(row.perChunk).Be32(row.description);
    movie.stsc = FullBox("stsc", 0, 0, rows);
    if (!compositions.empty()) movie.more.Append(RunBox("ctts", compositions));
    if (hasSync) movie.more.Append(Stss(Words(sync)));
    if (!depends.empty()) {
      Bytes bytes;
      for (const unsigned char byte : depends) bytes.Byte(byte);
      movie.more.Append(FullBox("sdtp", 0, 0, bytes));
    }
    return movie.File();
  }

  std::vector<mp4::Sample> Samples(std::uint64_t fileSize) const {
    std::vector<mp4::Sample> samples;
    const std::vector<std::uint32_t> deltas = Expanded(times);
    const std::vector<std::uint32_t> offsets = Expanded(compositions);
    std::int64_t time = 0;
    for (std::uint32_t chunk = 1; chunk <= chunks.size(); ++chunk) {
      std::uint64_t at = chunks[chunk - 1];
      const Map& row = RowOf(chunk);
      for (std::uint32_t i = 0; i < row.perChunk && samples.size() < sizes.size(); ++i) {
        const std::size_t index = samples.size();
        mp4::Sample& sample = samples.emplace_back();
        sample.number = index + 1;
        sample.offset = at;
        sample.size = sizes[index];
        at += sample.size;
        sample.outside = at > fileSize;
        sample.duration = index < deltas.size() ? deltas[index]
                          : deltas.empty()      ? 0
                                                : deltas.back();
        sample.decodeTime = time;
        time += sample.duration;
        const std::uint32_t offset = index < offsets.size() ? offsets[index] : 0;
        sample.compositionTime = sample.decodeTime + static_cast<std::int32_t>(offset);
        sample.description = row.description;
        const bool named = std::find(sync.begin(), sync.end(), index + 1) != sync.end();
        sample.sync = !hasSync || named ? kYes : kNo;
        sample.isProtected = row.description == 1 ? kNo : mp4::Told::kUnknown;
        sample.depends = index < depends.size() ? depends[index] : 0;
      }
    }
    return samples;
  }

 private:
  template <class T>
  static std::uint32_t Count(const std::vector<T>& rows) {
    return static_cast<std::uint32_t>(rows.size());
  }
  static Bytes RunBox(const char* type, const std::vector<Run>& runs) {
    Bytes rows = Bytes().Be32(Count(runs));
    for (const Run& run : runs) rows.Be32(run.count).Be32(run.value);
    return FullBox(type, 0, 0, rows);
  }
  static std::vector<std::uint32_t> Expanded(const std::vector<Run>& runs) {
    std::vector<std::uint32_t> values;
    for (const Run& run : runs) values.insert(values.end(), run.count, run.value);
    return values;
  }
  const Map& RowOf(std::uint32_t chunk) const {
    std::size_t row = 0;
    while (row + 1 < map.size() && map[row + 1].firstChunk <= chunk) ++row;
    return map[row];
  }
};

inline std::uint32_t Below(std::mt19937* random, std::uint32_t n) {
  return static_cast<std::uint32_t>((*random)() % n);
}

/// Runs over about `samples`. Stretches of some twenty rows have one count, others any: the marks
/// of a table stand at every sixteenth row.
inline std::vector<PlainTables::Run> RandomRuns(std::mt19937* random, std::size_t samples,
                                                std::uint32_t values, std::int32_t least) {
  std::vector<PlainTables::Run> runs;
  std::size_t filled = 0;
  while (filled < samples) {
    const bool even = Below(random, 2) == 0;
    const std::uint32_t most = Below(random, 3) == 0 ? 1 : 4;
    const std::uint32_t same = Below(random, most) + 1;
    for (std::uint32_t row = Below(random, 40); row > 0 && filled < samples; --row) {
      const std::uint32_t count = even ? same : Below(random, most + 1);
      runs.push_back({count, Below(random, values) + static_cast<std::uint32_t>(least)});
      filled += count;
    }
    if (Below(random, 30) == 0) break;
  }
  return runs;
}

inline PlainTables RandomPlainTables(std::mt19937* random) {
  PlainTables tables;
  const std::size_t samples = Below(random, 1200);
  for (std::size_t i = 0; i < samples; ++i) tables.sizes.push_back(Below(random, 12));
  const std::uint32_t chunks = Below(random, 60) + 1;
  for (std::uint32_t i = 0; i < chunks; ++i) tables.chunks.push_back(Below(random, 11000));
  const std::uint32_t largest = Below(random, 4) == 0 ? 400 : 20;
  for (std::uint32_t first = 1; first <= chunks; first += Below(random, 3) + 1) {
    tables.map.push_back({first, Below(random, largest), Below(random, 2) + 1});
  }
  tables.times = RandomRuns(random, samples, Below(random, 2) == 0 ? 3 : 100, 0);
  if (Below(random, 3) != 0) tables.compositions = RandomRuns(random, samples, 200, -100);
  tables.hasSync = Below(random, 3) != 0;
  for (std::uint32_t i = 1; tables.hasSync && i <= samples; ++i) {
    if (Below(random, 7) == 0) tables.sync.push_back(i);
  }
  for (std::size_t i = Below(random, 4) == 0 ? samples : 0; i > 0; --i) {
    tables.depends.push_back(static_cast<unsigned char>(Below(random, 256)));
  }
  return tables;
}

inline bool operator==(const mp4::Sample& a, const mp4::Sample& b) {
  return a.number == b.number && a.offset == b.offset && a.decodeTime == b.decodeTime &&
         a.compositionTime == b.compositionTime && a.size == b.size && a.duration == b.duration &&
         a.description == b.description && a.fragment == b.fragment && a.sync == b.sync &&
         a.isProtected == b.isProtected && a.depends == b.depends && a.outside == b.outside &&
         a.elsewhere == b.elsewhere && a.partialSync == b.partialSync;
}

}  // namespace fixture
