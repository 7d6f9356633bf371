#pragma once

#include <optional>
#include <string>
#include <string_view>

/// A file name as the library takes it: UTF-32 from UTF-8. Nothing when the bytes are not
/// well-formed UTF-8 (surrogates and overlong forms included), since no wide name would open the
/// same file.
std::optional<std::wstring> WidePath(std::string_view bytes);
