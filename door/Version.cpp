#include "mp4judge/mp4judge.h"

const char* mp4judge_version(void) { return MP4JUDGE_VERSION_STRING; }
