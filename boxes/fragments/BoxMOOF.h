#pragma once

#include <memory>
#include <vector>

#include "boxes/base/BoxBase.h"
#include "boxes/fragments/BoxMFHD.h"
#include "boxes/fragments/BoxTRAF.h"

class BoxMOOV;
class BoxTRAK;
class BoxTREX;

/// Movie fragment box "moof" (ISO/IEC 14496-12 MovieFragmentBox), at the file's top level: later
/// samples of the movie's tracks.
///
/// Unknown children are entered, not skipped: the next header is read right behind theirs.
class MP4JUDGE_API BoxMOOF : public BoxBase {
 public:
  /// Reads the children; a repeated header is read over the first. False for a null reader, a
  /// negative size or a failing child; a failing track fragment is dropped.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  /// Appends the fragment's samples to the sample tables of the movie's tracks. Quietly does
  /// nothing without context, movie, "mvex" or track fragments, and stops at the first track
  /// fragment whose track or "trex" is missing. An unknown track ID leaves a null entry in the
  /// movie's `tracks`. While a file is being opened, `context->scan` bounds what may be added;
  /// the fragment stops before the run that is refused. Linear in the samples that have an entry
  /// or take room in a table.
  void MergeFragment(Mp4Context* context, BoxMOOV* moov);

  /// Appends the runs of one track fragment, each as one chunk, with `trex` for what the fragment
  /// does not say. Nothing happens when one of the three, or the fragment's header, is missing.
  void MergeTrack(BoxTRAK* trak, BoxTRAF* traf, BoxTREX* trex);

  std::unique_ptr<BoxMFHD> header;                       ///< null without an "mfhd"
  std::vector<std::unique_ptr<BoxTRAF>> trackFragments;  ///< in file order
};
