#include "boxes/userdata/BoxMeta.h"

#include "boxes/base/BoxReading.h"
#include "io/FourCC.h"

namespace {

constexpr long long kFullBoxHeader = 4;

}  // namespace

bool BoxMeta::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < 0) return false;
  // ISO/IEC 14496-12 has version and flags here, the QuickTime format has not: its "meta" is
  // misread.
  mp4::SkipFullBoxHeader(reader);
  const auto dispatch = [&](const mp4::ChildHeader& child) {
    if (child.type != mp4::FourCC("ilst")) return mp4::Child::kUnknown;
    mp4::ReadReused(&itemListBox, reader, child, context);
    return mp4::Child::kRead;
  };
  return mp4::ReadContainer(reader, size, kFullBoxHeader, dispatch);
}
