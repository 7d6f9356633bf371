// The command: judges files, or looks into one.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include "tools/CommandLine.h"
#include "tools/JudgeOptions.h"

int main(int argc, char** argv) {
  // With a closed standard output the first file opened would take its place.
  if (fcntl(STDOUT_FILENO, F_GETFD) == -1) {
    std::fputs("mp4judge: the output is closed\n", stderr);
    return tool::kTrouble;
  }
  // A reader that goes away is then an error of the write, reported like any other.
  std::signal(SIGPIPE, SIG_IGN);
  try {
    return tool::RunCommandLine(std::vector<std::string>(argv + 1, argv + argc));
  } catch (...) {
    std::fputs("mp4judge: out of memory\n", stderr);
    return tool::kTrouble;
  }
}
