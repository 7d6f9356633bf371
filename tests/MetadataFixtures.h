#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "boxes/base/Mp4Context.h"
#include "tests/Bytes.h"

/// Body of a QuickTime text item: text length, language code, text.
inline Bytes TextBody(std::string_view text, unsigned language = 0) {
  return Bytes().Be16(static_cast<unsigned>(text.size())).Be16(language).Text(text);
}

/// A QuickTime text item; `key` is the three letters behind the byte 0xA9.
inline Bytes TextItem(const std::string& key, std::string_view text, unsigned language = 0) {
  return Box("\251" + key, TextBody(text, language));
}

/// The "data" box of an item-list item: type indicator, locale, content.
inline Bytes DataBox(std::string_view content, std::uint32_t indicator = 1) {
  return Box("data", Bytes().Be32(indicator).Be32(0).Text(content));
}

/// An item-list item holding one "data" box and whatever follows it.
inline Bytes DataItem(const std::string& key, std::string_view text, const Bytes& behind = {}) {
  return Box("\251" + key, DataBox(text) + behind);
}

/// The text in a field, up to its first zero.
inline std::wstring TextIn(const wchar_t (&field)[260]) {
  std::wstring text;
  for (const wchar_t c : field) {
    if (c == 0) break;
    text.push_back(c);
  }
  return text;
}

/// Whether a field holds this text and zeros behind it, nothing else.
inline bool HoldsExactly(const wchar_t (&field)[260], const std::wstring& text) {
  for (std::size_t i = 0; i < 260; ++i) {
    if (field[i] != (i < text.size() ? text[i] : L'\0')) return false;
  }
  return text.size() <= 260;
}

/// A field full of a text that a test expects to stay or to go.
inline void FillField(wchar_t (&field)[260], wchar_t c = L'x') {
  for (wchar_t& unit : field) unit = c;
}
