#include "door/JsonWriter.h"

#include <charconv>
#include <cmath>
#include <cstdio>

namespace mp4 {

namespace {

/// Bytes of the well-formed UTF-8 character at the front, 0 when there is none (Unicode, table 3-7:
/// no overlong forms, no surrogates, nothing above U+10FFFF).
std::size_t CharacterLength(std::string_view bytes) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return 1;
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || bytes.size() < length) return 0;
  const unsigned char least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const unsigned char most = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (byte(1) < least || byte(1) > most) return 0;
  for (std::size_t i = 2; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  return length;
}

/// Characters at the front that stand for themselves.
std::size_t PlainLength(std::string_view bytes) {
  std::size_t n = 0;
  while (n < bytes.size() && bytes[n] >= 0x20 && bytes[n] != 0x7F && bytes[n] != '"' &&
         bytes[n] != '\\') {
    ++n;
  }
  return n;
}

void AppendEscaped(unsigned char c, std::string* text) {
  switch (c) {
    case '"':
      text->append("\\\"");
      return;
    case '\\':
      text->append("\\\\");
      return;
    case '\n':
      text->append("\\n");
      return;
    case '\r':
      text->append("\\r");
      return;
    case '\t':
      text->append("\\t");
      return;
    default:
      break;
  }
  char escape[8];
  std::snprintf(escape, sizeof escape, "\\u%04X", c);
  text->append(escape);
}

}  // namespace

bool IsUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t length = CharacterLength(bytes);
    if (length == 0) return false;
    bytes.remove_prefix(length);
  }
  return true;
}

void JsonWriter::Name(std::string_view name) {
  Separate();
  Quote(name);
  text_->append(form_ == Form::kIndented ? ": " : ":");
  named_ = true;
}

void JsonWriter::String(std::string_view value) {
  Separate();
  Quote(value);
}

void JsonWriter::Unsigned(std::uint64_t value) {
  Separate();
  text_->append(std::to_string(value));
}

void JsonWriter::Signed(std::int64_t value) {
  Separate();
  text_->append(std::to_string(value));
}

void JsonWriter::Real(double value) {
  if (!std::isfinite(value)) return Null();
  Separate();
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  text_->append(digits, end);
}

void JsonWriter::Bool(bool value) {
  Separate();
  text_->append(value ? "true" : "false");
}

void JsonWriter::Null() {
  Separate();
  text_->append("null");
}

void JsonWriter::Begin(char bracket) {
  Separate();
  text_->push_back(bracket);
  hasMember_.push_back(false);
}

void JsonWriter::End(char bracket) {
  const bool filled = hasMember_.back();
  hasMember_.pop_back();
  if (filled) NewLine();
  text_->push_back(bracket);
}

void JsonWriter::Separate() {
  if (named_) {
    named_ = false;
    return;
  }
  if (hasMember_.empty()) return;
  if (hasMember_.back()) text_->push_back(',');
  hasMember_.back() = true;
  NewLine();
}

void JsonWriter::NewLine() {
  if (form_ == Form::kLine) return;
  text_->push_back('\n');
  text_->append(2 * hasMember_.size(), ' ');
}

void JsonWriter::Quote(std::string_view value) {
  text_->push_back('"');
  while (!value.empty()) {
    const std::size_t plain = PlainLength(value);
    text_->append(value.substr(0, plain));
    value.remove_prefix(plain);
    if (value.empty()) break;
    const std::size_t length = CharacterLength(value);
    if (length == 0) {
      text_->append("\xEF\xBF\xBD");
    } else if (length == 1) {
      AppendEscaped(static_cast<unsigned char>(value[0]), text_);
    } else {
      text_->append(value.substr(0, length));
    }
    value.remove_prefix(length == 0 ? 1 : length);
  }
  text_->push_back('"');
}

}  // namespace mp4
