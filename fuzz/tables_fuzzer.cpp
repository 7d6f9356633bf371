// The fast table queries against plain walks: the first bytes choose a box and its surroundings,
// then come its rows, then a program of queries, appends and seeks.
#include <cstdint>
#include <vector>

#include "fuzz/FuzzBytes.h"
#include "fuzz/TableTwins.h"

namespace {

using fuzz::Demand;
using fuzz::FuzzBytes;

/// Moves of one program: plain walks cost a table's length each.
constexpr int kMoves = 200;

template <class Twin>
void Run(FuzzBytes* input) {
  Twin twin(input);
  twin.DemandSameState();
  for (int move = 0; move < kMoves && !input->Empty(); ++move) twin.Move(input);
  twin.DemandSameState();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzBytes input(data, size);
  switch (input.Below(6)) {
    case 0:
      Run<fuzz::TimeTwin>(&input);
      break;
    case 1:
      Run<fuzz::SizeTwin>(&input);
      break;
    case 2:
      Run<fuzz::SyncTwin>(&input);
      break;
    case 3:
      Run<fuzz::ChunkTwin>(&input);
      break;
    case 4:
      Run<fuzz::OffsetTwin>(&input);
      break;
    default:
      Run<fuzz::CursorTwin>(&input);
  }
  return 0;
}
