#pragma once

/// Marks what other programs may see: of this the shared library exports what cmake/mp4judge.map
/// lists, and nothing else.
#if defined(__GNUC__)
#define MP4JUDGE_API __attribute__((visibility("default")))
#else
#define MP4JUDGE_API
#endif
