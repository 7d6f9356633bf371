#pragma once

#include <stddef.h>

#include "io/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/// Whether the file carries protected audio or video: 1 when any "soun" or "vide" track has the
/// sample-entry format "drms", otherwise 0, also when the file cannot be opened or parsed. `path`
/// is UTF-32 (a 32-bit wchar_t). Throws nothing; may run in several threads on different files.
MP4JUDGE_API int JudgeMP4HaveDRM(const wchar_t* path);

#ifdef __cplusplus
}
#endif
