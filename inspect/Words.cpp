#include "inspect/Words.h"

namespace mp4 {

std::string Grouped(std::uint64_t number) {
  std::string text = std::to_string(number);
  for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, 1, ',');
  return text;
}

std::string IdText(const Id16& id) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < id.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text.push_back('-');
    text.push_back(kDigits[id[i] >> 4]);
    text.push_back(kDigits[id[i] & 15]);
  }
  return text;
}

std::string Quoted(const std::string& text) { return '"' + text + '"'; }

}  // namespace mp4
