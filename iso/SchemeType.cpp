#include "iso/SchemeType.h"

#include <algorithm>

#include "io/FourCC.h"

namespace mp4 {

namespace {

constexpr std::size_t kLongestUri = 4096;

bool HasShortVersion(std::uint32_t type, std::size_t left) {
  return left == 2 || type == FourCC("ACBC") || type == FourCC("ACGK");
}

std::string ReadText(FieldView* fields) {
  const std::size_t n = std::min(fields->Left(), kLongestUri);
  const auto* text = reinterpret_cast<const char*>(fields->Bytes(n));
  if (text == nullptr) return {};
  return {text, std::find(text, text + n, '\0')};
}

}  // namespace

bool ReadSchemeType(FieldView payload, SchemeType* scheme) {
  const VersionAndFlags head = ReadVersionAndFlags(&payload);
  scheme->type = payload.Type();
  if (!payload.Ok()) return false;
  scheme->version = HasShortVersion(scheme->type, payload.Left()) ? payload.U16() : payload.U32();
  scheme->uri = (head.flags & 1) != 0 ? ReadText(&payload) : std::string();
  return true;
}

}  // namespace mp4
