// A full opening, then everything a host may do with it: ready, walk, seek, read tracks singly.
#include <cstdint>

#include "demux/Mp4Demux.h"
#include "fuzz/BoxMutator.h"
#include "fuzz/MemoryFile.h"

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  return fuzz::MutateBoxes(data, size, most, seed);
}

namespace {

constexpr int kSteps = 2000;

void Walk(BoxMOOV* movie) {
  BoxBase::SAMPLE sample{};
  for (int i = 0; i < kSteps; ++i) movie->GetNextSampleInfo(&sample);
}

void SeekAndRead(BoxMOOV* movie, int track) {
  static constexpr long long kTimes[] = {1, 10000000, 36000000000, -1, 0x7FFFFFFFFFFFFFFF, 0};
  BoxBase::SAMPLE sample{};
  for (const long long time : kTimes) {
    movie->Seek(time, track, 0);
    for (int i = 0; i < 50; ++i) movie->GetNextSampleInfo(&sample, track);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::MemoryFile file(data, size);
  Mp4Demux demux;
  const bool opened = demux.Init(file.path());
  if (!demux.ReadyToDemux() || !opened) return 0;
  Walk(demux.movieBox.get());
  int tracks = 0;
  std::vector<int> ids;
  for (const auto& entry : demux.movieBox->tracks) {
    if (++tracks <= 4) ids.push_back(entry.first);
  }
  ids.push_back(12345);
  for (const int id : ids) SeekAndRead(demux.movieBox.get(), id);
  demux.ReadyToDemux();
  Walk(demux.movieBox.get());
  return 0;
}
