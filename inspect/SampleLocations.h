#pragma once

#include <cstdint>
#include <vector>

#include "iso/BoxTree.h"

namespace mp4 {

/// Where a sample lies in the file.
struct SampleLocation {
  std::uint64_t offset;
  std::uint32_t size;
};

/// The samples of a track that has few, from its SampleTableBox "stbl" (ISO/IEC 14496-12, 8.5):
/// "stsz" or "stz2", "stsc", and "stco" or "co64". False, with those found so far, when the tables
/// are missing, cut or contradictory, or name more than `most` samples. Costs O(most).
bool LocateSamples(BoxTree* tree, BoxId stbl, std::size_t most,
                   std::vector<SampleLocation>* samples);

}  // namespace mp4
