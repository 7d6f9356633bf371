#pragma once

#include <string>
#include <string_view>

namespace tool {

/// A name that keeps to its line and that no other name prints alike: control characters stand as
/// \xHH, a backslash as two.
std::string Printable(std::string_view name);

/// "81,920".
std::string WithCommas(unsigned long long number);

}  // namespace tool
