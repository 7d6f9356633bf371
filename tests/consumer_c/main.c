/* A host written in C: judges a clear and a protected file, and takes the library's messages. */
#include <stdio.h>
#include <wchar.h>

#include "demux/FileInfoInterface.h"
#include "platform/ZR_Log.h"

/* The library's own definition is weak, so this one wins. */
void ZRLogEx(const wchar_t* message) { fprintf(stderr, "%ls\n", message); }

static int judge(const char* name) {
  wchar_t path[2048];
  if (swprintf(path, sizeof path / sizeof path[0], L"%s", name) < 0) return -1;
  return JudgeMP4HaveDRM(path);
}

int main(int argc, char** argv) {
  int clear, protected;
  if (argc != 3) {
    fputs("usage: consumer_c CLEAR PROTECTED\n", stderr);
    return 2;
  }
  clear = judge(argv[1]);
  protected = judge(argv[2]);
  printf("%d %d %d\n", clear, protected, JudgeMP4HaveDRM(NULL));
  return clear == 0 && protected == 1 && JudgeMP4HaveDRM(NULL) == 0 ? 0 : 1;
}
