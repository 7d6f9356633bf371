#pragma once

#include "mp4judge/look.h"
#include "mp4judge/mp4judge.h"

namespace mp4 {

/// The options of a caller who may have been compiled with an older or newer header: members behind
/// `size` have their defaults, those this library does not know are passed over. Null: the
/// defaults.
mp4judge_options WholeOptions(const mp4judge_options* given);
mp4judge_tree_options WholeTreeOptions(const mp4judge_tree_options* given);

}  // namespace mp4
