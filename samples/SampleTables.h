#pragma once

#include <cstdint>
#include <vector>

#include "samples/ChunkRows.h"
#include "samples/Description.h"
#include "samples/GroupMap.h"
#include "samples/RunRows.h"
#include "samples/SizeRows.h"
#include "samples/SyncRows.h"

namespace mp4 {

/// The tables of a "stbl" (ISO/IEC 14496-12, 8.5.1) as file bytes. A sample is listed when its size
/// and its chunk are there: the fewest count wins. Entries are what the tables count, usually the
/// samples themselves (see ChunkRows).
struct SampleTables {
  /// Reads the tables. `descriptions` are borrowed.
  void Load(BoxTree* tree, BoxId stbl, const std::vector<Description>& descriptions,
            std::uint32_t handler, SampleProblems* problems);
  /// Compares what the tables count, which reads all of them.
  void NoteDisagreements(SampleProblems* problems);

  std::uint64_t Samples() const { return chunks.Samples(); }
  std::uint64_t Entries() const { return chunks.Entries(); }
  /// Where a fragment without a decode time goes on: the end of the last sample listed.
  std::uint64_t EndTime();
  /// Decode time of an entry.
  std::uint64_t TimeOf(std::uint64_t entry);

  /// The sync sample that may stand in for a sample ("stsh"), 0 without one; both 1-based.
  std::uint32_t ShadowOf(std::uint64_t number) const;

  RunRows times;
  RunRows offsets;
  bool hasTimes = false;
  bool hasOffsets = false;
  ChunkRows chunks;
  SizeRows sizes;
  SyncRows sync;
  SyncRows partialSync;
  TableBytes depends;
  TableBytes shadows;  ///< rows of a number and the sync sample for it, in order
  GuardDescriptions guardDescriptions;
  GuardMap guards;
};

}  // namespace mp4
