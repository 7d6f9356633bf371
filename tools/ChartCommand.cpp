#include "tools/ChartCommand.h"

#include <cstdio>
#include <fstream>

#include "tools/ChartData.h"
#include "tools/JudgeOptions.h"
#include "tools/Printable.h"

namespace tool {

namespace {

bool EndsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

}  // namespace

int RunChart(const ChartOptions& options) {
  const bool svg = EndsWith(options.output, ".svg");
  if (!svg && !EndsWith(options.output, ".html")) {
    std::fprintf(stderr, "mp4judge chart: %s: name a file that ends in .svg or .html\n",
                 Printable(options.output).c_str());
    return kTrouble;
  }
  ChartData data;
  if (!ReadChartData(options.file, &data)) return kTrouble;
  std::ofstream out(options.output, std::ios::binary | std::ios::trunc);
  out << (svg ? ChartSvg(data) : ChartHtml(data));
  out.close();
  if (out) return kAllClear;
  std::fprintf(stderr, "mp4judge chart: %s: cannot be written\n",
               Printable(options.output).c_str());
  return kTrouble;
}

}  // namespace tool
