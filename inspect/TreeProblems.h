#pragma once

#include <string>

#include "inspect/Findings.h"

namespace mp4 {

/// What is wrong, in one sentence without a full stop.
std::string TextOfProblem(const BoxTree& tree, const BoxProblem& problem);

/// Reports what was wrong with the boxes walked, each with its rule, and doubts what may hide
/// protection. Returns the first of these, worded as a reason; empty when there is none.
std::string ReportTreeProblems(Findings* findings);

}  // namespace mp4
