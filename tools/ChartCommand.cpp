#include "tools/ChartCommand.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tools/ChartData.h"
#include "tools/JudgeOptions.h"
#include "tools/Output.h"
#include "tools/Printable.h"
#include "tools/Sandbox.h"

namespace tool {

namespace {

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

int Complain(const std::string& file, const std::string& what) {
  std::fprintf(stderr, "mp4judge: %s: %s\n", Printable(file).c_str(), what.c_str());
  return kTrouble;
}

/// The file that a chart is written to. What it held stays until the chart is there.
class ChartFile {
 public:
  /// Opens it, which a process that is confined no longer can.
  explicit ChartFile(const std::string& name)
      : file_(open(name.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, 0666)),
        error_(file_ < 0 ? errno : 0) {}
  ~ChartFile() {
    if (file_ >= 0) close(file_);
  }
  ChartFile(const ChartFile&) = delete;
  ChartFile& operator=(const ChartFile&) = delete;

  bool IsOpen() const { return file_ >= 0; }
  /// Whether it is that file, which would be lost.
  bool Is(const std::string& name) const {
    struct stat mine {
    }, other{};
    return fstat(file_, &mine) == 0 && stat(name.c_str(), &other) == 0 &&
           mine.st_dev == other.st_dev && mine.st_ino == other.st_ino;
  }
  bool Write(const std::string& text) {
    struct stat info {};
    const bool cuts = fstat(file_, &info) == 0 && S_ISREG(info.st_mode);
    if (cuts && ftruncate(file_, 0) != 0) return Fail();
    for (std::size_t done = 0; done < text.size();) {
      const ssize_t n = write(file_, text.data() + done, text.size() - done);
      if (n < 0) return Fail();
      done += static_cast<std::size_t>(n);
    }
    return true;
  }
  std::string Why() const { return std::string("cannot be written: ") + std::strerror(error_); }

 private:
  bool Fail() {
    error_ = errno;
    return false;
  }

  int file_;
  int error_;
};

}  // namespace

int RunChart(const ChartOptions& options) {
  const bool svg = EndsWith(options.output, ".svg");
  if (options.output.empty()) {
    std::fputs(
        "mp4judge chart: the chart has no name; -o CHART.svg or -o CHART.html gives it one\n",
        stderr);
    return kTrouble;
  }
  if (!svg && !EndsWith(options.output, ".html")) {
    return Complain(options.output, "the name of a chart ends in .svg or .html");
  }
  // Nothing is read of it yet: what cannot be opened leaves no chart behind.
  const TreeHandle tree = OpenToLook(options.file);
  if (tree == nullptr) return kTrouble;
  ChartFile out(options.output);
  if (!out.IsOpen()) return Complain(options.output, out.Why());
  if (out.Is(options.file)) return Complain(options.output, "this is the file to be drawn");
  if (options.sandbox) ConfineToReading();
  ChartData data;
  const bool whole = ReadChartData(options.file, tree.get(), &data);
  if (!out.Write(svg ? ChartSvg(data) : ChartHtml(data))) {
    return Complain(options.output, out.Why());
  }
  if (!data.complete)
    Complain(options.file, "not everything is drawn; the chart says what is left out");
  const bool movie = CheckMovie(options.file);
  return movie && whole && data.complete ? kAllClear : kTrouble;
}

}  // namespace tool
