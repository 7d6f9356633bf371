#include "tools/Output.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tools/Outcome.h"
#include "tools/Printable.h"

namespace tool {

bool WantsColours() {
  const char* none = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  return isatty(STDOUT_FILENO) == 1 && (none == nullptr || *none == 0) &&
         (terminal == nullptr || std::strcmp(terminal, "dumb") != 0);
}

void Output::Write(const std::string& text) { std::fwrite(text.data(), 1, text.size(), stdout); }

void Output::Styled(const char* style, const std::string& text) {
  Write(colours_ ? style + text + "\x1B[0m" : text);
}

bool Output::Failed() const { return std::ferror(stdout) != 0; }

bool Output::End() {
  if (std::fflush(stdout) == 0 && !Failed()) return true;
  std::fputs("mp4judge: the output cannot be written\n", stderr);
  return false;
}

std::string OneLine(const std::string& text) {
  std::string line;
  line.reserve(text.size());
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte != 0x7F) {
      line += c;
      continue;
    }
    char escape[5];
    std::snprintf(escape, sizeof escape, "\\x%02X", byte);
    line += escape;
  }
  return line;
}

TreeHandle OpenToLook(const std::string& file) {
  TreeHandle tree(mp4judge_tree_open_path(file.c_str()), mp4judge_tree_free);
  const mp4judge_error error =
      tree != nullptr ? mp4judge_tree_error(tree.get()) : MP4JUDGE_ERROR_MEMORY;
  if (!CheckRead(file, error, mp4judge_tree_errno(tree.get()))) tree.reset();
  return tree;
}

bool CheckMovie(const std::string& file) {
  const std::string why = WhyNoMovie(file);
  if (why.empty()) return true;
  std::fprintf(stderr, "mp4judge: %s: %s\n", Printable(file).c_str(), why.c_str());
  return false;
}

bool CheckRead(const std::string& file, mp4judge_error error, int systemError) {
  if (error == MP4JUDGE_OK) return true;
  const char* const why = systemError > 0 ? std::strerror(systemError) : mp4judge_error_text(error);
  std::fprintf(stderr, "mp4judge: %s: %s\n", Printable(file).c_str(), why);
  return false;
}

}  // namespace tool
