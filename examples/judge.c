/* The C entry: 1 when the file carries protected audio or video, 0 otherwise. */
#include <stdio.h>
#include <wchar.h>

#include "demux/FileInfoInterface.h"

int main(int argc, char** argv) {
  wchar_t path[2048];
  if (argc != 2) return 2;
  /* Plain ASCII names only, to keep the example short. */
  swprintf(path, sizeof path / sizeof path[0], L"%s", argv[1]);
  puts(JudgeMP4HaveDRM(path) ? "protected" : "clear or not readable");
  return 0;
}
