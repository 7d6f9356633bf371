#include "iso/TypeText.h"

#include <string_view>

namespace mp4 {

void AppendType(std::uint32_t type, std::string* text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::string_view kSpecial = "\\/[]";
  for (int i = 0; i < 4; ++i, type >>= 8) {
    const auto c = static_cast<unsigned char>(type);
    const char character = static_cast<char>(c);
    if (c >= 0x20 && c < 0x7F && kSpecial.find(character) == std::string_view::npos) {
      text->push_back(character);
    } else {
      text->append({'\\', 'x', kDigits[c >> 4], kDigits[c & 15]});
    }
  }
}

bool IsTypeText(std::uint32_t type) {
  for (int i = 0; i < 4; ++i, type >>= 8) {
    const std::uint32_t c = type & 0xFF;
    if ((c < 0x20 || c > 0x7E) && c != 0xA9) return false;
  }
  return true;
}

std::string TypeText(std::uint32_t type) {
  std::string text;
  AppendType(type, &text);
  return text;
}

}  // namespace mp4
