#pragma once

#include <memory>

#include "boxes/base/BoxBase.h"
#include "boxes/userdata/BoxIlst.h"

/// Meta box "meta", a full box: only its item list is read; its handler and all else is passed
/// over. Contained in "udta".
class MP4JUDGE_API BoxMeta : public BoxBase {
 public:
  /// False for a null reader or a negative size; no child fails it. A payload of 4 bytes or fewer
  /// has no children.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  std::unique_ptr<BoxIlst> itemListBox;
};
