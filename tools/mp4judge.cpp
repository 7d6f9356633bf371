// The command: judges files, or looks into one.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include "tools/CommandLine.h"
#include "tools/Commands.h"
#include "tools/JudgeCommand.h"

namespace {

int Run(std::vector<std::string> arguments) {
  for (const tool::Command& command : tool::Commands()) {
    if (arguments.empty() || arguments.front() != command.name) continue;
    arguments.erase(arguments.begin());
    return command.run(arguments);
  }
  tool::JudgeOptions options;
  int status = tool::kAllClear;
  return tool::ParseJudgeArguments(arguments, &options, &status) ? tool::RunJudge(options) : status;
}

}  // namespace

int main(int argc, char** argv) {
  // With a closed standard output the first file opened would take its place.
  if (fcntl(STDOUT_FILENO, F_GETFD) == -1) {
    std::fputs("mp4judge: the output is closed\n", stderr);
    return tool::kTrouble;
  }
  // A reader that goes away is then an error of the write, reported like any other.
  std::signal(SIGPIPE, SIG_IGN);
  try {
    return Run(std::vector<std::string>(argv + 1, argv + argc));
  } catch (...) {
    std::fputs("mp4judge: out of memory\n", stderr);
    return tool::kTrouble;
  }
}
