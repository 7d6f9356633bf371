#pragma once

#include <memory>
#include <vector>

#include "boxes/base/BoxBase.h"
#include "boxes/fragments/BoxTFHD.h"
#include "boxes/fragments/BoxTRUN.h"

/// Track fragment box "traf" (ISO/IEC 14496-12 TrackFragmentBox), inside "moof": one track's runs.
///
/// Unknown children are entered, not skipped: the next header is read right behind theirs, so that
/// what follows a "tfdt" goes unseen. Hosts rely on the samples this leaves them with.
class MP4JUDGE_API BoxTRAF : public BoxBase {
 public:
  /// Reads the children; a repeated header is read over the first. A size of 0 or less holds none
  /// and is passed over. False for a null reader or a failing child; a failing run is dropped.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  std::unique_ptr<BoxTFHD> header;             ///< null without a "tfhd"
  std::vector<std::unique_ptr<BoxTRUN>> runs;  ///< in file order
};
