#include "inspect/FieldReader.h"

#include <algorithm>
#include <cstring>

#include "inspect/FieldText.h"
#include "iso/TypeText.h"

namespace mp4 {

namespace {

/// Bytes as far as they are shown; longer ones end in three dots.
std::string Shown(std::string text) {
  if (text.size() <= kShownText) return text;
  std::size_t end = kShownText;
  // Not in the middle of a character.
  while (end > kShownText - 4 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  text.resize(end);
  return text + "...";
}

bool IsIdentity(const std::int32_t (&matrix)[9]) {
  constexpr std::int32_t kOne = 0x10000;
  const std::int32_t identity[9] = {kOne, 0, 0, 0, kOne, 0, 0, 0, 0x40000000};
  return std::equal(identity, identity + 9, matrix);
}

}  // namespace

void FieldReader::Show(const char* name, FieldValue value) {
  if (view_.Ok()) fields_.push_back({name, std::move(value)});
}

void FieldReader::Full() {
  full_ = ReadVersionAndFlags(&view_);
  Show("version", std::uint64_t{full_.version});
  if (full_.flags != 0) Show("flags", std::uint64_t{full_.flags});
}

void FieldReader::Fixed32(const char* name) { Show(name, view_.S32() / 65536.0); }

void FieldReader::Fixed16(const char* name) { Show(name, view_.S16() / 256.0); }

void FieldReader::Time(const char* name) {
  Show(name, TimeText(full_.version == 1 ? view_.U64() : view_.U32()));
}

void FieldReader::Language(const char* name) { Show(name, LanguageText(view_.U16())); }

void FieldReader::Type(const char* name) { Show(name, TypeText(view_.Type())); }

void FieldReader::Types(const char* name) {
  std::vector<std::string> list;
  while (view_.Left() >= 4) {
    const std::uint32_t type = view_.Type();
    if (list.size() < 4 * kShownRows) list.push_back(TypeText(type));
  }
  Show(name, std::move(list));
}

void FieldReader::Hex(const char* name, std::size_t n) {
  const unsigned char* bytes = view_.Bytes(n);
  if (bytes == nullptr) return;
  const std::size_t shown = std::min(n, kShownBytes);
  Show(name, HexText(bytes, shown) + (shown < n ? "..." : ""));
}

void FieldReader::Id(const char* name) {
  const unsigned char* bytes = view_.Bytes(16);
  if (bytes != nullptr) Show(name, DashedId(bytes));
}

void FieldReader::Matrix() {
  std::int32_t matrix[9];
  for (std::int32_t& number : matrix) number = view_.S32();
  if (IsIdentity(matrix)) return;
  std::vector<std::string> list;
  for (int i = 0; i < 9; ++i) {
    const double one = i % 3 == 2 ? 1 << 30 : 1 << 16;
    std::string text = std::to_string(matrix[i] / one);
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
    list.push_back(std::move(text));
  }
  Show("matrix", std::move(list));
}

void FieldReader::Text(const char* name) {
  const std::size_t left = view_.Left();
  const auto* bytes = reinterpret_cast<const char*>(view_.Bytes(0));
  if (bytes == nullptr) return;
  const void* zero = left == 0 ? nullptr : std::memchr(bytes, 0, left);
  const std::size_t n =
      zero == nullptr ? left : static_cast<std::size_t>(static_cast<const char*>(zero) - bytes);
  view_.Skip(zero == nullptr ? n : n + 1);
  Show(name, Shown(std::string(bytes, n)));
}

void FieldReader::Rest(const char* name) {
  const std::size_t n = view_.Left();
  const auto* bytes = reinterpret_cast<const char*>(view_.Bytes(n));
  if (bytes != nullptr) Show(name, Shown(std::string(bytes, n)));
}

void FieldReader::RestHex(const char* name) {
  if (view_.Left() > 0) Hex(name, view_.Left());
}

void FieldReader::Rows(const char* name, std::uint64_t count,
                       const std::function<std::string(FieldView*)>& row) {
  std::vector<std::string> list;
  for (std::uint64_t i = 0; i < std::min<std::uint64_t>(count, kShownRows); ++i) {
    std::string text = row(&view_);
    if (!view_.Ok()) break;
    list.push_back(std::move(text));
  }
  if (!list.empty()) fields_.push_back({name, std::move(list)});
}

}  // namespace mp4
