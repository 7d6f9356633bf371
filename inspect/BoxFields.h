#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "iso/BoxTree.h"

namespace mp4 {

/// A number, a fixed-point number, a yes or no, a text (bytes of the file, perhaps not UTF-8), or
/// the first rows of a table.
using FieldValue =
    std::variant<std::uint64_t, std::int64_t, double, bool, std::string, std::vector<std::string>>;

/// A field by the name that the standard gives it, in camel case.
struct BoxField {
  const char* name;
  FieldValue value;
};

/// Rows of a table that are shown.
constexpr std::size_t kShownRows = 8;
/// Bytes of a text or of unparsed data that are shown.
constexpr std::size_t kShownText = 256;
constexpr std::size_t kShownBytes = 32;

/// What the fields of a box say, for those boxes whose layout is known; nothing for others. A box
/// that ends before its fields do shows those that it has, and `cut` says so. Names are unique
/// within a box; what is held is bounded whatever the file says. May throw bad_alloc.
std::vector<BoxField> FieldsOf(BoxTree* tree, BoxId id, bool* cut);

}  // namespace mp4
