#pragma once

#include "boxes/base/BoxBase.h"

/// Item list box "ilst", as iTunes writes it: one item per key, its text in a "data" child. The
/// keys and the fields they fill are those of the user data box. Contained in "meta".
class MP4JUDGE_API BoxIlst : public BoxBase {
 public:
  /// False for a null reader or a negative size; no item fails it. Without a context the items are
  /// read and nothing is stored.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  /// Reads one item whose body is `length` bytes and stores `bytes` bytes of wide text at `field`.
  /// An item that does not start with two zero bytes is a QuickTime text item; otherwise its first
  /// child must be a "data" box holding UTF-8, or nothing is stored. False for a null reader or a
  /// negative length.
  bool Read_0xa9xxx(mmStreamReader* reader, long long length, wchar_t* field, int bytes);
};
