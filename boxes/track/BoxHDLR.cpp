#include "boxes/track/BoxHDLR.h"

#include <algorithm>

#include "boxes/base/FullBoxHeader.h"
#include "boxes/base/Mp4Context.h"
#include "io/BulkRead.h"
#include "io/Charge.h"
#include "io/NewArray.h"

namespace {

constexpr long long kSmallestHandler = 4;
/// Payload bytes before the name.
constexpr long long kNameStart = 24;

/// A QuickTime name starts with a byte that counts exactly the rest of the box; an MP4 name is the
/// whole rest, its first byte included, where ISO/IEC 14496-12 ends it at its first zero. The byte
/// read to tell them apart is handed back by a seek.
long long NameLength(mmStreamReader* reader, long long rest) {
  if (reader->GetByte() == rest - 1) return rest - 1;
  reader->Skip(-1);
  return rest;
}

}  // namespace

bool BoxHDLR::ReadData(mmStreamReader* reader, long long size, Mp4Context* context) {
  if (reader == nullptr || size < kSmallestHandler) return false;
  mp4::SkipFullBoxHeader(reader);
  reader->GetLe32();  // QuickTime component type
  handlerType = reader->GetLe32();
  reader->Skip(12);  // reserved
  name.reset();
  if (!ReadName(reader, size - kNameStart)) return false;
  if (Mp4Context::TRACK* track = mp4::CurrentTrack(context)) track->handlerType = handlerType;
  return true;
}

bool BoxHDLR::ReadName(mmStreamReader* reader, long long rest) {
  if (rest < 0) {
    reader->Skip(rest);
    return true;
  }
  const long long length = NameLength(reader, rest);
  const long long exists = std::min(length, mp4::Remaining(reader));
  const auto held = static_cast<std::size_t>(exists);
  if (mp4::Charge(reader, exists, exists)) name = mp4::NewArray<char>(held + 1);
  if (name == nullptr) {
    mp4::PassAsRead(reader, length);
    return false;
  }
  name[mp4::ReadBytes(reader, name.get(), held, length)] = 0;
  return true;
}
