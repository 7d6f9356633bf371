#pragma once

#include <cstdint>
#include <string>

#include "inspect/Report.h"

namespace mp4 {

/// 1,234,567.
std::string Grouped(std::uint64_t number);
/// 32 hexadecimal digits with dashes, in lower case.
std::string IdText(const Id16& id);
/// In double quotes, as types stand in sentences.
std::string Quoted(const std::string& text);

}  // namespace mp4
