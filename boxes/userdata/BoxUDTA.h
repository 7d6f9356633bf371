#pragma once

#include <memory>

#include "boxes/base/BoxBase.h"
#include "boxes/userdata/BoxMeta.h"

/// User data box "udta" of the movie: QuickTime text items, whose types start with 0xA9, and a
/// meta box. Six of the texts go to the context's metadata block; a later item with the same key
/// overwrites the whole field. Contained in "moov".
class MP4JUDGE_API BoxUDTA : public BoxBase {
 public:
  /// False for a null reader or a negative size; no child fails it. Without a context the items
  /// are read and nothing is stored.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;

  /// Reads one text item whose body is `length` bytes and stores `bytes` bytes of wide text at
  /// `field`: text length and language code in two bytes each, then UTF-8. False for a null reader
  /// or a negative length.
  bool Read_0xa9xxx(mmStreamReader* reader, long long length, wchar_t* field, int bytes);

  std::unique_ptr<BoxMeta> metaBox;
};
