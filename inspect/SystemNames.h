#pragma once

#include "inspect/Report.h"

namespace mp4 {

/// The registered or well-known name of a protection system; empty for others.
const char* NameOfSystem(const Id16& id);

}  // namespace mp4
