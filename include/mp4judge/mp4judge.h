/// mp4judge: whether an ISO base media or QuickTime file is protected. The one header most programs
/// need; C99 and C++.
///
/// Every function may be called from several threads at once, on the same file too. None throws,
/// prints, ends the program or looks at the environment. Texts that a function returns belong to
/// the library.
#ifndef MP4JUDGE_MP4JUDGE_H
#define MP4JUDGE_MP4JUDGE_H

#include <stddef.h>

#ifndef MP4JUDGE_API
#if defined(__GNUC__)
#define MP4JUDGE_API __attribute__((visibility("default")))
#else
#define MP4JUDGE_API
#endif
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Version --------------------------------------------------------------------------------- */

/// The version of this header. The number grows with every version: 10203 is 1.2.3.
#define MP4JUDGE_VERSION_MAJOR 1
#define MP4JUDGE_VERSION_MINOR 0
#define MP4JUDGE_VERSION_PATCH 0
#define MP4JUDGE_VERSION_NUMBER \
  (MP4JUDGE_VERSION_MAJOR * 10000 + MP4JUDGE_VERSION_MINOR * 100 + MP4JUDGE_VERSION_PATCH)
#define MP4JUDGE_VERSION_STRING "1.0.0"

/// The version of the library that is running, in the form "1.2.3".
MP4JUDGE_API const char* mp4judge_version(void);

/* ---- The host's judgement -------------------------------------------------------------------- */

/* A narrow question that hosts act upon: has any sound or video track ("soun", "vide") a first
 * sample entry of the format "drms"? No other scheme, track or entry counts, so "clear" here means
 * that and no more. */

/// What the host's judgement finds.
typedef enum mp4judge_host_answer {
  MP4JUDGE_HOST_CLEAR = 0,      ///< a movie was read and no such track is in it
  MP4JUDGE_HOST_PROTECTED = 1,  ///< a movie was read and such a track is in it
  MP4JUDGE_HOST_UNREADABLE = 2  ///< the file cannot be opened, or no movie can be read from it
} mp4judge_host_answer;

/// The host's judgement of a file. `path` is handed to the system byte for byte and uncut: UTF-8 as
/// a rule, but a name that is not valid UTF-8, or one of any length the system takes, opens just
/// as well. Only regular files and block devices are opened, and opening never waits. Null, and a
/// name that the system refuses, are unreadable.
MP4JUDGE_API mp4judge_host_answer mp4judge_host_judge(const char* path);

/// The same for a UTF-32 path (a 32-bit wchar_t), with two answers: 1 when protected, 0 when clear
/// or unreadable. Of a path longer than 2,047 bytes of UTF-8 only the whole characters that fit are
/// used, as hosts expect; mp4judge_host_judge cuts nothing.
MP4JUDGE_API int JudgeMP4HaveDRM(const wchar_t* path);

#ifdef __cplusplus
}
#endif

#endif
