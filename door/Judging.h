#pragma once

#include "door/ReportHandle.h"
#include "io/ByteSource.h"
#include "io/FileSource.h"

namespace mp4 {

/// Inspects a source, and asks the host's judgement beside it if that is wanted. May throw
/// bad_alloc.
Judged JudgeSource(ByteSource* source, const mp4judge_options& options);

/// What is said of a file that did not open.
Judged JudgeUnopened(const OpenResult& opening, const mp4judge_options& options);

}  // namespace mp4
