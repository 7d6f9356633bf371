// The command line: one line per file, and an exit code that says the worst of them.
#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include "tools/FileVerdict.h"

namespace {

enum ExitCode { kAllClear = 0, kOneProtected = 1, kTrouble = 2 };

constexpr const char* kFooter =
    "One line per file: 'FILE: clear', 'FILE: protected' or 'FILE: unreadable (reason)'.\n"
    "Control characters in a name are shown as \\xHH.\n"
    "Exit code: 0 when every file is clear, 1 when one is protected and none unreadable,\n"
    "2 on any trouble: an unreadable file, wrong usage, output that cannot be written.";

/// A name that keeps to its line.
std::string Printable(const std::string& name) {
  std::string text;
  for (const char c : name) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7F) {
      text += c;
      continue;
    }
    char escape[5];
    std::snprintf(escape, sizeof escape, "\\x%02X", byte);
    text += escape;
  }
  return text;
}

std::string Describe(const FileVerdict& found) {
  switch (found.verdict) {
    case MP4JUDGE_HOST_CLEAR:
      return "clear";
    case MP4JUDGE_HOST_PROTECTED:
      return "protected";
    default:
      return "unreadable (" + found.reason + ")";
  }
}

ExitCode CodeOf(mp4judge_host_answer verdict) {
  switch (verdict) {
    case MP4JUDGE_HOST_CLEAR:
      return kAllClear;
    case MP4JUDGE_HOST_PROTECTED:
      return kOneProtected;
    default:
      return kTrouble;
  }
}

/// Judges the files in order and stops when nobody can read the output any more. The highest code
/// wins, so trouble beats protected.
int JudgeAll(const std::vector<std::string>& files) {
  int code = kAllClear;
  for (const std::string& file : files) {
    const FileVerdict found = JudgeNamedFile(file);
    std::printf("%s: %s\n", Printable(file).c_str(), Describe(found).c_str());
    code = std::max<int>(code, CodeOf(found.verdict));
    if (std::ferror(stdout) != 0) break;
  }
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
    std::fputs("mp4judge: the output cannot be written\n", stderr);
    return kTrouble;
  }
  return code;
}

/// With a closed standard output the first file opened would take its place.
bool OutputIsOpen() { return fcntl(STDOUT_FILENO, F_GETFD) != -1; }

struct Arguments {
  std::vector<std::string> options, files;
};

/// Options take no values, so every other argument is a file, as is all that follows "--". Names
/// are kept from the option parser, which would split "[a,b]" and drop "{}".
Arguments Sort(int argc, char** argv) {
  Arguments sorted;
  bool namesOnly = false;
  for (int i = 1; i < argc; ++i) {
    const std::string text = argv[i];
    const bool option = !namesOnly && text.size() > 1 && text[0] == '-';
    namesOnly = namesOnly || text == "--";
    if (option && text == "--") continue;
    (option ? sorted.options : sorted.files).push_back(text);
  }
  return sorted;
}

int Run(int argc, char** argv) {
  CLI::App app("Says whether MP4, MOV and related files carry DRM-protected audio or video.");
  app.name("mp4judge")->footer(kFooter);
  app.set_version_flag("--version", std::string("mp4judge ") + mp4judge_version());
  app.add_option("FILE", "Files to judge")->type_name("")->expected(-1);
  Arguments arguments = Sort(argc, argv);
  try {
    app.parse(arguments.options);
    if (arguments.files.empty()) throw CLI::RequiredError("FILE");
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? kAllClear : kTrouble;
  }
  return JudgeAll(arguments.files);
}

}  // namespace

int main(int argc, char** argv) {
  if (!OutputIsOpen()) {
    std::fputs("mp4judge: the output is closed\n", stderr);
    return kTrouble;
  }
  // A reader that goes away is then an error of the write, reported like any other.
  std::signal(SIGPIPE, SIG_IGN);
  try {
    return Run(argc, argv);
  } catch (...) {
    std::fputs("mp4judge: out of memory\n", stderr);
    return kTrouble;
  }
}
