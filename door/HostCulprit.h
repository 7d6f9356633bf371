#pragma once

#include <vector>

#include "door/HostTrial.h"

namespace mp4 {

/// The innermost boxes without which the host answers otherwise: one box, or all boxes of a type
/// that stand at the same level, a fault that a writer made in every track for example. Empty when
/// no trial changed the answer. `wanted` says of an answer whether it is the other one. May throw
/// bad_alloc.
std::vector<BoxId> FindCulprit(HostTrial* trial, bool (*wanted)(mp4judge_host_answer));

}  // namespace mp4
