#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace mp4 {

/// A row of a table of names by type.
struct NamedType {
  std::uint32_t type;  ///< mp4::FourCC order
  std::string_view name;
  std::string_view standard = {};
};

/// The rows in the order that FindType searches; the source has them in the order of reading.
template <std::size_t n>
constexpr std::array<NamedType, n> SortedByType(std::array<NamedType, n> rows) {
  std::sort(rows.begin(), rows.end(),
            [](const NamedType& a, const NamedType& b) { return a.type < b.type; });
  return rows;
}

/// Null when there is none.
template <std::size_t n>
const NamedType* FindType(const std::array<NamedType, n>& rows, std::uint32_t type) {
  const auto at =
      std::lower_bound(rows.begin(), rows.end(), type,
                       [](const NamedType& row, std::uint32_t key) { return row.type < key; });
  return at != rows.end() && at->type == type ? &*at : nullptr;
}

}  // namespace mp4
