/* A host written in C99: judges a clear and a protected file, and takes the library's messages. */
#include <mp4judge/host/platform/ZR_Log.h>
#include <mp4judge/mp4judge.h>
#include <stdio.h>
#include <string.h>
#include <wchar.h>

static int messages = 0;

/* The library's own definition is weak, so this one wins. */
void ZRLogEx(const wchar_t* message) { messages += message != NULL && message[0] != 0; }

static int failed = 0;
static void expect(int holds, const char* what) {
  if (holds) return;
  printf("FAILED: %s\n", what);
  failed = 1;
}

static int judge_wide(const char* name) {
  wchar_t path[2048];
  if (swprintf(path, sizeof path / sizeof path[0], L"%s", name) < 0) return -1;
  return JudgeMP4HaveDRM(path);
}

/* A movie whose only track has no header, which the library reports in its log. */
static void judge_headless(const char* name) {
  static const char movie[] =
      "\0\0\0\24ftypisom\0\0\0\0isom\0\0\0\30moov\0\0\0\20trak\0\0\0\10free";
  FILE* file = fopen(name, "wb");
  expect(file != NULL && fwrite(movie, sizeof movie - 1, 1, file) == 1, "a file to be written");
  if (file != NULL) fclose(file);
  expect(mp4judge_host_judge(name) == MP4JUDGE_HOST_UNREADABLE, "unreadable without media");
  remove(name);
}

int main(int argc, char** argv) {
  char headless[4096];
  if (argc != 3) {
    fputs("usage: main CLEAR PROTECTED\n", stderr);
    return 2;
  }
  snprintf(headless, sizeof headless, "%s.mp4", argv[0]);
  expect(strcmp(mp4judge_version(), MP4JUDGE_VERSION_STRING) == 0, "the header's version");
  expect(mp4judge_host_judge(argv[1]) == MP4JUDGE_HOST_CLEAR, "clear");
  expect(mp4judge_host_judge(argv[2]) == MP4JUDGE_HOST_PROTECTED, "protected");
  expect(mp4judge_host_judge("no such file") == MP4JUDGE_HOST_UNREADABLE, "unreadable");
  expect(judge_wide(argv[1]) == 0, "clear, by a wide path");
  expect(judge_wide(argv[2]) == 1, "protected, by a wide path");
  expect(JudgeMP4HaveDRM(NULL) == 0, "no path");
  expect(messages == 0, "silence about sound files");
  judge_headless(headless);
  expect(messages == 1, "one message for the host");
  return failed;
}
