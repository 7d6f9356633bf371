#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "boxes/base/BoxBase.h"
#include "boxes/movie/BoxMEHD.h"
#include "boxes/movie/BoxTREX.h"

/// Movie extends box "mvex" (ISO/IEC 14496-12 MovieExtendsBox), inside "moov": announces fragments
/// and carries their defaults, one "trex" a track.
///
/// Unknown children are entered, not skipped: the next header is read right behind theirs.
class MP4JUDGE_API BoxMVEX : public BoxBase {
 public:
  /// Reads the children into the lists below, behind those already there. False for a null reader,
  /// a negative size or a failing child, which is dropped; its elder siblings stay.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  /// The first record for a track in file order, or null. Logarithmic in the number of records,
  /// which must keep the IDs they were read with once there are many.
  BoxTREX* FindTrackExtends(std::uint32_t track_ID);

  std::vector<std::unique_ptr<BoxMEHD>> headers;       ///< in file order
  std::vector<std::unique_ptr<BoxTREX>> trackExtends;  ///< in file order, repeated IDs kept

 private:
  BoxTREX* ScanTrackExtends(std::uint32_t track_ID);
  void SortIDs();

  /// {track ID, index into trackExtends}, ascending; made at the first look-up among many.
  std::vector<std::pair<std::uint32_t, std::size_t>> sortedIDs;
};
