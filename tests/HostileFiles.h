#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "demux/Mp4Demux.h"
#include "tests/Fixtures.h"
#include "tests/GoldenBoxes.h"

/// Files made to harm the host that opens them.
namespace hostile {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

constexpr long long kMiB = 1024 * 1024;

/// Bytes of this process in memory.
inline long long Resident() {
  long long total = 0;
  long long pages = 0;
  std::FILE* file = std::fopen("/proc/self/statm", "r");
  if (file == nullptr) return 0;
  const bool read = std::fscanf(file, "%lld %lld", &total, &pages) == 2;
  std::fclose(file);
  return read ? pages * sysconf(_SC_PAGESIZE) : 0;
}

/// Walks and seeks a little, as a host would.
inline void Play(Mp4Demux* demux) {
  if (!demux->ReadyToDemux()) return;
  BoxBase::SAMPLE sample{};
  for (int i = 0; i < 600; ++i) demux->movieBox->GetNextSampleInfo(&sample);
  for (const int id : {1, 2, 3}) {
    for (const long long time : {1LL, 10'000'000LL, 1LL << 40, -1LL, 1LL << 62, 0LL}) {
      demux->movieBox->Seek(time, id, 0);
      for (int i = 0; i < 20; ++i) demux->movieBox->GetNextSampleInfo(&sample, id);
    }
  }
}

/// Opens a file, plays it and judges it. The two openings must agree, and the one that keeps the
/// tables must keep to its memory. Returns whether it opened.
inline bool Opens(const Bytes& bytes) {
  const TempFile file(bytes);
  const long long before = Resident();
  Mp4Demux demux;
  const bool opened = demux.Init(file.wide().c_str());
  const long long most = 256 * kMiB + 16 * static_cast<long long>(bytes.size());
  EXPECT_TRUE(kSanitized || Resident() - before < most);
  Play(&demux);
  Mp4Demux judged;
  EXPECT_EQ(judged.InitForJudgement(file.wide().c_str()), opened);
  return opened;
}

/// Where a box's size field stands; the first box of that type.
inline std::size_t FindBox(const Bytes& bytes, std::string_view type) {
  for (std::size_t at = 0; at + 8 <= bytes.size(); ++at) {
    if (std::memcmp(bytes.data() + at + 4, type.data(), 4) == 0) return at;
  }
  ADD_FAILURE() << "no box " << type;
  return 0;
}

/// A copy in which the 32-bit number `offset` bytes into a box is another one. Offset 0 is the
/// box's size.
inline Bytes With(const Bytes& bytes, std::string_view type, std::size_t offset,
                  std::uint32_t value) {
  return Bytes(bytes).PutBe32(FindBox(bytes, type) + offset, value);
}

/// A film and a song with fragments behind them.
inline Bytes Movie() {
  return fixture::Ftyp("isom") + golden::Movie() + golden::Moof() + golden::Moof();
}

/// Offsets of the counts of full boxes: behind size, type, version and flags.
constexpr std::size_t kCount = 12;

}  // namespace hostile
