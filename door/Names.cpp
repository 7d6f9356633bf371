#include "mp4judge/mp4judge.h"

const char* mp4judge_error_text(mp4judge_error error) {
  switch (error) {
    case MP4JUDGE_OK:
      return "no error";
    case MP4JUDGE_ERROR_ARGUMENT:
      return "a needed argument is null";
    case MP4JUDGE_ERROR_MEMORY:
      return "out of memory";
    case MP4JUDGE_ERROR_OPEN:
      return "the file cannot be opened";
    case MP4JUDGE_ERROR_NOT_A_FILE:
      return "it is not a regular file";
    case MP4JUDGE_ERROR_READ:
      return "reading failed";
    case MP4JUDGE_ERROR_NEEDS_BYTES:
      return "more bytes are needed";
  }
  return "unknown error";
}

const char* mp4judge_verdict_name(mp4judge_verdict verdict) {
  switch (verdict) {
    case MP4JUDGE_CLEAR:
      return "clear";
    case MP4JUDGE_PROTECTED:
      return "protected";
    case MP4JUDGE_UNDETERMINED:
      break;
  }
  return "undetermined";
}
