#pragma once

#include <stddef.h>

#include "io/Export.h"

#ifdef __cplusplus
extern "C" {
#endif

/// The host's logging function, given one wide-string message. The library's own definition is weak
/// and does nothing, so that it loads without the host's logging library; the host's wins.
MP4JUDGE_API void ZRLogEx(const wchar_t* message);

#ifdef __cplusplus
}
#endif
