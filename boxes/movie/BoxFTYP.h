#pragma once

#include "boxes/base/BoxBase.h"

/// File type box "ftyp" (ISO/IEC 14496-12): reduces the brands to the context's file mode. The
/// major brand decides; while it is unknown, the first known compatible brand does.
class MP4JUDGE_API BoxFTYP : public BoxBase {
 public:
  /// False without reader or context, or when `size` has no room for a compatible brand. A file
  /// type whose brands are all unknown is read with success and leaves the mode unknown.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;
};
