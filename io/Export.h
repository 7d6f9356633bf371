#pragma once

/// Marks what the shared library exports; everything else is hidden.
#if defined(__GNUC__)
#define MP4JUDGE_API __attribute__((visibility("default")))
#else
#define MP4JUDGE_API
#endif
