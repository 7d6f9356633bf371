#pragma once

#include "boxes/base/FileMode.h"
#include "io/Export.h"

/// One row per file mode, for people and file dialogs.
struct Mp4FileModeInfo {
  char tag[4];        ///< format tag in character order
  wchar_t name[128];  ///< short description
  wchar_t description[128];
  wchar_t extensions[128];  ///< separated by ";"
};

/// Rows of the table, indexed by MP4_FILE_MODE; rows without a mode are all zero.
constexpr int kFileModeRows = 12;

/// Fills `rows` (kFileModeRows of them): row 0 cleared, rows 1 to 5 set, the others left alone.
/// Writes the same values each time; null is ignored.
MP4JUDGE_API void InitFileModeInfoArray(Mp4FileModeInfo* rows);

/// The row of a mode; null outside 0 to 11.
MP4JUDGE_API const Mp4FileModeInfo* GetFileModeInfo(MP4_FILE_MODE mode);
