#pragma once

#include <string>

#include "door/HostTrial.h"

namespace mp4 {

/// Which bytes "drms" make the host say "protected", found by trying files without them; empty when
/// no trial changed the answer. May throw bad_alloc.
std::string WhereHostFindsFormat(HostTrial* trial);

}  // namespace mp4
