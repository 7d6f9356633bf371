#include "iso/BoxRun.h"

#include <algorithm>

#include "io/FourCC.h"

namespace mp4 {

bool ReadBoxAt(const unsigned char* bytes, std::size_t n, std::uint64_t left, BoxBytes* box) {
  FieldView fields(bytes, n);
  const std::uint32_t stored = fields.U32();
  box->type = fields.Type();
  const std::uint64_t size = stored == 0 ? left : stored == 1 ? fields.U64() : stored;
  box->userType = box->type == FourCC("uuid") ? fields.Bytes(16) : nullptr;
  box->headerSize = static_cast<std::uint8_t>(fields.At());
  if (!fields.Ok() || size < box->headerSize) return false;
  box->cut = size > left;
  box->size = std::min(size, left);
  const std::uint64_t held = std::min<std::uint64_t>(box->size, n);
  const std::size_t inside = static_cast<std::size_t>(held) - box->headerSize;
  box->payload = FieldView(bytes + box->headerSize, inside);
  return true;
}

bool BoxRun::Next(BoxBytes* box) {
  if (size_ - at_ < 8) return false;
  if (!ReadBoxAt(bytes_ + at_, size_ - at_, size_ - at_, box)) {
    at_ = size_;
    return false;
  }
  box->at = at_;
  at_ += static_cast<std::size_t>(box->size);
  return true;
}

}  // namespace mp4
