#pragma once

#include "boxes/FileMode.h"
#include "io/Export.h"

/// One row per file mode.
struct Mp4FileModeInfo {
  char tag[4];  ///< format tag in character order
  wchar_t name[128];
  wchar_t description[128];
  wchar_t extensions[128];  ///< separated by ";"
};
