#include "fuzz/JsonCheck.h"

#include <cstddef>

namespace fuzz {

namespace {

/// Reads from the front; each function says whether what it is named after stood there.
class JsonReader {
 public:
  explicit JsonReader(std::string_view text) : left_(text) {}

  bool Value() {
    constexpr int kDeepest = 100;
    if (left_.empty() || depth_ >= kDeepest) return false;
    switch (left_.front()) {
      case '{':
        return List('{', '}', true);
      case '[':
        return List('[', ']', false);
      case '"':
        return String();
      case 't':
        return Word("true");
      case 'f':
        return Word("false");
      case 'n':
        return Word("null");
      default:
        return Number();
    }
  }
  bool AtEnd() const { return left_.empty(); }

 private:
  bool Take(char c) {
    if (left_.empty() || left_.front() != c) return false;
    left_.remove_prefix(1);
    return true;
  }
  bool Word(std::string_view word) {
    if (left_.substr(0, word.size()) != word) return false;
    left_.remove_prefix(word.size());
    return true;
  }
  bool Digits() {
    std::size_t n = 0;
    while (n < left_.size() && left_[n] >= '0' && left_[n] <= '9') ++n;
    left_.remove_prefix(n);
    return n > 0;
  }

  bool List(char begin, char end, bool named) {
    if (!Take(begin)) return false;
    if (Take(end)) return true;
    ++depth_;
    do {
      if (named && !(String() && Take(':'))) return false;
      if (!Value()) return false;
    } while (Take(','));
    --depth_;
    return Take(end);
  }

  bool Number() {
    Take('-');
    if (!Take('0') && !Digits()) return false;
    if (Take('.') && !Digits()) return false;
    if (!Take('e') && !Take('E')) return true;
    if (!Take('-')) Take('+');
    return Digits();
  }

  bool String() {
    if (!Take('"')) return false;
    while (!left_.empty() && left_.front() != '"') {
      if (static_cast<unsigned char>(left_.front()) < 0x20) return false;
      if (!(Take('\\') ? Escape() : Character())) return false;
    }
    return Take('"');
  }
  bool Escape() {
    if (!Take('u')) {
      constexpr std::string_view kKnown = "\"\\/bfnrt";
      return !left_.empty() && kKnown.find(left_.front()) != std::string_view::npos &&
             Take(left_.front());
    }
    if (left_.size() < 4) return false;
    constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
    if (left_.substr(0, 4).find_first_not_of(kDigits) != std::string_view::npos) return false;
    left_.remove_prefix(4);
    return true;
  }
  /// One character in UTF-8, of the shortest form and no surrogate.
  bool Character() {
    const auto first = static_cast<unsigned char>(left_.front());
    const std::size_t more = first < 0x80 ? 0 : first < 0xE0 ? 1 : first < 0xF0 ? 2 : 3;
    if ((first >= 0x80 && first < 0xC2) || first > 0xF4 || more >= left_.size()) return false;
    unsigned long code = more == 0 ? first : first & (0x3FU >> more);
    for (std::size_t i = 1; i <= more; ++i) {
      const auto next = static_cast<unsigned char>(left_[i]);
      if ((next & 0xC0) != 0x80) return false;
      code = code << 6 | (next & 0x3F);
    }
    left_.remove_prefix(more + 1);
    constexpr unsigned long kSmallest[] = {0, 0x80, 0x800, 0x10000};
    return code >= kSmallest[more] && code <= 0x10FFFF && !(code >= 0xD800 && code < 0xE000);
  }

  std::string_view left_;
  int depth_ = 0;
};

}  // namespace

bool IsJson(std::string_view text) {
  JsonReader reader(text);
  return reader.Value() && reader.AtEnd();
}

}  // namespace fuzz
