#include "tools/Printable.h"

#include <cstdio>

namespace tool {

std::string Printable(std::string_view name) {
  std::string text;
  text.reserve(name.size());
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\\') {
      text += "\\\\";
    } else if (byte >= 0x20 && byte != 0x7F) {
      text += c;
    } else {
      char escape[5];
      std::snprintf(escape, sizeof escape, "\\x%02X", byte);
      text += escape;
    }
  }
  return text;
}

std::string WithCommas(unsigned long long number) {
  std::string digits = std::to_string(number);
  for (std::size_t at = digits.size(); at > 3;) {
    at -= 3;
    digits.insert(at, 1, ',');
  }
  return digits;
}

}  // namespace tool
