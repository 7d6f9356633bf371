#include "tools/Progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "tools/Printable.h"

namespace tool {

namespace {

constexpr auto kFirst = std::chrono::seconds(1);
constexpr auto kBetween = std::chrono::milliseconds(200);

std::string TimeLeft(double seconds) {
  const auto whole = static_cast<unsigned long long>(seconds + 0.5);
  char text[48];
  std::snprintf(text, sizeof text, "%llu:%02llu left", whole / 60, whole % 60);
  return text;
}

}  // namespace

Progress::Progress(std::size_t total)
    : onTerminal_(isatty(STDERR_FILENO) == 1),
      total_(total),
      started_(Clock::now()),
      next_(started_ + kFirst) {}

Progress::~Progress() { Hide(); }

void Progress::Tick() {
  const auto now = Clock::now();
  if (!onTerminal_ || now < next_) return;
  next_ = now + kBetween;
  const double seconds = std::chrono::duration<double>(now - started_).count();
  const double rate = static_cast<double>(done_) / seconds;
  std::string line = WithCommas(done_);
  if (total_ > 0) line += " of " + WithCommas(total_);
  line += " files, " + WithCommas(static_cast<unsigned long long>(rate)) + " a second";
  if (total_ > done_ && rate > 0) {
    line += ", " + TimeLeft(static_cast<double>(total_ - done_) / rate);
  }
  std::fprintf(stderr, "\r\033[K%s", line.c_str());
  std::fflush(stderr);
  shown_ = true;
}

void Progress::Hide() {
  if (!shown_) return;
  std::fputs("\r\033[K", stderr);
  std::fflush(stderr);
  shown_ = false;
}

}  // namespace tool
