// Includes every installed public header a host starts from, as C++17, and uses both entries.
#include <cstdio>
#include <string>

#include "codecs/movaudiotags.h"
#include "demux/FileInfoInterface.h"
#include "demux/Mp4Demux.h"
#include "demux/Mp4FileMode.h"
#include "io/mmBufReader.h"

static_assert(__cplusplus < 202002L, "the headers must do with C++17");

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  const std::string clear = argv[1];
  const std::string guarded = argv[2];
  const std::wstring clearPath(clear.begin(), clear.end());
  const std::wstring guardedPath(guarded.begin(), guarded.end());

  Mp4Demux demux;
  if (!demux.Init(clearPath.c_str())) return 3;
  if (demux.GetContext()->GetTrackCount() != 1) return 4;
  if (JudgeMP4HaveDRM(clearPath.c_str()) != 0) return 5;
  if (JudgeMP4HaveDRM(guardedPath.c_str()) != 1) return 6;
  std::puts("the installed package works");
  return 0;
}
