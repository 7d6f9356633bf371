#include "tools/WidePath.h"

#include <cstddef>
#include <cstdint>

namespace {

/// One form of UTF-8 sequence: its lead byte's mark, the bytes that follow, its smallest value.
struct Form {
  std::uint32_t mask, mark;
  std::size_t trailing;
  std::uint32_t smallest;
};
constexpr Form kForms[] = {
    {0x80, 0x00, 0, 0}, {0xE0, 0xC0, 1, 0x80}, {0xF0, 0xE0, 2, 0x800}, {0xF8, 0xF0, 3, 0x10000}};

const Form* FormOf(std::uint32_t lead) {
  for (const Form& form : kForms) {
    if ((lead & form.mask) == form.mark) return &form;
  }
  return nullptr;
}

bool IsCharacter(std::uint32_t c) { return c < 0x110000 && (c < 0xD800 || c > 0xDFFF); }

/// Takes one character off the front of `bytes`.
std::optional<std::uint32_t> TakeCharacter(std::string_view* bytes) {
  const auto lead = static_cast<unsigned char>(bytes->front());
  const Form* form = FormOf(lead);
  if (form == nullptr || bytes->size() <= form->trailing) return std::nullopt;
  std::uint32_t c = lead & ~form->mask;
  for (std::size_t i = 1; i <= form->trailing; ++i) {
    const auto next = static_cast<unsigned char>((*bytes)[i]);
    if ((next & 0xC0) != 0x80) return std::nullopt;
    c = c << 6 | (next & 0x3Fu);
  }
  if (c < form->smallest || !IsCharacter(c)) return std::nullopt;
  bytes->remove_prefix(form->trailing + 1);
  return c;
}

}  // namespace

std::optional<std::wstring> WidePath(std::string_view bytes) {
  std::wstring wide;
  while (!bytes.empty()) {
    const std::optional<std::uint32_t> c = TakeCharacter(&bytes);
    if (!c) return std::nullopt;
    wide.push_back(static_cast<wchar_t>(*c));
  }
  return wide;
}
