#include "iso/ProtectionSystem.h"

#include <algorithm>

namespace mp4 {

bool ReadProtectionSystem(FieldView payload, ProtectionSystem* system) {
  const VersionAndFlags head = ReadVersionAndFlags(&payload);
  if (const unsigned char* id = payload.Bytes(16)) std::copy_n(id, 16, system->id.begin());
  const std::uint32_t keys = head.version > 0 ? payload.U32() : 0;
  for (std::uint32_t i = 0; i < keys && payload.Ok(); ++i) {
    const unsigned char* key = payload.Bytes(16);
    if (key == nullptr) return false;
    system->keyIds.emplace_back();
    std::copy_n(key, 16, system->keyIds.back().begin());
  }
  system->dataSize = payload.U32();
  return payload.Ok();
}

}  // namespace mp4
