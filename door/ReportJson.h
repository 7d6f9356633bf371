#pragma once

#include <string>

#include "door/ReportHandle.h"

namespace mp4 {

/// A report as one line of JSON, as docs/report.schema.json has it. May throw bad_alloc.
std::string ReportJson(const Judged& judged);

/// "clear", "protected" or "undetermined".
const char* NameOf(ProtectionVerdict verdict);

}  // namespace mp4
