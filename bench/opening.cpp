// One way of opening a file, over and over, in milliseconds:
//   opening judge|init FILE REPEATS [SECONDS]
#include <string>

#include "bench/Movies.h"
#include "bench/Repeat.h"
#include "demux/FileInfoInterface.h"
#include "demux/Mp4Demux.h"

namespace {

/// Every file that is measured is a clear one.
bool Judge(const std::string& path) { return JudgeMP4HaveDRM(bench::Wide(path).c_str()) == 0; }

bool Init(const std::string& path) {
  Mp4Demux demux;
  return demux.Init(bench::Wide(path).c_str());
}

}  // namespace

int main(int argc, char** argv) {
  const std::string way = argc > 1 ? argv[1] : "";
  if (way != "judge" && way != "init") return 2;
  return bench::RepeatMain(argc - 1, argv + 1, way == "judge" ? Judge : Init);
}
