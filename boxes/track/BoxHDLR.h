#pragma once

#include <cstdint>
#include <memory>

#include "boxes/base/BoxBase.h"
#include "io/FourCC.h"

/// Handler box "hdlr" (ISO/IEC 14496-12 HandlerBox, QuickTime handler reference), contained in
/// "mdia". Tells the current track's record what kind of track it is; must precede "minf", whose
/// boxes depend on it.
class MP4JUDGE_API BoxHDLR : public BoxBase {
 public:
  /// False without reader, below 4 bytes, or when the opening's account or memory refuses the name.
  /// Without a current track nothing is published.
  bool ReadData(mmStreamReader* reader, long long size, Mp4Context* context) override;
  unsigned int GetHandlerType() { return handlerType; }
  bool IsVideo() { return handlerType == mp4::FourCC("vide"); }

  std::uint32_t handlerType = 0;
  /// Zero-terminated UTF-8, at most the bytes the source holds. Null below 24 bytes of payload.
  std::unique_ptr<char[]> name;

 private:
  bool ReadName(mmStreamReader* reader, long long rest);
};
