#include "iso/UserType.h"

#include <cstring>

namespace mp4 {

UserTypeKind KindOfUserType(BoxTree* tree, BoxId id) {
  static constexpr unsigned char kSystem[] = {0xD0, 0x8A, 0x4F, 0x18, 0x10, 0xF3, 0x4A, 0x82,
                                              0xB6, 0xC8, 0x32, 0xD8, 0xAB, 0xA1, 0x83, 0xD3};
  static constexpr unsigned char kTrack[] = {0x89, 0x74, 0xDB, 0xCE, 0x7B, 0xE7, 0x4C, 0x51,
                                             0x84, 0xF9, 0x71, 0x48, 0xF9, 0x88, 0x25, 0x54};
  static constexpr unsigned char kSample[] = {0xA2, 0x39, 0x4F, 0x52, 0x5A, 0x9B, 0x4F, 0x14,
                                              0xA2, 0x44, 0x6C, 0x42, 0x7C, 0x64, 0x8D, 0xF4};
  const unsigned char* type = tree->UserType(id);
  if (type == nullptr) return UserTypeKind::kOther;
  if (std::memcmp(type, kSystem, 16) == 0) return UserTypeKind::kSystem;
  if (std::memcmp(type, kTrack, 16) == 0) return UserTypeKind::kTrackEncryption;
  if (std::memcmp(type, kSample, 16) == 0) return UserTypeKind::kSampleEncryption;
  return UserTypeKind::kOther;
}

}  // namespace mp4
