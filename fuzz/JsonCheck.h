#pragma once

#include <string_view>

namespace fuzz {

/// Whether a text is one JSON value (RFC 8259) in ASCII or UTF-8, and nothing else.
bool IsJson(std::string_view text);

}  // namespace fuzz
