#pragma once

#include <optional>

#include "inspect/Report.h"
#include "iso/BoxTree.h"

namespace mp4 {

struct InspectOptions {
  /// All movie fragments. Without it the verdict rests on the movie boxes, all of a file without
  /// fragments, and of one with them the first fragment and those near the file's beginning.
  bool everything = false;
  /// Instead of the limits that grow with the source.
  std::optional<TreeLimits> limits = std::nullopt;
};

/// Whether the file is protected, and where it says so (ISO/IEC 14496-12, 8.12; ISO/IEC 23001-7;
/// ISO/IEC 14496-14; QuickTime). Never decrypts, and loads no sample table. Works on any bytes; a
/// source that fails, or refused memory, is undetermined with the reason. `source` is borrowed.
Report Inspect(CachedSource* source, const InspectOptions& options) noexcept;
/// The same through a cache of its own.
Report Inspect(ByteSource* source, const InspectOptions& options) noexcept;

}  // namespace mp4
