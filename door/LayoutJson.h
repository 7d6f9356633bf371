#pragma once

#include <string>

#include "io/ByteSource.h"

namespace mp4 {

/// Where a file's media lies, as JSON, as mp4judge/look.h has it. May throw bad_alloc.
std::string LayoutJson(ByteSource* source, std::size_t parts);

}  // namespace mp4
