// The C entry on a whole file, and that it agrees with a full opening on every input.
#include <cstdint>
#include <cstdlib>

#include "demux/FileInfoInterface.h"
#include "demux/Mp4Demux.h"
#include "demux/Verdict.h"
#include "fuzz/BoxMutator.h"
#include "fuzz/MemoryFile.h"

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
  return fuzz::MutateBoxes(data, size, most, seed);
}

namespace {

void CheckSameRecords(Mp4Context* full, Mp4Context* judged) {
  if (full->GetTrackCount() != judged->GetTrackCount()) std::abort();
  for (int i = 0; i < full->GetTrackCount(); ++i) {
    const auto* a = full->GetTrackByIndex(i);
    const auto* b = judged->GetTrackByIndex(i);
    if (a->trackId != b->trackId || a->handlerType != b->handlerType || a->format != b->format) {
      std::abort();
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const fuzz::MemoryFile file(data, size);
  const int answer = JudgeMP4HaveDRM(file.path());
  Mp4Demux full;
  Mp4Demux judged;
  const bool opened = full.Init(file.path());
  if (opened != judged.InitForJudgement(file.path())) std::abort();
  CheckSameRecords(full.GetContext(), judged.GetContext());
  if (answer != (opened && mp4::HasProtectedTrack(full.GetContext()) ? 1 : 0)) std::abort();
  return 0;
}
